// The helper's answer: rows that go into the pipe as soon as they are decoded.
#pragma once

#include "imaging/io/image_io.h"
#include "imaging/io/row_ring.h"
#include "util/log/result.h"

namespace skarnel {

/// Whether a request for memory was refused; a picture that was decoded in spite of that may lack a
/// part that its library did without.
using WasRefusedMemory = bool (*)();

/// Decodes the bytes and sends the picture or the reason why there is none, the rows through the
/// ring where there is one. False when it cannot be sent, or not as a whole; the parent then finds
/// no answer.
bool decodeIntoAnswer(ByteView bytes, const DecodeLimits& limits, io::RowRing* ring = nullptr,
                      WasRefusedMemory wasRefused = nullptr);

bool sendError(const Error& error);

/// Sends an encoded picture.
bool sendEncoded(ByteView file);

}  // namespace skarnel
