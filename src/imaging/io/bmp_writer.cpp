// BMP: 24 bits where the picture is opaque, else 32 bits with an alpha mask (the fifth header).
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "imaging/io/pixel_rows.h"
#include "imaging/io/writers.h"

namespace skarnel::io {
namespace {

constexpr std::uint32_t kFileHeader = 14;
constexpr std::uint32_t kInfoHeader = 40;
constexpr std::uint32_t kHeaderWithAlpha = 124;

class LittleEndianWriter {
  public:
    explicit LittleEndianWriter(Bytes& out) : out_(out) {}
    void u16(std::uint32_t value) { put(value, 2); }
    void u32(std::uint32_t value) { put(value, 4); }
    void zeros(std::size_t count) { out_.insert(out_.end(), count, 0); }

  private:
    void put(std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i) out_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    }
    Bytes& out_;
};

void writeHeaders(Bytes& out, const CGImage& image, const ImageProperties& properties, bool opaque,
                  std::uint32_t pixelBytes) {
    const std::uint32_t headerBytes = opaque ? kInfoHeader : kHeaderWithAlpha;
    std::uint32_t perMetreX = 0;
    std::uint32_t perMetreY = 0;
    if (const auto resolution = resolutionOf(properties)) {
        constexpr double kInchesPerMetre = 39.37007874015748;
        auto rounded = [](double value) {
            return static_cast<std::uint32_t>(std::min(std::round(value), 2147483647.0));
        };
        perMetreX = rounded(resolution->horizontal * kInchesPerMetre);
        perMetreY = rounded(resolution->vertical * kInchesPerMetre);
    }
    LittleEndianWriter w(out);
    w.u16(0x4D42);  // "BM"
    w.u32(kFileHeader + headerBytes + pixelBytes);
    w.u32(0);
    w.u32(kFileHeader + headerBytes);
    w.u32(headerBytes);
    w.u32(static_cast<std::uint32_t>(image.width()));
    w.u32(static_cast<std::uint32_t>(image.height()));
    w.u16(1);
    w.u16(opaque ? 24 : 32);
    w.u32(opaque ? 0 : 3);  // raw, or by masks
    w.u32(pixelBytes);
    w.u32(perMetreX);
    w.u32(perMetreY);
    w.zeros(8);
    if (opaque) return;
    for (const std::uint32_t mask : {0x00FF0000U, 0x0000FF00U, 0x000000FFU, 0xFF000000U})
        w.u32(mask);
    w.u32(0x73524742);  // "sRGB"
    w.zeros(48);
    w.u32(4);  // perceptual intent: pictures
    w.zeros(12);
}

}  // namespace

Result<Bytes> writeBmp(const CGImage& image, const ImageProperties& properties) {
    const PixelView view = image.pixels();
    const bool opaque = isOpaque(view);
    const auto width = static_cast<std::size_t>(view.width);
    const std::size_t rowBytes = opaque ? (width * 3 + 3) / 4 * 4 : width * 4;
    const std::uint64_t pixelBytes = std::uint64_t{rowBytes} * static_cast<unsigned>(view.height);
    if (pixelBytes > UINT32_MAX - 256) {
        return {ErrorCode::TooLarge, "BMP files cannot be larger than 4 GB"};
    }
    Bytes out;
    out.reserve(static_cast<std::size_t>(pixelBytes) + 256);
    writeHeaders(out, image, properties, opaque, static_cast<std::uint32_t>(pixelBytes));
    Bytes straight(width * 4);
    for (int y = view.height - 1; y >= 0; --y) {
        const std::uint8_t* row = view.row(y);
        if (!opaque) {
            unpremultiplyRow(row, straight.data(), width);
            row = straight.data();
        }
        const std::size_t at = out.size();
        out.resize(at + rowBytes);
        const auto inBytes = static_cast<std::size_t>(view.samplesPerPixel);
        const std::size_t outBytes = opaque ? 3 : 4;
        for (std::size_t x = 0; x < width; ++x, row += inBytes) {
            std::uint8_t* pixel = out.data() + at + outBytes * x;
            pixel[0] = row[2];
            pixel[1] = row[1];
            pixel[2] = row[0];
            if (!opaque) pixel[3] = row[3];
        }
    }
    return out;
}

}  // namespace skarnel::io
