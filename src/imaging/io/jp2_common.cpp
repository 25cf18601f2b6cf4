#include "imaging/io/jp2_common.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "imaging/io/byte_reader.h"
#include "util/log/message.h"

namespace skarnel::io {
namespace {

constexpr std::uint32_t kHeaderBox = 0x6A703268;      // "jp2h"
constexpr std::uint32_t kResolutionBox = 0x72657320;  // "res "
constexpr std::uint32_t kCaptureBox = 0x72657363;     // "resc"
constexpr std::uint32_t kDisplayBox = 0x72657364;     // "resd"
constexpr double kInchesPerMetre = 39.37007874015748;

/// A box's contents and where the box itself starts.
struct Box {
    std::size_t start;
    ByteView contents;
};

/// The first box of a type among those that follow one another in `bytes`.
std::optional<Box> findBox(ByteView bytes, std::uint32_t type) {
    ByteReader in(bytes, ByteOrder::Big);
    while (in.left() >= 8) {
        const std::size_t start = in.position();
        std::uint64_t size = in.u32();
        const std::uint32_t found = in.u32();
        if (size == 1) size = in.u64();
        const std::size_t headerBytes = in.position() - start;
        if (size == 0) size = bytes.size() - start;
        if (in.failed() || size < headerBytes) return std::nullopt;
        const ByteView contents = in.take(size - headerBytes);
        if (in.failed()) return std::nullopt;
        if (found == type) return Box{start, contents};
    }
    return std::nullopt;
}

void putNumber(Bytes& out, std::uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

/// A count of points a metre as numerator (16 bits) times a power of ten.
struct DecimalNumber {
    std::uint16_t numerator;
    int exponent;
};

DecimalNumber decimalOf(double value) {
    int exponent = 0;
    while (value > 65535 && exponent < 100) {
        value /= 10;
        ++exponent;
    }
    while (value < 6553 && exponent > -100) {
        value *= 10;
        --exponent;
    }
    return {static_cast<std::uint16_t>(std::clamp(std::round(value), 1.0, 65535.0)), exponent};
}

}  // namespace

void JpMessages::listenTo(opj_codec_t* codec) {
    opj_set_error_handler(
        codec,
        [](const char* text, void* self) {
            auto& first = static_cast<JpMessages*>(self)->first_;
            if (!first.empty() || text == nullptr) return;
            try {
                first = text;
            } catch (const std::bad_alloc&) {
                first.clear();
            }
        },
        this);
    opj_set_warning_handler(
        codec, [](const char*, void*) {}, nullptr);
    opj_set_info_handler(
        codec, [](const char*, void*) {}, nullptr);
}

Error JpMessages::error() const {
    std::string text = first_;
    while (!text.empty() && (text.back() == '\n' || text.back() == '.')) text.pop_back();
    return {ErrorCode::Damaged, text.empty() ? marked("The JPEG 2000 picture is damaged") : text};
}

std::optional<Resolution> jp2Resolution(ByteView file) {
    const auto header = findBox(file, kHeaderBox);
    const auto outer = header ? findBox(header->contents, kResolutionBox) : std::nullopt;
    if (!outer) return std::nullopt;
    auto box = findBox(outer->contents, kCaptureBox);
    if (!box) box = findBox(outer->contents, kDisplayBox);
    if (!box) return std::nullopt;
    ByteReader in(box->contents, ByteOrder::Big);
    const double verticalTop = in.u16();
    const double verticalBottom = in.u16();
    const double horizontalTop = in.u16();
    const double horizontalBottom = in.u16();
    const auto verticalExponent = static_cast<std::int8_t>(in.u8());
    const auto horizontalExponent = static_cast<std::int8_t>(in.u8());
    if (in.failed() || verticalBottom == 0 || horizontalBottom == 0) return std::nullopt;
    return Resolution{
        horizontalTop / horizontalBottom * std::pow(10.0, horizontalExponent) / kInchesPerMetre,
        verticalTop / verticalBottom * std::pow(10.0, verticalExponent) / kInchesPerMetre};
}

Bytes withJp2Resolution(Bytes file, const Resolution& resolution) {
    const auto header = findBox(file, kHeaderBox);
    if (!header) return file;
    const DecimalNumber vertical = decimalOf(resolution.vertical * kInchesPerMetre);
    const DecimalNumber horizontal = decimalOf(resolution.horizontal * kInchesPerMetre);
    Bytes box;
    putNumber(box, 26, 4);
    putNumber(box, kResolutionBox, 4);
    putNumber(box, 18, 4);
    putNumber(box, kCaptureBox, 4);
    putNumber(box, vertical.numerator, 2);
    putNumber(box, 1, 2);
    putNumber(box, horizontal.numerator, 2);
    putNumber(box, 1, 2);
    putNumber(box, static_cast<std::uint8_t>(vertical.exponent), 1);
    putNumber(box, static_cast<std::uint8_t>(horizontal.exponent), 1);

    const std::size_t start = header->start;
    const std::size_t end = start + 8 + header->contents.size();
    file.insert(file.begin() + static_cast<std::ptrdiff_t>(end), box.begin(), box.end());
    const std::size_t size = end - start + box.size();
    for (int i = 0; i < 4; ++i) {
        file[start + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(size >> (24 - 8 * i));
    }
    return file;
}

}  // namespace skarnel::io
