// The helper's answer: rows that go into the pipe as soon as they are decoded.
#pragma once

#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel {

/// Decodes the bytes and sends the picture or the reason why there is none. False when it cannot
/// be sent, or not as a whole; the parent then finds no answer.
bool decodeIntoAnswer(ByteView bytes, const DecodeLimits& limits);

bool sendError(const Error& error);

/// Sends an encoded picture.
bool sendEncoded(ByteView file);

}  // namespace skarnel
