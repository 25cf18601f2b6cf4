// Photoshop files, small and big: the composite picture that every such file carries.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "imaging/io/byte_reader.h"
#include "imaging/io/exif.h"
#include "imaging/io/readers.h"
#include "imaging/io/zlib_library.h"

namespace skarnel::io {
namespace {

enum Mode : std::uint16_t {
    kBitmap = 0,
    kGray = 1,
    kIndexed = 2,
    kRgb = 3,
    kCmyk = 4,
    kDuotone = 8,  // its grey picture; the inks are a printing matter
};

enum Packing : std::uint16_t { kRaw = 0, kRunLength = 1, kZip = 2, kZipPredicted = 3 };

struct Header {
    bool big = false;
    int channels = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int depth = 0;
    std::uint16_t mode = 0;

    int colors() const { return mode == kRgb ? 3 : mode == kCmyk ? 4 : 1; }
    std::size_t rowBytes() const {
        return (std::size_t{width} * static_cast<unsigned>(depth) + 7) / 8;
    }
};

std::optional<Error> readHeader(ByteReader& in, Header& header) {
    in.skip(4);
    header.big = in.u16() == 2;
    in.skip(6);
    header.channels = in.u16();
    header.height = in.u32();
    header.width = in.u32();
    header.depth = in.u16();
    header.mode = in.u16();
    const std::uint32_t maxSide = header.big ? 300000 : 30000;
    if (in.failed() || header.channels < 1 || header.channels > 56 || header.width > maxSide ||
        header.height > maxSide) {
        return Error{ErrorCode::Damaged, "The Photoshop header is damaged"};
    }
    const bool known = header.mode == kBitmap || header.mode == kGray || header.mode == kIndexed ||
                       header.mode == kRgb || header.mode == kCmyk || header.mode == kDuotone;
    if (!known) return Error{ErrorCode::Unsupported, "This Photoshop colour mode is not handled"};
    const bool depthFits = header.mode == kBitmap ? header.depth == 1
                           : header.mode == kIndexed
                               ? header.depth == 8
                               : header.depth == 8 || header.depth == 16 || header.depth == 32;
    if (!depthFits || header.channels < header.colors()) {
        return Error{ErrorCode::Damaged, "The Photoshop header states an impossible picture"};
    }
    return std::nullopt;
}

struct Resources {
    double dpiHorizontal = 0;
    double dpiVertical = 0;
    ByteView profile;
    ByteView exif;
};

Resources readResources(ByteView section) {
    Resources found;
    ByteReader in(section, ByteOrder::Big);
    constexpr std::uint32_t kSignature = 0x3842494D;  // "8BIM"
    while (in.left() >= 12 && in.u32() == kSignature) {
        const std::uint16_t id = in.u16();
        const unsigned nameBytes = in.u8();
        in.skip(nameBytes + (nameBytes % 2 == 0 ? 1 : 0));
        const std::uint32_t size = in.u32();
        const ByteView data = in.take(size);
        if (size % 2 != 0) in.skip(1);
        if (id == 1005) {
            ByteReader resolution(data, ByteOrder::Big);
            found.dpiHorizontal = resolution.u32() / 65536.0;  // always pixels an inch
            resolution.skip(4);
            found.dpiVertical = resolution.u32() / 65536.0;
        } else if (id == 1039) {
            found.profile = data;
        } else if (id == 1058) {
            found.exif = data;
        }
    }
    return found;
}

/// The first extra channel is the composite's transparency when the layer count is negative, or
/// when there are no layers that could say otherwise.
bool extraChannelIsAlpha(ByteView layerSection, bool big) {
    ByteReader in(layerSection, ByteOrder::Big);
    const std::uint64_t infoBytes = big ? in.u64() : in.u32();
    if (in.failed() || infoBytes < 2) return true;
    const int layers = in.i16();
    return layers <= 0;
}

/// Hands out the rows of all channels, one channel after the other.
class RowSource {
  public:
    virtual ~RowSource() = default;
    /// Exactly the header's row bytes; false when the data end or are damaged.
    virtual bool next(std::uint8_t* row) = 0;
};

class RawRows final : public RowSource {
  public:
    RawRows(ByteReader in, std::size_t rowBytes) : in_(in), rowBytes_(rowBytes) {}
    bool next(std::uint8_t* row) override {
        const ByteView part = in_.take(rowBytes_);
        std::copy(part.begin(), part.end(), row);
        return !in_.failed();
    }

  private:
    ByteReader in_;
    std::size_t rowBytes_;
};

class RunLengthRows final : public RowSource {
  public:
    RunLengthRows(ByteReader in, const Header& header)
        : lengths_(in), rows_(in), rowBytes_(header.rowBytes()), wide_(header.big) {
        rows_.skip(std::uint64_t{header.height} * static_cast<unsigned>(header.channels) *
                   (wide_ ? 4 : 2));
    }
    bool next(std::uint8_t* row) override {
        const std::uint32_t size = wide_ ? lengths_.u32() : lengths_.u16();
        const ByteView packed = rows_.take(size);
        return !rows_.failed() && unpack(packed, row);
    }

  private:
    bool unpack(ByteView packed, std::uint8_t* row) const {
        std::size_t at = 0;
        std::size_t filled = 0;
        while (at < packed.size() && filled < rowBytes_) {
            const auto code = static_cast<std::int8_t>(packed[at++]);
            if (code == -128) continue;
            const std::size_t count = code >= 0 ? std::size_t{1} + static_cast<unsigned>(code)
                                                : static_cast<std::size_t>(1 - code);
            const std::size_t needed = code >= 0 ? count : 1;
            if (packed.size() - at < needed || rowBytes_ - filled < count) return false;
            if (code >= 0) {
                std::memcpy(row + filled, packed.data() + at, count);
            } else {
                std::memset(row + filled, packed[at], count);
            }
            at += needed;
            filled += count;
        }
        return filled == rowBytes_;
    }

    ByteReader lengths_;
    ByteReader rows_;
    std::size_t rowBytes_;
    bool wide_;
};

class ZipRows final : public RowSource {
  public:
    ZipRows(ByteReader in, const Header& header, bool predicted)
        : rest_(in.take(in.left())), header_(header), predicted_(predicted) {
        ready_ = zlibLibrary().load() && inflateInit(&stream_) == Z_OK;
    }
    ~ZipRows() override {
        if (ready_) inflateEnd(&stream_);
    }
    ZipRows(const ZipRows&) = delete;
    ZipRows& operator=(const ZipRows&) = delete;

    bool next(std::uint8_t* row) override {
        if (!ready_ || !inflateRow(row)) return false;
        if (predicted_) undoPrediction(row);
        return true;
    }

  private:
    bool inflateRow(std::uint8_t* row) {
        stream_.next_out = row;
        stream_.avail_out = static_cast<uInt>(header_.rowBytes());
        while (stream_.avail_out > 0) {
            if (stream_.avail_in == 0) {
                const std::size_t part = std::min<std::size_t>(rest_.size(), 1U << 30U);
                if (part == 0) return false;
                stream_.next_in = const_cast<std::uint8_t*>(rest_.data());
                stream_.avail_in = static_cast<uInt>(part);
                rest_ = rest_.subspan(part);
            }
            const int status = inflate(&stream_, Z_NO_FLUSH);
            if (status == Z_STREAM_END && stream_.avail_out > 0) return false;
            if (status != Z_OK && status != Z_STREAM_END) return false;
        }
        return true;
    }

    /// Each sample was stored as its difference from the one to its left; 32-bit rows as four
    /// rows of bytes, the highest first, differenced throughout.
    void undoPrediction(std::uint8_t* row) {
        const std::size_t size = header_.rowBytes();
        if (header_.depth == 16) {
            for (std::size_t i = 2; i + 1 < size; i += 2) {
                const unsigned sum =
                    (row[i - 2] * 256U + row[i - 1]) + (row[i] * 256U + row[i + 1]);
                row[i] = static_cast<std::uint8_t>(sum >> 8U);
                row[i + 1] = static_cast<std::uint8_t>(sum);
            }
            return;
        }
        for (std::size_t i = 1; i < size; ++i)
            row[i] = static_cast<std::uint8_t>(row[i] + row[i - 1]);
        if (header_.depth != 32) return;
        scratch_.assign(row, row + size);
        const std::size_t width = header_.width;
        for (std::size_t i = 0; i < size; ++i) row[i] = scratch_[i % 4 * width + i / 4];
    }

    ByteView rest_;
    const Header& header_;
    bool predicted_;
    bool ready_ = false;
    z_stream stream_{};
    Bytes scratch_;
};

std::unique_ptr<RowSource> rowSource(ByteReader in, const Header& header) {
    const std::uint16_t packing = in.u16();
    if (in.failed()) return nullptr;
    switch (packing) {
        case kRaw:
            return std::make_unique<RawRows>(in, header.rowBytes());
        case kRunLength:
            return std::make_unique<RunLengthRows>(in, header);
        case kZip:
        case kZipPredicted:
            return std::make_unique<ZipRows>(in, header, packing == kZipPredicted);
        default:
            return nullptr;
    }
}

/// 32-bit pictures hold light, not display values: the sRGB curve of IEC 61966-2-1 takes them to
/// the eye's scale.
std::uint8_t byteOfLight(float light) {
    if (!(light > 0)) return 0;
    if (light >= 1) return 255;
    const double value = light <= 0.0031308F ? 12.92 * double{light}
                                             : 1.055 * std::pow(double{light}, 1 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(value * 255 + 0.5);
}

/// Writes one channel's row to every fourth byte (or `step`th), as 0..255.
void spreadRow(const std::uint8_t* row, const Header& header, bool isColor, std::uint8_t* out,
               std::size_t step) {
    for (std::size_t x = 0; x < header.width; ++x, out += step) {
        switch (header.depth) {
            case 1:  // set bits are black
                *out = (row[x / 8] >> (7 - x % 8) & 1U) != 0 ? 0 : 255;
                break;
            case 8:
                *out = row[x];
                break;
            case 16:
                *out = static_cast<std::uint8_t>(
                    ((row[2 * x] * 256U + row[2 * x + 1]) * 255U + 32767U) / 65535U);
                break;
            default: {
                const std::uint32_t bits = std::uint32_t{row[4 * x]} << 24U |
                                           std::uint32_t{row[4 * x + 1]} << 16U |
                                           std::uint32_t{row[4 * x + 2]} << 8U | row[4 * x + 3];
                const float value = std::bit_cast<float>(bits);
                *out = isColor ? byteOfLight(value)
                               : static_cast<std::uint8_t>(
                                     !(value > 0) ? 0 : std::min(value, 1.0F) * 255 + 0.5F);
            }
        }
    }
}

bool readChannels(RowSource& rows, const Header& header, bool hasAlpha, SourcePicture& picture) {
    const int colors = header.colors();
    const MutablePixelView view = picture.pixels.view();
    Bytes row(header.rowBytes());
    if (hasAlpha && header.mode == kCmyk) {
        picture.cmykAlpha.resize(std::size_t{header.width} * header.height);
    }
    for (int channel = 0; channel < colors + (hasAlpha ? 1 : 0); ++channel) {
        for (int y = 0; y < view.height; ++y) {
            if (!rows.next(row.data())) return false;
            const bool isColor = channel < colors;
            if (!isColor && header.mode == kCmyk) {
                spreadRow(
                    row.data(), header, false,
                    picture.cmykAlpha.data() + std::size_t{header.width} * static_cast<unsigned>(y),
                    1);
            } else {
                spreadRow(row.data(), header, isColor, view.row(y) + (isColor ? channel : 3), 4);
            }
        }
    }
    return true;
}

/// Grey three times, the palette's colours, ink amounts the right way round, full alpha.
void completePixels(const Header& header, ByteView palette, bool hasAlpha, MutablePixelView view) {
    for (int y = 0; y < view.height; ++y) {
        std::uint8_t* pixel = view.row(y);
        for (int x = 0; x < view.width; ++x, pixel += 4) {
            if (header.mode == kCmyk) {
                for (int k = 0; k < 4; ++k) pixel[k] = 255 - pixel[k];
                continue;
            }
            if (header.mode == kIndexed) {
                const std::size_t index = pixel[0];
                for (std::size_t k = 0; k < 3; ++k) pixel[k] = palette[256 * k + index];
            } else if (header.mode != kRgb) {
                pixel[1] = pixel[2] = pixel[0];
            }
            if (!hasAlpha) pixel[3] = 255;
        }
    }
}

void describe(const Header& header, const Resources& resources, bool hasAlpha,
              SourcePicture& picture) {
    const bool gray = header.mode == kBitmap || header.mode == kGray || header.mode == kDuotone;
    picture.samples = header.mode == kCmyk ? Samples::Cmyk : gray ? Samples::Gray : Samples::Rgb;
    picture.alpha = hasAlpha ? Alpha::OverWhite : Alpha::Opaque;
    // A 32-bit picture's profile describes light, which has been taken to sRGB already.
    if (header.depth != 32) {
        picture.profile.assign(resources.profile.begin(), resources.profile.end());
    }
    // The pixels stand as the program showed them: an orientation kept from the camera's file
    // has been applied long ago.
    const ExifFacts facts = readExif(resources.exif, picture.properties);
    setResolution(picture.properties, facts.dpiHorizontal, facts.dpiVertical);
    setResolution(picture.properties, resources.dpiHorizontal, resources.dpiVertical);
    describePicture(picture,
                    header.mode == kCmyk ? "CMYK"
                    : gray               ? "Gray"
                                         : "RGB",
                    header.depth, hasAlpha);
}

}  // namespace

Result<SourcePicture> readPsd(ByteView bytes, const DecodeLimits& limits) {
    const Error damaged{ErrorCode::Damaged, "The Photoshop file is damaged"};
    ByteReader in(bytes, ByteOrder::Big);
    Header header;
    if (auto error = readHeader(in, header)) return *error;
    const ByteView palette = in.take(in.u32());
    const ByteView resourceSection = in.take(in.u32());
    const ByteView layers = in.take(header.big ? in.u64() : in.u32());
    if (in.failed() || (header.mode == kIndexed && palette.size() < 768)) return damaged;
    if (auto error = checkPictureSize(header.width, header.height, limits)) return *error;
    const auto rows = rowSource(in, header);
    if (!rows) return damaged;

    auto pixels = allocatePicture(header.width, header.height, limits);
    if (!pixels) return pixels.error();
    SourcePicture picture(*std::move(pixels));
    const bool hasAlpha =
        header.channels > header.colors() && extraChannelIsAlpha(layers, header.big);
    if (!readChannels(*rows, header, hasAlpha, picture)) return damaged;
    completePixels(header, palette, hasAlpha, picture.pixels.view());
    describe(header, readResources(resourceSection), hasAlpha, picture);
    return picture;
}

}  // namespace skarnel::io
