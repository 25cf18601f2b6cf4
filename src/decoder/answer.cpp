#include "decoder/answer.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "imaging/io/decoder_protocol.h"

namespace skarnel {
namespace {

using io::kAnswerDescriptor;
using io::kAnswerPage;

/// The end of what has been given out; grows by whole pages.
std::uint64_t fileBytes = kAnswerPage;

/// The latest picture's memory, to recognise the result's pixels by.
const std::uint8_t* latestBytes = nullptr;
std::uint64_t latestOffset = 0;

std::uint64_t wholePages(std::uint64_t size) {
    return (size + kAnswerPage - 1) / kAnswerPage * kAnswerPage;
}

bool writeAll(const void* data, std::size_t size, std::uint64_t offset) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    while (size > 0) {
        const ssize_t count = ::pwrite(kAnswerDescriptor, bytes, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        offset += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

/// Offset of the picture's pixels in the file, copied there if they lie elsewhere; 0 = failed.
std::uint64_t placePixels(const CGImage& image) {
    const PixelView view = image.pixels();
    if (view.bytes == latestBytes) return latestOffset;
    const std::uint64_t offset = fileBytes;
    const std::size_t rowBytes = std::size_t{4} * static_cast<std::size_t>(view.width);
    for (int y = 0; y < view.height; ++y) {
        if (!writeAll(view.row(y), rowBytes, offset + rowBytes * static_cast<std::size_t>(y))) {
            return 0;
        }
    }
    fileBytes = wholePages(offset + rowBytes * static_cast<std::size_t>(view.height));
    return offset;
}

}  // namespace

std::shared_ptr<std::uint8_t> answerMemory(std::size_t size) {
    const std::uint64_t offset = fileBytes;
    const std::size_t mapped = static_cast<std::size_t>(wholePages(size));
    if (::ftruncate(kAnswerDescriptor, static_cast<off_t>(offset + mapped)) != 0) return nullptr;
    void* address = ::mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_SHARED, kAnswerDescriptor,
                           static_cast<off_t>(offset));
    if (address == MAP_FAILED) return nullptr;
    // The kernel may use large pages for it where the administrator allows that.
    ::madvise(address, mapped, MADV_HUGEPAGE);
    fileBytes = offset + mapped;
    latestBytes = static_cast<const std::uint8_t*>(address);
    latestOffset = offset;
    return {static_cast<std::uint8_t*>(address), [mapped, offset](std::uint8_t* bytes) {
                ::munmap(bytes, mapped);
                // A picture that was turned leaves its first form behind.
                if (bytes != latestBytes) {
                    ::fallocate(kAnswerDescriptor, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE,
                                static_cast<off_t>(offset), static_cast<off_t>(mapped));
                }
            }};
}

bool writeAnswer(const Result<DecodedImage>& result) {
    io::AnswerHeader header;
    header.magic = io::kAnswerMagic;
    Bytes text;
    if (result) {
        header.isPicture = 1;
        header.width = static_cast<std::uint32_t>(result->image.width());
        header.height = static_cast<std::uint32_t>(result->image.height());
        header.pixelOffset = placePixels(result->image);
        if (header.pixelOffset == 0) return false;
        text = io::packProperties(result->type, result->properties);
    } else {
        header.errorCode = static_cast<std::uint32_t>(result.error().code);
        text.assign(result.error().message.begin(), result.error().message.end());
    }
    header.textOffset = fileBytes;
    header.textBytes = text.size();
    return ::ftruncate(kAnswerDescriptor, static_cast<off_t>(fileBytes + text.size())) == 0 &&
           writeAll(text.data(), text.size(), header.textOffset) &&
           writeAll(&header, sizeof header, 0);
}

}  // namespace skarnel
