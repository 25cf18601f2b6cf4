// How much memory a picture's render takes, told before it is begun.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "cli/job.h"

namespace skarnel::cli {

/// What a worker with its helper takes for the smallest pictures, in bytes.
inline constexpr std::uint64_t kBytesAWorker = std::uint64_t{32} << 20;

/// What a picture counts whose file does not tell its size where that is looked for, in bytes:
/// enough for some fifty megapixels.
inline constexpr std::uint64_t kBytesOfUnknownSize = std::uint64_t{1} << 30;

/// Bytes that a picture of this size takes at the most, all its processes together: while it is
/// decoded twelve a pixel, eight of them in the helper, and more of formats whose codecs hold it in
/// forms of their own (`source` is its format's identifier, if known); then its own four, and for
/// each pixel of the largest picture of the render what the format to write needs, as measured.
std::uint64_t memoryOfRender(PixelSize picture, const JobSettings& settings, std::string_view type,
                             std::string_view source = {});

/// What a frame is written as: the format's identifier, and the quality where it is to lose some.
struct FrameFormat {
    std::string_view type;
    std::optional<int> quality = {};
};

/// The same for a picture that is decoded already and that all share, such as a sweep's frames.
std::uint64_t memoryOfFrame(PixelSize picture, const RenderSettings& settings,
                            const FrameFormat& format);

/// The same for a job, by the head of its file. Opens the file and reads a few hundred bytes.
std::uint64_t memoryOfJob(const Job& job, const JobSettings& settings);

}  // namespace skarnel::cli
