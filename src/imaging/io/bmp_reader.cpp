// BMP, the whole family: core, OS/2, and the Windows headers of 40 to 124 bytes.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <optional>

#include "imaging/io/byte_reader.h"
#include "imaging/io/readers.h"

namespace skarnel::io {
namespace {

constexpr std::uint32_t kFileHeader = 14;
constexpr double kInchesPerMetre = 39.37007874015748;

enum Compression : std::uint32_t { kRaw = 0, kRunLength8 = 1, kRunLength4 = 2, kBitFields = 3 };

using Color = std::array<std::uint8_t, 4>;  // R, G, B, A

/// Where a channel lies in a pixel's word.
struct Channel {
    std::uint32_t mask = 0;

    /// Scaled to 0..255 with rounding; `absent` where the mask is empty.
    std::uint8_t of(std::uint32_t word, std::uint8_t absent) const {
        if (mask == 0) return absent;
        const int shift = std::countr_zero(mask);
        const std::uint64_t maximum = mask >> shift;
        const std::uint64_t value = (word & mask) >> shift;
        return static_cast<std::uint8_t>((value * 255 + maximum / 2) / maximum);
    }
};

struct Header {
    std::uint32_t dataOffset = 0;
    std::uint32_t size = 0;  // of the information header
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool topDown = false;
    int bits = 0;
    std::uint32_t compression = kRaw;
    std::uint32_t colors = 0;
    double pixelsPerMetreX = 0;
    double pixelsPerMetreY = 0;
    std::array<Channel, 4> channels;  // R, G, B, A; used for 16 and 32 bits
    std::size_t paletteOffset = 0;
    Bytes profile;
};

void setDefaultChannels(Header& header) {
    if (header.bits == 16) header.channels = {{{0x7C00}, {0x03E0}, {0x001F}, {0}}};
    // The fourth byte of a plain 32-bit picture is padding: many writers leave it 0.
    if (header.bits == 32) header.channels = {{{0xFF0000}, {0xFF00}, {0xFF}, {0}}};
}

/// An embedded profile lies after the pixels, at a place counted from the header's start.
void readEmbeddedProfile(ByteView bytes, Header& header) {
    ByteReader in(bytes, ByteOrder::Little);
    in.seek(kFileHeader + 56);
    constexpr std::uint32_t kEmbedded = 0x4D424544;  // "MBED"
    if (in.u32() != kEmbedded) return;
    in.seek(kFileHeader + 112);
    const std::uint32_t offset = in.u32();
    const std::uint32_t size = in.u32();
    in.seek(std::uint64_t{kFileHeader} + offset);
    const ByteView profile = in.take(size);
    header.profile.assign(profile.begin(), profile.end());
}

std::optional<Error> readCoreHeader(ByteReader& in, Header& header) {
    header.width = in.u16();
    header.height = in.u16();
    in.u16();  // planes
    header.bits = in.u16();
    return std::nullopt;
}

std::optional<Error> readInfoHeader(ByteReader& in, Header& header) {
    header.width = in.i32();
    const std::int64_t height = in.i32();
    header.topDown = height < 0;
    header.height = std::abs(height);
    in.u16();  // planes
    header.bits = in.u16();
    // OS/2 allows the rest to be left off.
    if (header.size >= 20) header.compression = in.u32();
    if (header.size >= 24) in.u32();  // bytes of pixels; often wrong, never needed
    if (header.size >= 32) {
        header.pixelsPerMetreX = in.i32();
        header.pixelsPerMetreY = in.i32();
    }
    if (header.size >= 36) header.colors = in.u32();
    // Compression 3 and above mean something else with an OS/2 header.
    if (header.size == 64 && header.compression > kRunLength4) {
        return Error{ErrorCode::Unsupported, "This compression of OS/2 BMP files is not handled"};
    }
    return std::nullopt;
}

std::optional<Error> checkVariety(const Header& header) {
    if (header.compression > kBitFields) {
        return Error{ErrorCode::Unsupported, "This compression of BMP files is not handled"};
    }
    const bool known = header.bits == 1 || header.bits == 4 || header.bits == 8 ||
                       header.bits == 16 || header.bits == 24 || header.bits == 32;
    const bool fits =
        (header.compression == kRaw) || (header.compression == kRunLength8 && header.bits == 8) ||
        (header.compression == kRunLength4 && header.bits == 4) ||
        (header.compression == kBitFields && (header.bits == 16 || header.bits == 32));
    if (!known || !fits) {
        return Error{ErrorCode::Damaged, "The BMP header states an impossible pixel size"};
    }
    if (header.bits <= 8 && header.colors > (1U << static_cast<unsigned>(header.bits))) {
        return Error{ErrorCode::Damaged, "The BMP palette is larger than its pixels can name"};
    }
    return std::nullopt;
}

/// The masks of the colours stand after a header of 40 bytes and inside a longer one.
std::optional<Error> readMasks(ByteReader& in, Header& header) {
    setDefaultChannels(header);
    if (header.compression != kBitFields) return std::nullopt;
    in.seek(kFileHeader + 40);
    const std::size_t count = header.size >= 56 ? 4 : 3;
    for (std::size_t i = 0; i < count; ++i) {
        Channel& channel = header.channels[i];
        channel.mask = in.u32();
        if (channel.mask == 0) continue;
        const std::uint32_t shifted = channel.mask >> std::countr_zero(channel.mask);
        if ((shifted & (shifted + 1)) != 0) {
            return Error{ErrorCode::Damaged, "A colour mask of the BMP has gaps"};
        }
    }
    return std::nullopt;
}

Result<Header> readHeader(ByteView bytes) {
    ByteReader in(bytes, ByteOrder::Little);
    Header header;
    in.seek(10);
    header.dataOffset = in.u32();
    header.size = in.u32();
    const bool core = header.size == 12;
    if (in.failed() || (!core && (header.size < 16 || header.size > 124))) {
        return {ErrorCode::Damaged, "The BMP header has an impossible size"};
    }
    if (auto error = core ? readCoreHeader(in, header) : readInfoHeader(in, header)) return *error;
    if (header.width < 1) return {ErrorCode::Damaged, "The BMP has no width"};
    if (auto error = checkVariety(header)) return *error;
    if (auto error = readMasks(in, header)) return *error;
    if (in.failed()) return {ErrorCode::Damaged, "The BMP ends inside its header"};
    header.paletteOffset = kFileHeader + std::size_t{header.size};
    if (header.size == 40 && header.compression == kBitFields) header.paletteOffset += 12;
    if (header.size == 124) readEmbeddedProfile(bytes, header);
    return header;
}

/// All 256 entries; those that the file lacks are black.
std::array<Color, 256> readPalette(ByteView bytes, const Header& header) {
    std::array<Color, 256> palette;
    palette.fill({0, 0, 0, 255});
    if (header.bits > 8) return palette;
    const std::size_t entryBytes = header.size == 12 ? 3 : 4;
    std::size_t count = std::size_t{1} << static_cast<unsigned>(header.bits);
    if (header.colors != 0) count = std::min<std::size_t>(count, header.colors);
    // Some OS/2 files have fewer entries than the pixels could name; the pixels follow at once.
    if (header.dataOffset > header.paletteOffset) {
        count = std::min(count, (header.dataOffset - header.paletteOffset) / entryBytes);
    }
    ByteReader in(bytes, ByteOrder::Little);
    in.seek(header.paletteOffset);
    for (std::size_t i = 0; i < count; ++i) {
        const ByteView entry = in.take(entryBytes);
        if (entry.empty()) break;
        palette[i] = {entry[2], entry[1], entry[0], 255};
    }
    return palette;
}

void putColor(std::uint8_t* pixel, const Color& color) {
    std::copy(color.begin(), color.end(), pixel);
}

void unpackRow(ByteView row, const Header& header, const std::array<Color, 256>& palette,
               std::uint8_t* out) {
    const auto width = static_cast<std::size_t>(header.width);
    for (std::size_t x = 0; x < width; ++x, out += 4) {
        switch (header.bits) {
            case 1:
                putColor(out, palette[row[x / 8] >> (7 - x % 8) & 1U]);
                break;
            case 4:
                putColor(out, palette[x % 2 == 0 ? row[x / 2] >> 4U : row[x / 2] & 15U]);
                break;
            case 8:
                putColor(out, palette[row[x]]);
                break;
            case 24:
                putColor(out, {row[3 * x + 2], row[3 * x + 1], row[3 * x], 255});
                break;
            default: {
                const std::size_t size = static_cast<std::size_t>(header.bits) / 8;
                std::uint32_t word = 0;
                for (std::size_t i = size; i-- > 0;) word = word << 8U | row[x * size + i];
                putColor(out, {header.channels[0].of(word, 0), header.channels[1].of(word, 0),
                               header.channels[2].of(word, 0), header.channels[3].of(word, 255)});
            }
        }
    }
}

std::optional<Error> readRawRows(ByteReader in, const Header& header,
                                 const std::array<Color, 256>& palette, MutablePixelView view) {
    const auto rowBytes =
        (static_cast<std::uint64_t>(header.width) * static_cast<unsigned>(header.bits) + 31) / 32 *
        4;
    for (int i = 0; i < view.height; ++i) {
        // Some writers leave off the padding of the last row.
        const std::uint64_t used =
            (static_cast<std::uint64_t>(header.width) * static_cast<unsigned>(header.bits) + 7) / 8;
        const ByteView row = in.take(i + 1 < view.height ? rowBytes : used);
        if (in.failed()) return Error{ErrorCode::Damaged, "The BMP ends inside its pixels"};
        unpackRow(row, header, palette, view.row(header.topDown ? i : view.height - 1 - i));
    }
    return std::nullopt;
}

/// Run-length pixels. Moves and early ends leave pixels out; they show the first colour.
class RunLengthReader {
  public:
    RunLengthReader(ByteReader in, const Header& header, const std::array<Color, 256>& palette,
                    MutablePixelView view)
        : in_(in), header_(header), palette_(palette), view_(view) {}

    std::optional<Error> run() {
        for (int y = 0; y < view_.height; ++y) {
            for (int x = 0; x < view_.width; ++x) {
                putColor(view_.row(y) + std::ptrdiff_t{4} * x, palette_[0]);
            }
        }
        while (row_ < view_.height && !ended_) {
            const unsigned count = in_.u8();
            const std::uint8_t value = in_.u8();
            if (in_.failed()) return Error{ErrorCode::Damaged, "The BMP ends inside its pixels"};
            if (count > 0) {
                for (unsigned i = 0; i < count; ++i) put(indexIn(value, i));
            } else {
                escape(value);
            }
        }
        return std::nullopt;
    }

  private:
    std::uint8_t indexIn(std::uint8_t value, unsigned i) const {
        if (header_.bits == 8) return value;
        return i % 2 == 0 ? value >> 4U : value & 15U;
    }

    void escape(std::uint8_t code) {
        switch (code) {
            case 0:
                column_ = 0;
                ++row_;
                break;
            case 1:
                ended_ = true;
                break;
            case 2:
                // Moves within a row never end it, and there may be millions of them.
                column_ = std::min(column_ + in_.u8(), view_.width);
                row_ += in_.u8();
                break;
            default: {
                const unsigned bytes = header_.bits == 8 ? code : (code + 1U) / 2;
                const ByteView values = in_.take(bytes);
                for (unsigned i = 0; i < code && !values.empty(); ++i) {
                    put(indexIn(values[header_.bits == 8 ? i : i / 2], i));
                }
                if (bytes % 2 != 0) in_.skip(1);
            }
        }
    }

    /// In a row of the picture: a code that leads out of it is the last.
    void put(std::uint8_t index) {
        if (column_ == view_.width) return;
        const int y = header_.topDown ? row_ : view_.height - 1 - row_;
        putColor(view_.row(y) + std::ptrdiff_t{4} * column_, palette_[index]);
        ++column_;
    }

    ByteReader in_;
    const Header& header_;
    const std::array<Color, 256>& palette_;
    MutablePixelView view_;
    int column_ = 0;
    int row_ = 0;
    bool ended_ = false;
};

/// Before any allocation: raw rows must be there, and a run of two bytes fills at most 255
/// pixels (a move may skip 255 rows more, but no honest picture is made of moves alone).
bool hasEnoughBytes(const Header& header, std::size_t available) {
    const auto pixels =
        static_cast<std::uint64_t>(header.width) * static_cast<std::uint64_t>(header.height);
    if (header.compression == kRunLength8 || header.compression == kRunLength4) {
        return pixels / 4096 <= available;
    }
    return pixels * static_cast<unsigned>(header.bits) / 8 <= available;
}

}  // namespace

Result<SourcePicture> readBmp(ByteView bytes, const DecodeLimits& limits) {
    const auto header = readHeader(bytes);
    if (!header) return header.error();
    if (auto error = checkPictureSize(header->width, header->height, limits)) return *error;
    ByteReader in(bytes, ByteOrder::Little);
    in.seek(header->dataOffset >= header->paletteOffset ? header->dataOffset
                                                        : header->paletteOffset);
    if (in.failed() || !hasEnoughBytes(*header, in.left())) {
        return {ErrorCode::Damaged, "The BMP is too short for its size"};
    }
    auto pixels = allocatePicture(header->width, header->height, limits);
    if (!pixels) return pixels.error();
    SourcePicture picture(*std::move(pixels));
    const auto palette = readPalette(bytes, *header);
    const bool runs = header->compression == kRunLength8 || header->compression == kRunLength4;
    const auto error = runs ? RunLengthReader(in, *header, palette, picture.pixels.view()).run()
                            : readRawRows(in, *header, palette, picture.pixels.view());
    if (error) return *error;

    const bool hasAlpha = header->bits > 8 && header->channels[3].mask != 0;
    picture.alpha = hasAlpha ? Alpha::Straight : Alpha::Opaque;
    picture.profile = header->profile;
    setResolution(picture.properties, header->pixelsPerMetreX / kInchesPerMetre,
                  header->pixelsPerMetreY / kInchesPerMetre);
    describePicture(picture, "RGB", header->bits <= 8 ? header->bits : 8, hasAlpha);
    return picture;
}

}  // namespace skarnel::io
