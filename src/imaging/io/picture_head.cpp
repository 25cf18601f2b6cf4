#include "imaging/io/picture_head.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "imaging/io/byte_reader.h"
#include "imaging/io/image_io.h"
#include "imaging/io/read_file.h"

namespace skarnel {
namespace {

using io::ByteOrder;
using io::ByteReader;

constexpr std::size_t kPieceBytes = 64;  // more than any fixed head here has
constexpr int kMostSteps = 1000;         // segments, boxes or entries that are walked over
constexpr std::uint64_t kMostAssociationBytes = 1 << 18;  // of all items of a HEIF file

std::optional<HeadSize> checked(std::int64_t width, std::int64_t height) {
    constexpr std::int64_t kMaxSide = std::numeric_limits<std::int32_t>::max() / 4;
    if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) return std::nullopt;
    return HeadSize{static_cast<int>(width), static_cast<int>(height)};
}

/// A short piece of the file.
class Piece {
  public:
    Piece(const ReadAt& read, std::uint64_t place) : size_(read(place, bytes_)) {}

    ByteView bytes() const { return ByteView(bytes_).first(size_); }
    ByteReader reader(ByteOrder order, std::size_t from = 0) const {
        ByteReader in(bytes(), order);
        in.skip(from);
        return in;
    }
    bool has(std::string_view text, std::size_t at) const {
        return size_ >= at + text.size() &&
               std::string_view(reinterpret_cast<const char*>(bytes_.data()) + at, text.size()) ==
                   text;
    }

  private:
    std::array<std::uint8_t, kPieceBytes> bytes_{};
    std::size_t size_;
};

/// Marker segments up to the first frame header (ITU-T T.81, annex B).
std::optional<HeadSize> jpegSize(const ReadAt& read) {
    std::uint64_t place = 2;
    for (int step = 0; step < kMostSteps; ++step) {
        const Piece piece(read, place);
        ByteReader in = piece.reader(ByteOrder::Big);
        if (in.u8() != 0xFF) return std::nullopt;
        const std::uint8_t code = in.u8();
        if (code == 0xFF) {  // a fill byte
            ++place;
            continue;
        }
        const std::uint16_t length = in.u16();
        const bool isTable = code == 0xC4 || code == 0xC8 || code == 0xCC;
        if (code >= 0xC0 && code <= 0xCF && !isTable) {
            in.skip(1);  // bits a sample
            const int height = in.u16();
            const int width = in.u16();
            return in.failed() ? std::nullopt : checked(width, height);
        }
        if (in.failed() || length < 2 || code == 0xDA) return std::nullopt;
        place += std::uint64_t{2} + length;
    }
    return std::nullopt;
}

std::optional<HeadSize> tiffSize(const ReadAt& read) {
    const Piece head(read, 0);
    const ByteOrder order = head.bytes()[0] == 'I' ? ByteOrder::Little : ByteOrder::Big;
    ByteReader in = head.reader(order, 2);
    const bool big = in.u16() == 43;
    if (big) in.skip(4);  // bytes of an offset, and zeros
    std::uint64_t place = big ? in.u64() : in.u32();
    if (in.failed()) return std::nullopt;
    const Piece first(read, place);
    ByteReader counter = first.reader(order);
    const std::uint64_t entries = big ? counter.u64() : counter.u16();
    place += big ? 8 : 2;
    std::int64_t width = 0;
    std::int64_t height = 0;
    for (std::uint64_t i = 0; i < entries && i < kMostSteps && (width == 0 || height == 0); ++i) {
        const Piece piece(read, place);
        place += big ? 20 : 12;
        ByteReader entry = piece.reader(order);
        const std::uint16_t tag = entry.u16();
        const std::uint16_t type = entry.u16();
        entry.skip(big ? 8 : 4);
        constexpr std::uint16_t kShort = 3;
        constexpr std::uint16_t kLong8 = 16;
        const std::uint64_t stated = type == kShort   ? entry.u16()
                                     : type == kLong8 ? entry.u64()
                                                      : entry.u32();
        const auto value = static_cast<std::int64_t>(std::min<std::uint64_t>(stated, INT64_MAX));
        if (entry.failed()) return std::nullopt;
        if (tag == 256) width = value;
        if (tag == 257) height = value;
    }
    return checked(width, height);
}

std::optional<HeadSize> bmpSize(const Piece& head) {
    ByteReader in = head.reader(ByteOrder::Little, 14);
    const bool isOld = in.u32() == 12;
    const std::int64_t width = isOld ? in.u16() : in.i32();
    const std::int64_t height = isOld ? in.u16() : in.i32();
    return in.failed() ? std::nullopt : checked(width, std::abs(height));
}

std::optional<HeadSize> webPSize(const Piece& head) {
    ByteReader in = head.reader(ByteOrder::Little, 20);
    constexpr std::uint32_t kSideMask = 0x3FFF;
    if (head.has("VP8X", 12)) {
        in.skip(4);
        const auto side = [&] {
            const std::uint32_t low = in.u16();
            return low | std::uint32_t{in.u8()} << 16;
        };
        const std::uint32_t width = side();
        const std::uint32_t height = side();
        return in.failed() ? std::nullopt : checked(width + 1, height + 1);
    }
    if (head.has("VP8L", 12)) {
        in.skip(1);
        const std::uint32_t sides = in.u32();
        if (in.failed()) return std::nullopt;
        return checked((sides & kSideMask) + 1, (sides >> 14 & kSideMask) + 1);
    }
    in.skip(6);  // frame tag and start code
    const std::uint32_t width = in.u16() & kSideMask;
    const std::uint32_t height = in.u16() & kSideMask;
    return in.failed() ? std::nullopt : checked(width, height);
}

/// A box of the ISO base media file format, as JPEG 2000 and JPEG XL use it too.
struct Box {
    std::uint64_t content = 0;  // places in the file
    std::uint64_t end = 0;
};

/// Calls `each` with the boxes that lie side by side in a range, until it says that it is done.
template <typename Each>
void forEachBox(const ReadAt& read, Box range, Each each) {
    std::uint64_t place = range.content;
    for (int step = 0; step < kMostSteps && place < range.end; ++step) {
        const Piece piece(read, place);
        ByteReader in = piece.reader(ByteOrder::Big);
        std::uint64_t size = in.u32();
        in.skip(4);
        std::uint64_t headBytes = 8;
        if (size == 1) {
            size = in.u64();
            headBytes = 16;
        }
        if (in.failed() || (size != 0 && size < headBytes)) return;
        const std::uint64_t left = range.end - place;
        const std::uint64_t end = size == 0 || size > left ? range.end : place + size;
        // What is left may be shorter than a box's head.
        if (each(piece, Box{std::min(place + headBytes, end), end})) return;
        place = end;
    }
}

constexpr Box kWholeFile{0, std::numeric_limits<std::uint64_t>::max()};

std::optional<Box> findBox(const ReadAt& read, Box range, std::string_view type) {
    std::optional<Box> found;
    forEachBox(read, range, [&](const Piece& piece, Box box) {
        if (piece.has(type, 4)) found = box;
        return found.has_value();
    });
    return found;
}

std::optional<HeadSize> codestream2000Size(const ReadAt& read, std::uint64_t place) {
    const Piece piece(read, place);
    ByteReader in = piece.reader(ByteOrder::Big, 8);  // two markers, a length, capabilities
    const std::int64_t right = in.u32();
    const std::int64_t bottom = in.u32();
    const std::int64_t left = in.u32();
    const std::int64_t top = in.u32();
    return in.failed() ? std::nullopt : checked(right - left, bottom - top);
}

std::optional<HeadSize> jpeg2000Size(const ReadAt& read, const Piece& head) {
    if (head.has("\xFF\x4F", 0)) return codestream2000Size(read, 0);
    const auto codestream = findBox(read, kWholeFile, "jp2c");
    return codestream ? codestream2000Size(read, codestream->content) : std::nullopt;
}

/// What describes the items of a HEIF or AVIF file, and which is the picture.
std::optional<Box> findMeta(const ReadAt& read) {
    auto meta = findBox(read, kWholeFile, "meta");
    if (meta) meta->content += 4;  // version and flags
    return meta;
}

std::optional<Box> findProperties(const ReadAt& read, Box meta) {
    const auto outer = findBox(read, meta, "iprp");
    return outer ? findBox(read, *outer, "ipco") : std::nullopt;
}

/// Calls `each` with the number, from 1 on, of every size that the file describes.
template <typename Each>
void forEachSize(const ReadAt& read, Box properties, Each each) {
    int number = 0;
    forEachBox(read, properties, [&](const Piece& piece, Box box) {
        ++number;
        if (!piece.has("ispe", 4)) return false;
        const Piece content(read, box.content);
        ByteReader in = content.reader(ByteOrder::Big, 4);  // version and flags
        const std::int64_t width = in.u32();
        if (const auto size = checked(width, in.u32())) each(number, *size);
        return false;
    });
}

void keepLarger(std::optional<HeadSize>& largest, HeadSize size) {
    const auto area = [](HeadSize of) { return std::int64_t{of.width} * of.height; };
    if (!largest || area(size) > area(*largest)) largest = size;
}

/// The largest of the sizes that a HEIF or AVIF file describes: a picture of tiles describes both
/// the tiles and the whole.
std::optional<HeadSize> heifSize(const ReadAt& read) {
    const auto meta = findMeta(read);
    const auto properties = meta ? findProperties(read, *meta) : std::nullopt;
    std::optional<HeadSize> largest;
    if (!properties) return largest;
    forEachSize(read, *properties, [&](int, HeadSize size) { keepLarger(largest, size); });
    return largest;
}

/// Version and flags of a box.
struct Kind {
    int version = 0;
    std::uint32_t flags = 0;
};

Kind kindIn(ByteReader& in) {
    const std::uint32_t both = in.u32();
    return {static_cast<int>(both >> 24), both & 0xFFFFFF};
}

std::optional<std::uint32_t> primaryItem(const ReadAt& read, Box meta) {
    const auto box = findBox(read, meta, "pitm");
    if (!box) return std::nullopt;
    const Piece piece(read, box->content);
    ByteReader in = piece.reader(ByteOrder::Big);
    const std::uint32_t item = kindIn(in).version == 0 ? in.u16() : in.u32();
    return in.failed() ? std::nullopt : std::optional(item);
}

/// Which properties an item has, by their numbers, which have fifteen bits. However often a file
/// names one, it counts once.
using Properties = std::bitset<std::size_t{1} << 15>;

/// Takes what this box takes off `leftBytes`, and reads no more than that.
void noteProperties(const ReadAt& read, Box box, std::uint32_t item, std::uint64_t& leftBytes,
                    Properties& properties) {
    Bytes bytes(static_cast<std::size_t>(std::min(box.end - box.content, leftBytes)));
    leftBytes -= bytes.size();
    bytes.resize(read(box.content, bytes));
    ByteReader in(bytes, ByteOrder::Big);
    const Kind kind = kindIn(in);
    const std::uint32_t entries = in.u32();
    for (std::uint32_t entry = 0; entry < entries && !in.failed(); ++entry) {
        const bool isIts = (kind.version == 0 ? in.u16() : in.u32()) == item;
        const int count = in.u8();
        for (int i = 0; i < count && !in.failed(); ++i) {
            // The highest bit says whether a reader must know the property.
            const unsigned number = (kind.flags & 1U) != 0 ? in.u16() & 0x7FFFU : in.u8() & 0x7FU;
            if (isIts) properties.set(number);
        }
    }
}

/// Bits as JPEG XL counts them, the lowest of a byte first; 0 past the end.
class Bits {
  public:
    explicit Bits(ByteView bytes) : bytes_(bytes) {}
    std::uint32_t take(unsigned count) {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < count; ++i, ++at_) {
            if (at_ / 8 < bytes_.size()) value |= (bytes_[at_ / 8] >> at_ % 8 & 1U) << i;
        }
        return value;
    }

  private:
    ByteView bytes_;
    std::size_t at_ = 0;
};

/// SizeHeader of ISO/IEC 18181-1: the height, then a ratio or the width.
std::optional<HeadSize> jpegXLSize(const ReadAt& read, const Piece& head) {
    Box stream = kWholeFile;
    if (!head.has("\xFF\x0A", 0)) {
        // Whichever comes first is what the library decodes.
        forEachBox(read, kWholeFile, [&stream](const Piece& piece, Box box) {
            const bool isPart = piece.has("jxlp", 4);
            if (isPart) box.content += 4;  // its number
            if (isPart || piece.has("jxlc", 4)) stream = box;
            return stream.content != 0;
        });
    }
    const Piece piece(read, stream.content);
    if (!piece.has("\xFF\x0A", 0) || stream.end < stream.content + 2) return std::nullopt;
    const auto length = std::min<std::uint64_t>(piece.bytes().size(), stream.end - stream.content);
    Bits bits(piece.bytes().subspan(2, length - 2));
    const bool isSmall = bits.take(1) == 1;
    const auto side = [&]() -> std::int64_t {
        constexpr std::array<unsigned, 4> kBits = {9, 13, 18, 30};
        return isSmall ? 8 * (bits.take(5) + 1) : std::int64_t{bits.take(kBits[bits.take(2)])} + 1;
    };
    const std::int64_t height = side();
    struct Ratio {
        std::int64_t width, height;
    };
    constexpr std::array<Ratio, 8> kRatios = {
        {{0, 1}, {1, 1}, {12, 10}, {4, 3}, {3, 2}, {16, 9}, {5, 4}, {2, 1}}};
    const std::uint32_t ratio = bits.take(3);
    if (ratio == 0) return checked(side(), height);
    return checked(height * kRatios[ratio].width / kRatios[ratio].height, height);
}

/// Formats whose two numbers stand at a fixed place.
std::optional<HeadSize> plainSize(const Piece& head, std::string_view type) {
    if (type == kUTTypeGIF) {
        ByteReader in = head.reader(ByteOrder::Little, 6);
        const int width = in.u16();
        return checked(width, in.u16());
    }
    const bool isPhotoshop = type == kUTTypePSD;
    ByteReader in = head.reader(ByteOrder::Big, isPhotoshop ? 14 : 16);
    const std::int64_t first = in.u32();
    const std::int64_t second = in.u32();
    return isPhotoshop ? checked(second, first) : checked(first, second);
}

}  // namespace

std::optional<HeadSize> sizeOfPrimaryItem(const ReadAt& read) {
    const auto meta = findMeta(read);
    if (!meta) return std::nullopt;
    const auto item = primaryItem(read, *meta);
    const auto outer = findBox(read, *meta, "iprp");
    const auto properties = outer ? findBox(read, *outer, "ipco") : std::nullopt;
    if (!item || !properties) return std::nullopt;
    // One for few properties and one for many may stand side by side.
    Properties itsOwn;
    std::uint64_t leftBytes = kMostAssociationBytes;
    forEachBox(read, *outer, [&](const Piece& piece, Box uses) {
        if (piece.has("ipma", 4)) noteProperties(read, uses, *item, leftBytes, itsOwn);
        return leftBytes == 0;
    });
    std::optional<HeadSize> largest;
    forEachSize(read, *properties, [&](int number, HeadSize size) {
        if (itsOwn.test(static_cast<std::size_t>(number))) keepLarger(largest, size);
    });
    return largest;
}

std::optional<HeadSize> sizeInHead(const ReadAt& read) {
    const Piece head(read, 0);
    const ImageType* known = imageTypeOfContent(head.bytes());
    if (known == nullptr) return std::nullopt;
    const std::string_view type = known->identifier;
    if (type == kUTTypeJPEG) return jpegSize(read);
    if (type == kUTTypeTIFF) return tiffSize(read);
    if (type == kUTTypeBMP) return bmpSize(head);
    if (type == kUTTypeWebP) return webPSize(head);
    if (type == kUTTypeJPEG2000) return jpeg2000Size(read, head);
    if (type == kUTTypeHEIF || type == kUTTypeAVIF) return heifSize(read);
    if (type == kUTTypeJPEGXL) return jpegXLSize(read, head);
    return plainSize(head, type);  // PNG, GIF, Photoshop
}

std::optional<HeadSize> sizeInHeadOfFile(const std::string& path) {
    const auto file = io::openPicture(path);
    if (!file) return std::nullopt;
    return sizeInHead([&](std::uint64_t place, std::span<std::uint8_t> target) -> std::size_t {
        if (place > std::uint64_t{std::numeric_limits<off_t>::max()}) return 0;
        const ssize_t count =
            ::pread(file->number(), target.data(), target.size(), static_cast<off_t>(place));
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    });
}

}  // namespace skarnel
