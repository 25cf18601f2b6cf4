// The helper's answer: rows that go into the pipe as soon as they are decoded.
#pragma once

#include "imaging/io/image_io.h"
#include "imaging/io/row_ring.h"
#include "util/log/result.h"

namespace skarnel {

/// Decodes the bytes and sends the picture or the reason why there is none, the rows through the
/// ring where there is one. False when it cannot be sent, or not as a whole; the parent then finds
/// no answer.
bool decodeIntoAnswer(ByteView bytes, const DecodeLimits& limits, io::RowRing* ring = nullptr);

bool sendError(const Error& error);

/// Sends an encoded picture.
bool sendEncoded(ByteView file);

}  // namespace skarnel
