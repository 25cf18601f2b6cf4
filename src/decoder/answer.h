// The helper's answer: pixels decoded straight into the memory file that the parent reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel {

/// Memory for a picture, in the memory file behind the answer's header. Given to the readers as
/// their source of memory, so that pixels are not copied. Null when it cannot be had.
std::shared_ptr<std::uint8_t> answerMemory(std::size_t size);

/// Writes the result's header, text and (where they do not lie in the file already) pixels. False
/// when that is not possible; the parent then finds no answer.
bool writeAnswer(const Result<DecodedImage>& result);

}  // namespace skarnel
