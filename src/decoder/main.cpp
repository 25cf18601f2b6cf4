// skarnel-decode encode,PIXELS,TYPE: see encode_job.h.
// skarnel-decode MAXPIXELS[,MAXUNPROVENPIXELS]: decodes the picture on descriptor 3 into the pipe
// on descriptor 4, locked into a cell. Started by the programs, of no use by itself.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <thread>

#include "decoder/answer.h"
#include "decoder/cell.h"
#include "decoder/encode_job.h"
#include "decoder/picture_limits.h"
#include "decoder/refusals.h"
#include "imaging/io/decoder_protocol.h"
#include "imaging/io/encoder_protocol.h"
#include "imaging/io/late_codec.h"
#include "imaging/io/mapped_file.h"
#include "imaging/io/picture_head.h"
#include "imaging/io/row_ring.h"

namespace skarnel {
namespace {

/// Whether a small PNG names neither colours nor a camera's facts, and needs no libraries for them.
/// Their names are looked for in all of its bytes, so that what lies where does not matter.
io::Rest restOf(std::string_view file) {
    const auto names = [file](std::string_view chunk) {
        return file.find(chunk) != std::string_view::npos;
    };
    const bool neither = file.starts_with("\x89PNG") && !names("iCCP") && !names("eXIf");
    return neither ? io::Rest::HasNeither : io::Rest::Unknown;
}

/// Looks at no more than the bytes that tell the format, but at all of a small file; no library
/// can be opened from within the cell.
io::CodecNeeds needsOf(int picture) {
    std::array<char, 16384> start{};
    const ssize_t count = ::pread(picture, start.data(), start.size(), 0);
    if (count <= 0) return io::CodecNeeds::Nothing;
    const std::string_view read(start.data(), static_cast<std::size_t>(count));
    const bool whole = read.size() < start.size();
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(start.data());
    return io::prepareToDecode({bytes, read.size()}, whole ? restOf(read) : io::Rest::Unknown);
}

ReadAt readerOf(int picture) {
    return [picture](std::uint64_t place, std::span<std::uint8_t> target) -> std::size_t {
        if (place > std::uint64_t{std::numeric_limits<off_t>::max()}) return 0;
        const ssize_t count =
            ::pread(picture, target.data(), target.size(), static_cast<off_t>(place));
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    };
}

/// 0 where that cannot be found.
std::uint64_t bytesOfFile(int picture) {
    struct stat status {};
    return ::fstat(picture, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

/// A GIF's frame may be larger than its head says the picture is.
std::optional<HeadSize> mostSizeOf(const ReadAt& read) {
    std::array<std::uint8_t, 4> start{};
    constexpr std::string_view kGif = "GIF8";
    if (read(0, start) == start.size() && std::ranges::equal(start, kGif))
        return HeadSize{65535, 65535};
    return sizeInHead(read);
}

/// The head is read outside of the cell, whose limits it tells.
CellLimits limitsFor(int picture, const DecodeLimits& limits) {
    const io::CodecNeeds needs = needsOf(picture);
    const ScanLimits whileItIsRead;
    const std::uint64_t fileBytes = bytesOfFile(picture);
    if (needs == io::CodecNeeds::Nothing) {
        return limitsForPictures(limits, mostSizeOf(readerOf(picture)), fileBytes);
    }
    if (needs == io::CodecNeeds::Bounds) {
        return limitsByStatedSize(limits, sizeInHead(readerOf(picture)), fileBytes);
    }
    if (fileBytes == 0) return limitsForItems(limits, std::nullopt, 0, 1);
    return limitsForItems(limits, sizeOfPrimaryItem(readerOf(picture)), fileBytes,
                          std::max(1U, std::thread::hardware_concurrency()));
}

int decode(const DecodeLimits& limits) {
    struct stat status {};
    if (::fstat(io::kAnswerDescriptor, &status) != 0 || !S_ISFIFO(status.st_mode)) return 2;
    CellLimits cell = limitsFor(io::kPictureDescriptor, limits);
    // What can be mapped is mapped while that is allowed.
    io::MappedFile file(io::kPictureDescriptor);
    auto ring = io::RowRing::map(io::kRingDescriptor);
    cell.memoryBytes += file.mappedBytes();
    // What could not be mapped is read.
    if (file.mappedBytes() == 0 && cell.dataBytes != UINT64_MAX)
        cell.dataBytes += std::min(bytesOfFile(io::kPictureDescriptor), io::kMaxFileBytes);
    endWithoutThreads([] { sendError({ErrorCode::OutOfMemory, io::kNoMemory}); });
    if (auto locked = lockIn(io::kPictureDescriptor, io::kAnswerDescriptor, cell); !locked) {
        return io::kNoWallsStatus;
    }
    const auto bytes = file.read();
    const bool sent =
        bytes ? decodeIntoAnswer(*bytes, limits, ring ? &*ring : nullptr, wasRefusedMemory)
              : sendError(bytes.error());
    return sent ? 0 : 1;
}

/// A number of pixels at the start of the text, which it is taken off.
std::optional<std::int64_t> takePixels(std::string_view& text) {
    std::int64_t pixels = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), pixels);
    if (error != std::errc() || pixels < 0 || pixels > std::int64_t{1} << 40U) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return pixels;
}

std::optional<DecodeLimits> parseLimits(std::string_view text) {
    const auto maxPixels = takePixels(text);
    if (!maxPixels) return std::nullopt;
    if (text.empty()) return DecodeLimits{*maxPixels};
    if (!text.starts_with(',')) return std::nullopt;
    text.remove_prefix(1);
    const auto maxUnproven = takePixels(text);
    if (!maxUnproven || !text.empty()) return std::nullopt;
    return DecodeLimits{*maxPixels, *maxUnproven};
}

}  // namespace
}  // namespace skarnel

int main(int count, char** arguments) {
    const std::string_view job = count == 2 ? arguments[1] : "";
    if (job.starts_with(skarnel::io::kEncodeArgument)) {
        return skarnel::runEncodeJob(job.substr(skarnel::io::kEncodeArgument.size()));
    }
    const auto limits = skarnel::parseLimits(job);
    if (!limits) {
        std::fputs("skarnel-decode is started by Skarnel itself\n", stderr);
        return 2;
    }
    return skarnel::decode(*limits);
}
