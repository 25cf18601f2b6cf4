// The chunks of PNG are those of its third edition, the fields of TIFF those of TIFF 6.0 and of its
// large form; WebP is a RIFF file.
#include "imaging/io/encoded_file.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/io/byte_reader.h"

namespace skarnel {
namespace {

using io::ByteOrder;
using io::ByteReader;

std::optional<HeadSize> statedSize(ByteView file) {
    return sizeInHead([&file](std::uint64_t place, std::span<std::uint8_t> target) -> std::size_t {
        if (place >= file.size()) return 0;
        const auto at = static_cast<std::size_t>(place);
        const std::size_t count = std::min(target.size(), file.size() - at);
        std::memcpy(target.data(), file.data() + at, count);
        return count;
    });
}

bool isText(ByteView bytes, std::string_view text) {
    return std::ranges::equal(bytes, text, {}, {},
                              [](char c) { return static_cast<std::uint8_t>(c); });
}

/// Of at least two bytes.
bool endsWithMarker(ByteView file, std::uint8_t code) {
    return file[file.size() - 2] == 0xFF && file.back() == code;
}

bool isWholePng(ByteView file) {
    constexpr std::size_t kSignatureBytes = 8;
    ByteReader in(file, ByteOrder::Big);
    in.skip(kSignatureBytes);
    while (!in.failed()) {
        const std::uint32_t length = in.u32();
        const bool isLast = isText(in.take(4), "IEND");
        in.skip(length);
        in.skip(4);  // check sum
        if (isLast) return !in.failed() && in.left() == 0;
    }
    return false;
}

bool isWholeWebP(ByteView file) {
    constexpr std::size_t kBeforeLength = 4;
    constexpr std::size_t kFormBytes = 4;
    ByteReader in(file, ByteOrder::Little);
    in.skip(kBeforeLength);
    const std::uint32_t length = in.u32();
    if (length != in.left()) return false;
    in.skip(kFormBytes);
    while (in.left() > 0) {
        in.skip(4);  // what it is
        const std::uint64_t chunk = in.u32();
        in.skip(chunk + chunk % 2);
    }
    return !in.failed();
}

bool isWholeBmp(ByteView file) {
    ByteReader in(file, ByteOrder::Little);
    in.skip(2);
    return in.u32() == file.size();
}

/// The first directory of a TIFF file.
class TiffDirectory {
  public:
    explicit TiffDirectory(ByteView file)
        : file_(file), order_(file[0] == 'I' ? ByteOrder::Little : ByteOrder::Big) {
        ByteReader in(file_, order_);
        in.skip(2);
        isLarge_ = in.u16() == 43;
        if (isLarge_) in.skip(4);  // bytes of a place, and zeros
        in.seek(place(in));
        readEntries(in);
    }

    bool liesWithin() const { return liesWithin_; }

    bool hasAllStrips() const {
        if (offsets_.count == 0 || offsets_.count != lengths_.count) return false;
        ByteReader offset = readerOf(offsets_);
        ByteReader length = readerOf(lengths_);
        for (std::uint64_t i = 0; i < offsets_.count; ++i) {
            const std::uint64_t bytes = number(length, lengths_);
            if (bytes == 0 || !holds(number(offset, offsets_), bytes)) return false;
        }
        return true;
    }

  private:
    enum Tag : std::uint16_t { StripOffsets = 273, StripByteCounts = 279 };
    enum Type : std::uint16_t { Short = 3, Long = 4, Long8 = 16 };

    /// Values of one entry, which lie within the file.
    struct Values {
        std::uint16_t type = 0;
        std::uint64_t count = 0;
        std::uint64_t at = 0;
    };

    std::uint64_t place(ByteReader& in) const { return isLarge_ ? in.u64() : in.u32(); }

    bool holds(std::uint64_t at, std::uint64_t bytes) const {
        return at <= file_.size() && bytes <= file_.size() - at;
    }

    /// Bytes of one value; 0 for a type that does not exist.
    static std::uint64_t sizeOf(std::uint16_t type) {
        constexpr std::array<std::uint8_t, 19> kSizes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4,
                                                         8, 4, 8, 4, 0, 0, 8, 8, 8};
        return type < kSizes.size() ? kSizes[type] : 0;
    }

    void readEntries(ByteReader& in) {
        const std::uint64_t entries = isLarge_ ? in.u64() : in.u16();
        for (std::uint64_t i = 0; i < entries; ++i) {
            const std::uint16_t tag = in.u16();
            Values values;
            values.type = in.u16();
            values.count = place(in);
            const std::size_t here = in.position();
            const std::uint64_t elsewhere = place(in);
            const std::uint64_t size = sizeOf(values.type);
            if (in.failed() || size == 0 || values.count > file_.size() / size) return;
            const bool isHere = values.count * size <= in.position() - here;
            values.at = isHere ? here : elsewhere;
            if (!holds(values.at, values.count * size)) return;
            if (tag == StripOffsets) offsets_ = values;
            if (tag == StripByteCounts) lengths_ = values;
        }
        place(in);  // of the next directory
        liesWithin_ = !in.failed();
    }

    ByteReader readerOf(const Values& values) const {
        ByteReader in(file_, order_);
        in.seek(values.at);
        return in;
    }

    static std::uint64_t number(ByteReader& in, const Values& of) {
        if (of.type == Short) return in.u16();
        return of.type == Long8 ? in.u64() : in.u32();
    }

    ByteView file_;
    ByteOrder order_;
    bool isLarge_ = false;
    bool liesWithin_ = false;
    Values offsets_;
    Values lengths_;
};

bool isWholeTiff(ByteView file) {
    const TiffDirectory directory(file);
    return directory.liesWithin() && directory.hasAllStrips();
}

/// Of a file whose first bytes are those of its type, three at least.
bool isWhole(ByteView file, std::string_view type) {
    constexpr std::uint8_t kEndOfImage = 0xD9;  // EOI of JPEG, EOC of JPEG 2000
    if (type == kUTTypePNG) return isWholePng(file);
    if (type == kUTTypeWebP) return isWholeWebP(file);
    if (type == kUTTypeBMP) return isWholeBmp(file);
    if (type == kUTTypeTIFF) return isWholeTiff(file);
    return endsWithMarker(file, kEndOfImage);
}

bool isFileOf(ByteView file, std::string_view type, HeadSize size) {
    const ImageType* found = imageTypeOfContent(file);
    return found != nullptr && found->identifier == type && statedSize(file) == size &&
           isWhole(file, type);
}

}  // namespace

Result<Bytes> checkedFile(Result<Bytes> encoded, std::string_view type, HeadSize size) {
    if (!encoded || isFileOf(*encoded, type, size)) return encoded;
    return {ErrorCode::Failed, "The encoded picture is not of its format"};
}

Result<Bytes> checkedAddition(Result<Bytes> made, ByteView from) {
    const ImageType* type = imageTypeOfContent(from);
    return checkedFile(std::move(made), type == nullptr ? std::string_view() : type->identifier,
                       statedSize(from).value_or(HeadSize{}));
}

}  // namespace skarnel
