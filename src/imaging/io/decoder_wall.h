// Decoding in a helper program that can do nothing but decode.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel::io {

/// The helper beside this program or where it is installed; none when there is no such file.
/// Looked up once.
const std::optional<std::string>& decoderProgram();

/// Starts `program` on an open descriptor, waits for its end and takes its answer. However the
/// helper ends (refused, killed, out of time), the caller gets a picture or an Error: Damaged
/// when it died, since a decoder that breaks breaks on its input; Failed when it found no walls.
/// It bounds its processor time itself; `patience` bounds one that sleeps.
Result<DecodedImage> decodeBehindWall(const std::string& program, int descriptor,
                                      const DecodeLimits& limits,
                                      std::chrono::milliseconds patience = std::chrono::minutes(3));

}  // namespace skarnel::io
