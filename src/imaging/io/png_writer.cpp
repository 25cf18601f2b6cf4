// PNG by filters of our own and deflate chosen for speed: many times faster than the reference
// encoder, which tries every filter and compresses through a small window.
#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "imaging/io/deflate.h"
#include "imaging/io/exif_block.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/png_filter.h"
#include "imaging/io/writers.h"
#include "imaging/pixel_memory.h"

namespace skarnel::io {
namespace {

struct FreeBytes {
    void operator()(std::uint8_t* bytes) const { std::free(bytes); }
};
/// Memory that is not touched before it is written; a vector would fill it with zeros first.
using RawBytes = std::unique_ptr<std::uint8_t, FreeBytes>;

RawBytes allocateRaw(std::size_t size) {
    RawBytes bytes(static_cast<std::uint8_t*>(std::malloc(size)));
    if (!bytes) throw std::bad_alloc();
    preferHugePages(bytes.get(), size);
    return bytes;
}

void putNumber(std::uint8_t* out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) *out++ = static_cast<std::uint8_t>(value >> shift);
}

void appendHeader(Bytes& out, const CGImage& image, bool opaque) {
    constexpr std::array<std::uint8_t, 8> kSignature = {0x89, 'P',  'N',  'G',
                                                        '\r', '\n', 0x1A, '\n'};
    out.resize(kSignature.size());
    std::memcpy(out.data(), kSignature.data(), kSignature.size());
    std::array<std::uint8_t, 13> header{};
    putNumber(header.data(), static_cast<std::uint32_t>(image.width()));
    putNumber(header.data() + 4, static_cast<std::uint32_t>(image.height()));
    header[8] = 8;
    header[9] = opaque ? 2 : 6;  // RGB, RGB with alpha
    appendPngChunk(out, "IHDR", header);
    const std::array<std::uint8_t, 1> intent = {1};  // relative colorimetric
    appendPngChunk(out, "sRGB", intent);
}

void appendResolution(Bytes& out, const ImageProperties& properties) {
    const auto resolution = resolutionOf(properties);
    if (!resolution) return;
    constexpr double kInchesPerMetre = 39.37007874015748;
    auto perMetre = [](double perInch) {
        return static_cast<std::uint32_t>(
            std::min(std::round(perInch * kInchesPerMetre), 2147483647.0));
    };
    std::array<std::uint8_t, 9> data{};
    putNumber(data.data(), perMetre(resolution->horizontal));
    putNumber(data.data() + 4, perMetre(resolution->vertical));
    data[8] = 1;  // the unit is the metre
    appendPngChunk(out, "pHYs", data);
}

/// A stretch of a picture's rows, evenly spread, that stands for all of them.
Bytes sampleOfRows(PngRows& rows) {
    constexpr std::size_t kPieces = 16;
    constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
    const auto count = static_cast<std::size_t>(rows.count());
    const std::size_t pieceRows = std::max<std::size_t>(1, kPieceBytes / rows.lineBytes());
    const bool all = count <= kPieces * pieceRows;
    const std::size_t step = all ? pieceRows : count / kPieces;
    Bytes sample;
    for (std::size_t start = 0; start < count; start += step) {
        const std::size_t end = std::min(count, start + pieceRows);
        for (std::size_t y = start; y < end; ++y) {
            sample.resize(sample.size() + rows.lineBytes());
            rows.filter(static_cast<int>(y), sample.data() + sample.size() - rows.lineBytes());
        }
    }
    return sample;
}

/// A data chunk that is written in place: begun, filled by somebody else, ended.
class DataChunk {
  public:
    explicit DataChunk(Bytes& out) : out_(&out), start_(out.size()) {
        constexpr std::array<std::uint8_t, 8> kFront = {0, 0, 0, 0, 'I', 'D', 'A', 'T'};
        out_->insert(out_->end(), kFront.begin(), kFront.end());
    }
    std::size_t size() const { return out_->size() - start_ - 8; }
    void end() {
        putNumber(out_->data() + start_, static_cast<std::uint32_t>(size()));
        const std::uint32_t check = libdeflate_crc32(0, out_->data() + start_ + 4, size() + 4);
        out_->resize(out_->size() + 4);
        putNumber(out_->data() + out_->size() - 4, check);
    }

  private:
    Bytes* out_;
    std::size_t start_;
};

/// Filters and compresses a few rows at a time, which stay in the cache meanwhile.
void appendDataInBlocks(PngRows& rows, DeflateWay way, Bytes& out) {
    constexpr std::size_t kRowsBytes = std::size_t{256} << 10;
    constexpr std::size_t kChunkBytes = std::size_t{1} << 20;
    const std::size_t lines = std::max<std::size_t>(1, kRowsBytes / rows.lineBytes());
    Bytes filtered(lines * rows.lineBytes());
    DataChunk chunk(out);
    const auto deflater = makeBlockDeflater(way, out, rows.pixelBytes());
    std::size_t filled = 0;
    for (int y = 0; y < rows.count(); ++y) {
        rows.filter(y, filtered.data() + filled);
        filled += rows.lineBytes();
        if (filled < filtered.size()) continue;
        deflater->add(ByteView(filtered).first(filled));
        filled = 0;
        if (chunk.size() >= kChunkBytes) {
            chunk.end();
            chunk = DataChunk(out);
        }
    }
    deflater->add(ByteView(filtered).first(filled));
    deflater->finish();
    chunk.end();
}

/// Compresses all rows in one go, as a search for repeats wants it.
bool appendDataWithSearch(PngRows& rows, int level, Bytes& out) {
    const Compressor compressor = makeCompressor(level);
    const std::size_t filteredSize = rows.lineBytes() * static_cast<std::size_t>(rows.count());
    RawBytes filtered = allocateRaw(filteredSize);
    for (int y = 0; y < rows.count(); ++y) {
        rows.filter(y, filtered.get() + rows.lineBytes() * static_cast<std::size_t>(y));
    }
    const std::size_t bound = libdeflate_zlib_compress_bound(compressor.get(), filteredSize);
    const RawBytes packed = allocateRaw(bound);
    const std::size_t size = libdeflate_zlib_compress(compressor.get(), filtered.get(),
                                                      filteredSize, packed.get(), bound);
    filtered.reset();
    constexpr std::size_t kMaxChunk = 0x7FFFFFFF;
    constexpr std::size_t kAroundChunks = 64;  // what ends the file included
    out.reserve(out.size() + size + size / kMaxChunk * kAroundChunks + kAroundChunks);
    for (std::size_t at = 0; at < size; at += kMaxChunk) {
        appendPngChunk(out, "IDAT", {packed.get() + at, std::min(kMaxChunk, size - at)});
    }
    return size > 0;
}

bool appendData(const CGImage& image, bool opaque, std::optional<double> wantedLevel, Bytes& out) {
    const double clamped =
        std::clamp(wantedLevel.value_or(kFastestLevel), 0.0, static_cast<double>(kSmallestLevel));
    const int level = static_cast<int>(clamped);
    constexpr int kFirstWithPaeth = 3;
    // Up and Sub cost next to nothing, and what the better of them saves the compressor is more.
    PngRows rows(image, opaque,
                 level == 0                ? PngFilters::Sub
                 : level < kFirstWithPaeth ? PngFilters::SubOrUp
                                           : PngFilters::SubUpOrPaeth);
    constexpr std::size_t kLongestLine = std::size_t{64} << 20;  // its chunk stays below 2^31 bytes
    const DeflateWay way = wantedLevel || rows.lineBytes() > kLongestLine
                               ? DeflateWay::Search
                               : fastestWay(sampleOfRows(rows), rows.pixelBytes());
    if (way == DeflateWay::Search) return appendDataWithSearch(rows, level, out);
    // Room for what does not compress; untouched pages of it cost nothing.
    const std::size_t size = rows.lineBytes() * static_cast<std::size_t>(rows.count());
    out.reserve(out.size() + size + size / 8 + 4096);
    preferHugePages(out.data(), out.capacity());
    appendDataInBlocks(rows, way, out);
    return true;
}

}  // namespace

Result<Bytes> writePng(const CGImage& image, const ImageProperties& properties, PngColor color) {
    const bool opaque = color == PngColor::AlphaWhereNeeded && isOpaque(image.pixels());
    Bytes out;
    appendHeader(out, image, opaque);
    appendResolution(out, properties);
    const Bytes exif = writeExifBlock(exifTreeOf(properties), std::nullopt);
    if (!exif.empty()) appendPngChunk(out, "eXIf", exif);
    if (!appendData(image, opaque, numberProperty(properties, kPropertyCompressionLevel), out)) {
        return {ErrorCode::Failed, "The PNG could not be compressed"};
    }
    appendPngChunk(out, "IEND", {});
    return out;
}

}  // namespace skarnel::io
