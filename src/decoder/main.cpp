// skarnel-decode MAXPIXELS: decodes the picture on descriptor 3 into the pipe on descriptor 4,
// locked into a cell. Started by the programs, of no use by itself.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "decoder/answer.h"
#include "decoder/cell.h"
#include "imaging/io/decoder_protocol.h"
#include "imaging/io/late_codec.h"
#include "imaging/io/read_file.h"

namespace skarnel {
namespace {

/// Four bytes a pixel for the picture, four for its turned form, and up to sixteen for a codec
/// that holds a whole picture in its own samples; the rest is the program and its libraries.
CellLimits limitsFor(const DecodeLimits& limits) {
    constexpr std::uint64_t kPrograms = std::uint64_t{1} << 30U;
    const auto pixels = static_cast<std::uint64_t>(limits.maxPixels);
    return {kPrograms + pixels * 24, 120};
}

/// Looks at no more than the bytes that tell the format; the library for it cannot be opened from
/// within the cell.
io::CodecNeeds needsOf(int picture) {
    std::array<std::uint8_t, 16> first{};
    const ssize_t count = ::pread(picture, first.data(), first.size(), 0);
    if (count <= 0) return io::CodecNeeds::Nothing;
    return io::prepareToDecode({first.data(), static_cast<std::size_t>(count)});
}

int decode(const DecodeLimits& limits) {
    struct stat status {};
    if (::fstat(io::kAnswerDescriptor, &status) != 0 || !S_ISFIFO(status.st_mode)) return 2;
    CellLimits cell = limitsFor(limits);
    if (needsOf(io::kPictureDescriptor) == io::CodecNeeds::Threads) {
        cell.threads = CellLimits::Threads::Many;
    }
    if (auto locked = lockIn(io::kPictureDescriptor, io::kAnswerDescriptor, cell); !locked) {
        return 3;
    }
    const auto bytes = io::readAll(io::kPictureDescriptor);
    const bool sent = bytes ? decodeIntoAnswer(*bytes, limits) : sendError(bytes.error());
    return sent ? 0 : 1;
}

}  // namespace
}  // namespace skarnel

int main(int count, char** arguments) {
    skarnel::DecodeLimits limits;
    const std::string_view text = count == 2 ? arguments[1] : "";
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), limits.maxPixels);
    if (error != std::errc() || end != text.data() + text.size() || limits.maxPixels < 0 ||
        limits.maxPixels > std::int64_t{1} << 40U) {
        std::fputs("skarnel-decode is started by Skarnel itself\n", stderr);
        return 2;
    }
    return skarnel::decode(limits);
}
