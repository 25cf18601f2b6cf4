// What a picture's file says of its size, found without decoding it and without trusting it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace skarnel {

/// Pixels as they are stored, before the picture is turned upright; each side at least 1.
struct HeadSize {
    int width = 0;
    int height = 0;
    friend bool operator==(const HeadSize&, const HeadSize&) = default;
};

/// Reads what a file has from a place on, as much as fits; gives the number of bytes.
using ReadAt = std::function<std::size_t(std::uint64_t place, std::span<std::uint8_t> target)>;

/// The size that the file's head states, for every format that can be recognised. A few hundred
/// bytes are read, whatever the file claims. None where it is no picture, where its head is
/// damaged or unusual, and for a side that no decoder takes. Good for an estimate: whether the
/// picture can be decoded, and is of that size then, only decoding tells.
std::optional<HeadSize> sizeInHead(const ReadAt& read);

/// The size that a HEIF or AVIF file states of its primary picture, before it is cropped or turned;
/// the largest where it states several. None where the file is unusual or damaged.
std::optional<HeadSize> sizeOfPrimaryItem(const ReadAt& read);

/// What sizeInHead finds in a regular file; none also for what cannot be opened.
std::optional<HeadSize> sizeInHeadOfFile(const std::string& path);

}  // namespace skarnel
