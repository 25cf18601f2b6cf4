// Encoding in the helper program, for the libraries that end their process when memory runs out.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel::io {

/// Has `program` encode the picture as `type`, JPEG 2000 or WebP. However the helper ends, the
/// caller gets a file or an Error: Failed when it died or answers more than such a picture can
/// take. What the file's bytes are is for `checkedFile` to see. `patience` bounds a helper that
/// neither reads nor answers. Throws std::bad_alloc.
Result<Bytes> encodeBehindWall(const std::string& program, const CGImage& image,
                               std::string_view type, const ImageProperties& properties,
                               std::chrono::seconds patience = std::chrono::minutes(30));

/// The file or the error that the helper's answer holds; none when it ends early, goes on, or
/// announces more than `mostBytes`. `patience` bounds each wait for the next bytes of the pipe.
/// Throws std::bad_alloc.
std::optional<Result<Bytes>> readEncoded(int pipe, std::uint64_t mostBytes,
                                         std::chrono::milliseconds patience);

}  // namespace skarnel::io
