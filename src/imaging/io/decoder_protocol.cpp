#include "imaging/io/decoder_protocol.h"

#include <bit>

#include "imaging/io/byte_reader.h"
#include "imaging/io/readers.h"

namespace skarnel::io {
namespace {

constexpr std::uint64_t kMaxTextBytes = 64U << 20U;

enum Kind : std::uint8_t { kWhole = 0, kNumber = 1, kText = 2, kBytes = 3 };

void putNumber(Bytes& out, std::uint64_t value) {
    for (int i = 0; i < 8; ++i) out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

template <typename Container>
void putSized(Bytes& out, const Container& container) {
    putNumber(out, container.size());
    out.insert(out.end(), container.begin(), container.end());
}

struct PutValue {
    Bytes& out;
    void operator()(std::int64_t value) const {
        out.push_back(kWhole);
        putNumber(out, static_cast<std::uint64_t>(value));
    }
    void operator()(double value) const {
        out.push_back(kNumber);
        putNumber(out, std::bit_cast<std::uint64_t>(value));
    }
    void operator()(const std::string& value) const {
        out.push_back(kText);
        putSized(out, value);
    }
    void operator()(const Bytes& value) const {
        out.push_back(kBytes);
        putSized(out, value);
    }
};

std::string takeText(ByteReader& in) {
    const ByteView bytes = in.take(in.u64());
    return std::string(bytes.begin(), bytes.end());
}

std::optional<PropertyValue> takeValue(ByteReader& in) {
    switch (in.u8()) {
        case kWhole:
            return static_cast<std::int64_t>(in.u64());
        case kNumber:
            return std::bit_cast<double>(in.u64());
        case kText:
            return takeText(in);
        case kBytes: {
            const ByteView bytes = in.take(in.u64());
            return Bytes(bytes.begin(), bytes.end());
        }
        default:
            return std::nullopt;
    }
}

bool isInside(std::uint64_t offset, std::uint64_t size, std::uint64_t fileBytes) {
    return offset >= kAnswerPage && offset <= fileBytes && size <= fileBytes - offset;
}

}  // namespace

Bytes packProperties(std::string_view type, const ImageProperties& properties) {
    Bytes out;
    putSized(out, type);
    for (const auto& [key, value] : properties) {
        putSized(out, key);
        std::visit(PutValue{out}, value);
    }
    return out;
}

Result<PackedProperties> unpackProperties(ByteView bytes) {
    const Error damaged{ErrorCode::Damaged, "The decoder's answer is damaged"};
    ByteReader in(bytes, ByteOrder::Little);
    PackedProperties packed;
    packed.type = takeText(in);
    if (imageTypeWithIdentifier(packed.type) == nullptr) return damaged;
    while (in.left() > 0) {
        std::string key = takeText(in);
        auto value = takeValue(in);
        if (!value || in.failed()) return damaged;
        packed.properties.insert_or_assign(std::move(key), *std::move(value));
    }
    if (in.failed()) return damaged;
    return packed;
}

Result<void> checkAnswer(const AnswerHeader& header, std::uint64_t fileBytes,
                         const DecodeLimits& limits) {
    const Error damaged{ErrorCode::Damaged, "The decoder's answer is damaged"};
    if (header.magic != kAnswerMagic || header.textBytes > kMaxTextBytes ||
        !isInside(header.textOffset, header.textBytes, fileBytes)) {
        return damaged;
    }
    if (header.isPicture == 0) return {};
    if (auto error = checkPictureSize(header.width, header.height, limits)) return *error;
    const std::uint64_t pixelBytes = std::uint64_t{4} * header.width * header.height;
    if (header.pixelOffset % kAnswerPage != 0 ||
        !isInside(header.pixelOffset, pixelBytes, fileBytes)) {
        return damaged;
    }
    return {};
}

}  // namespace skarnel::io
