#include "imaging/io/decoder_protocol.h"

#include <bit>

#include "imaging/io/byte_reader.h"
#include "imaging/io/plain_text.h"
#include "imaging/io/read_file.h"
#include "imaging/io/readers.h"
#include "imaging/io/row_ring.h"

namespace skarnel::io {
namespace {

constexpr std::uint32_t kMaxTextBytes = 64U << 20U;

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

Error damagedAnswer() {
    return {ErrorCode::Damaged, "The decoder's answer is damaged"};
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
    ByteReader in(bytes, ByteOrder::Little);
    PackedProperties packed;
    packed.type = takeText(in);
    if (imageTypeWithIdentifier(packed.type) == nullptr) return damagedAnswer();
    while (in.left() > 0) {
        std::string key = takeText(in);
        auto value = takeValue(in);
        if (!value || in.failed()) return damagedAnswer();
        packed.properties.insert_or_assign(std::move(key), *std::move(value));
    }
    return packed;
}

Result<std::size_t> AnswerOrder::take(const AnswerRecord& record) {
    if (hasEnded_) return damagedAnswer();
    switch (record.kind) {
        case RecordKind::Picture:
            if (width_ != 0) return damagedAnswer();
            if (auto error = checkPictureSize(record.first, record.second, limits_)) return *error;
            width_ = static_cast<int>(record.first);
            height_ = static_cast<int>(record.second);
            return std::size_t{0};
        case RecordKind::Rows:
        case RecordKind::RingRows: {
            if (record.first == 0 || record.first > static_cast<std::uint32_t>(height_ - rows_)) {
                return damagedAnswer();
            }
            const std::size_t size =
                std::size_t{4} * static_cast<std::size_t>(width_) * record.first;
            if (record.kind == RecordKind::RingRows && size > kRingSlotBytes) {
                return damagedAnswer();
            }
            rows_ += static_cast<int>(record.first);
            return size;
        }
        case RecordKind::Done:
            if (width_ == 0 || rows_ != height_) return damagedAnswer();
            [[fallthrough]];
        case RecordKind::Failed:
            if (record.first > kMaxTextBytes) return damagedAnswer();
            hasEnded_ = true;
            return std::size_t{record.first};
        case RecordKind::Encoded:
            break;
    }
    return damagedAnswer();
}

namespace {

/// Longer than any reason that the readers give.
constexpr std::size_t kMaxMessageBytes = 300;
/// As much as the readers take of a camera's texts.
constexpr std::size_t kMaxPropertyBytes = 1024;

/// Makes the texts fit to be shown; false for a key that no reader gives.
bool cleanProperties(ImageProperties& properties) {
    for (auto& [key, value] : properties) {
        if (!isPlainName(key)) return false;
        if (auto* text = std::get_if<std::string>(&value)) {
            *text = plainText({reinterpret_cast<const std::uint8_t*>(text->data()), text->size()},
                              kMaxPropertyBytes);
        }
    }
    return true;
}

/// The pixels, and the record that ends the answer with its text.
struct Received {
    std::optional<PixelBuffer> pixels;
    AnswerRecord last;
    Bytes text;
};

Result<Received> receiveRecords(AnswerSource& source, const DecodeLimits& limits) {
    Received received;
    AnswerOrder order(limits);
    while (!order.hasEnded()) {
        const int firstRow = order.rowsTaken();
        if (!source.read(&received.last, sizeof received.last)) return damagedAnswer();
        const auto size = order.take(received.last);
        if (!size) return size.error();
        if (received.last.kind == RecordKind::Picture) {
            received.pixels = PixelBuffer::uninitialized(order.width(), order.height());
            if (!received.pixels) return {ErrorCode::OutOfMemory, kNoMemory};
        } else if (received.last.kind == RecordKind::Rows) {
            if (!source.read(received.pixels->view().row(firstRow), *size)) return damagedAnswer();
        } else if (received.last.kind == RecordKind::RingRows) {
            if (!source.readFromRing(received.pixels->view().row(firstRow), *size)) {
                return damagedAnswer();
            }
        } else {
            received.text.resize(*size);
            if (!source.read(received.text.data(), *size)) return damagedAnswer();
        }
    }
    if (!source.isAtEnd()) return damagedAnswer();
    return received;
}

}  // namespace

Error answeredError(const AnswerRecord& record, ByteView message) {
    const auto code = record.second <= static_cast<std::uint32_t>(ErrorCode::Failed)
                          ? static_cast<ErrorCode>(record.second)
                          : ErrorCode::Failed;
    return {code, plainText(message, kMaxMessageBytes)};
}

Result<DecodedImage> receiveAnswer(AnswerSource& source, const DecodeLimits& limits) {
    auto received = receiveRecords(source, limits);
    if (!received) return received.error();
    if (received->last.kind == RecordKind::Failed) {
        return answeredError(received->last, received->text);
    }
    auto packed = unpackProperties(received->text);
    if (!packed) return packed.error();
    if (!cleanProperties(packed->properties)) return damagedAnswer();
    return DecodedImage{CGImage(*std::move(received->pixels)), std::move(packed->properties),
                        std::move(packed->type)};
}

}  // namespace skarnel::io
