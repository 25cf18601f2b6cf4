#include "recipe/xmp_packet.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace skarnel {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kPngSignature = "\x89PNG\r\n\x1A\n"sv;
// Keyword, then: not compressed (two zeros), no language, no translated keyword.
constexpr std::string_view kPngPrefix = "XML:com.adobe.xmp\0\0\0\0\0"sv;
constexpr std::string_view kJpegPrefix = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::size_t kJpegLargest = 65535 - 2 - kJpegPrefix.size();

std::string_view viewOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Error broken() {
    return {ErrorCode::Damaged, "The picture's structure cannot be followed"};
}

/// Numbers of either byte order; every read says whether it lies within the file.
class Numbers {
  public:
    Numbers(ByteView bytes, bool littleEndian) : bytes_(bytes), littleEndian_(littleEndian) {}

    std::optional<std::uint64_t> at(std::uint64_t offset, std::size_t size) const {
        if (offset > bytes_.size() || bytes_.size() - offset < size) return std::nullopt;
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            value = value << 8 | bytes_[offset + (littleEndian_ ? size - 1 - i : i)];
        }
        return value;
    }

    void put(Bytes& out, std::uint64_t value, std::size_t size) const {
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t shift = 8 * (littleEndian_ ? i : size - 1 - i);
            out.push_back(static_cast<std::uint8_t>(value >> shift));
        }
    }

  private:
    ByteView bytes_;
    bool littleEndian_;
};

void append(Bytes& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
}

// --- PNG: signature, then chunks of u32 length, type, data, u32 check sum.

std::uint32_t checkSum(ByteView typeAndData) {
    return static_cast<std::uint32_t>(crc32_z(0, typeAndData.data(), typeAndData.size()));
}

std::optional<std::string> packetOfPng(ByteView file) {
    const Numbers numbers(file, false);
    for (std::uint64_t at = kPngSignature.size();;) {
        const auto length = numbers.at(at, 4);
        if (!length || !numbers.at(at + 8 + *length, 4)) return std::nullopt;
        const ByteView typeAndData = file.subspan(at + 4, 4 + *length);
        const std::string_view data = viewOf(typeAndData).substr(4);
        const std::string_view type = viewOf(typeAndData).substr(0, 4);
        if (type == "iTXt" && data.starts_with(kPngPrefix)) {
            if (checkSum(typeAndData) != numbers.at(at + 8 + *length, 4)) return std::nullopt;
            return std::string(data.substr(kPngPrefix.size()));
        }
        if (type == "IEND") return std::nullopt;
        at += 12 + *length;
    }
}

Result<Bytes> pngWithPacket(ByteView file, std::string_view packet) {
    const Numbers numbers(file, false);
    const auto headerLength = numbers.at(kPngSignature.size(), 4);
    const std::size_t at = kPngSignature.size() + 12 + headerLength.value_or(0);
    if (!headerLength || at > file.size()) return broken();
    const std::size_t length = kPngPrefix.size() + packet.size();
    if (length > 0x7FFFFFFF) return {ErrorCode::TooLarge, "The recipe is too large for a PNG file"};
    Bytes chunk;
    append(chunk, "iTXt");
    append(chunk, kPngPrefix);
    append(chunk, packet);
    Bytes out(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(at));
    numbers.put(out, length, 4);
    out.insert(out.end(), chunk.begin(), chunk.end());
    numbers.put(out, checkSum(chunk), 4);
    out.insert(out.end(), file.begin() + static_cast<std::ptrdiff_t>(at), file.end());
    return out;
}

// --- JPEG: segments of FF, code, u16 length (itself included), data, up to the scan.

struct JpegSegment {
    std::uint64_t code = 0;
    std::uint64_t begin = 0;  // of the data
    std::uint64_t end = 0;
};

/// The segment at a place; none at the scan, at the end and where the rules are broken.
std::optional<JpegSegment> segmentAt(const Numbers& numbers, std::uint64_t at) {
    const auto mark = numbers.at(at, 2);
    const auto length = numbers.at(at + 2, 2);
    constexpr std::uint64_t kStartOfScan = 0xFFDA;
    const bool hasLength =
        mark && *mark >= 0xFFC0 && *mark < 0xFFFF && (*mark < 0xFFD0 || *mark > 0xFFD9);
    if (!hasLength || *mark == kStartOfScan || !length || *length < 2) return std::nullopt;
    if (*length > 2 && !numbers.at(at + 1 + *length, 1)) return std::nullopt;
    return JpegSegment{*mark, at + 4, at + 2 + *length};
}

std::optional<std::string> packetOfJpeg(ByteView file) {
    const Numbers numbers(file, false);
    std::uint64_t at = 2;
    while (const auto segment = segmentAt(numbers, at)) {
        const std::string_view data =
            viewOf(file).substr(segment->begin, segment->end - segment->begin);
        if (segment->code == 0xFFE1 && data.starts_with(kJpegPrefix)) {
            return std::string(data.substr(kJpegPrefix.size()));
        }
        at = segment->end;
    }
    return std::nullopt;
}

Result<Bytes> jpegWithPacket(ByteView file, std::string_view packet) {
    if (const auto room = roomInJpeg(packet.size()); !room) return room.error();
    const Numbers numbers(file, false);
    std::uint64_t at = 2;  // behind the start, and behind APP0, which has to be the first
    if (const auto first = segmentAt(numbers, at); first && first->code == 0xFFE0) at = first->end;
    Bytes out(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(at));
    numbers.put(out, 0xFFE1, 2);
    numbers.put(out, 2 + kJpegPrefix.size() + packet.size(), 2);
    append(out, kJpegPrefix);
    append(out, packet);
    out.insert(out.end(), file.begin() + static_cast<std::ptrdiff_t>(at), file.end());
    return out;
}

// --- TIFF: a header with the place of the first directory; a directory is a count, entries of
//     u16 tag, u16 type, count, value or place of the values (sorted by tag), and the next place.

constexpr std::uint64_t kXmpTag = 700;
constexpr std::uint64_t kTypeByte = 1;
constexpr std::uint64_t kTypeUndefined = 7;

/// What differs between the classic form and the one with 64-bit places.
struct TiffForm {
    Numbers numbers;
    std::size_t placeSize;       // 4 or 8 bytes for counts of values and places
    std::size_t countSize;       // 2 or 8 bytes for the number of entries
    std::size_t firstDirectory;  // where the header keeps the first directory's place
    std::size_t entrySize() const { return 4 + 2 * placeSize; }
};

std::optional<TiffForm> tiffFormOf(ByteView file) {
    if (file.size() < 8) return std::nullopt;
    const std::string_view start = viewOf(file.first(4));
    for (const bool little : {true, false}) {
        const Numbers numbers(file, little);
        if (start == (little ? "II*\0"sv : "MM\0*"sv)) return TiffForm{numbers, 4, 2, 4};
        if (start == (little ? "II+\0"sv : "MM\0+"sv)) return TiffForm{numbers, 8, 8, 8};
    }
    return std::nullopt;
}

struct TiffDirectory {
    std::uint64_t count = 0;
    std::uint64_t entries = 0;  // place of the first entry
    std::uint64_t end = 0;      // place of the next directory's place
};

std::optional<TiffDirectory> firstDirectoryOf(ByteView file, const TiffForm& form) {
    const auto place = form.numbers.at(form.firstDirectory, form.placeSize);
    const auto count = place ? form.numbers.at(*place, form.countSize) : std::nullopt;
    if (!count || *count > file.size() / form.entrySize()) return std::nullopt;
    const std::uint64_t entries = *place + form.countSize;
    const std::uint64_t end = entries + *count * form.entrySize();
    if (!form.numbers.at(end, form.placeSize)) return std::nullopt;
    return TiffDirectory{*count, entries, end};
}

std::optional<std::string> packetOfTiff(ByteView file, const TiffForm& form) {
    const auto directory = firstDirectoryOf(file, form);
    if (!directory) return std::nullopt;
    for (std::uint64_t i = 0; i < directory->count; ++i) {
        const std::uint64_t entry = directory->entries + i * form.entrySize();
        if (form.numbers.at(entry, 2) != kXmpTag) continue;
        // The directory lies within the file, so its entries do.
        const std::uint64_t type = *form.numbers.at(entry + 2, 2);
        const std::uint64_t length = *form.numbers.at(entry + 4, form.placeSize);
        const std::uint64_t place = *form.numbers.at(entry + 4 + form.placeSize, form.placeSize);
        const bool bytes = type == kTypeByte || type == kTypeUndefined;
        // A packet is never so short that it would stand in the entry itself.
        if (!bytes || length <= form.placeSize) return std::nullopt;
        if (place > file.size() || file.size() - place < length) return std::nullopt;
        return std::string(viewOf(file).substr(place, length));
    }
    return std::nullopt;
}

/// Appends the packet and a copy of the directory with one entry more; the first directory stays
/// where it is, unused. Values keep their places, so nothing else has to change.
Result<Bytes> tiffWithPacket(ByteView file, const TiffForm& form, std::string_view packet) {
    const auto directory = firstDirectoryOf(file, form);
    if (!directory) return broken();
    Bytes out(file.begin(), file.end());
    if (out.size() % 2 != 0) out.push_back(0);
    const std::uint64_t packetPlace = out.size();
    append(out, packet);
    if (out.size() % 2 != 0) out.push_back(0);
    const std::uint64_t newPlace = out.size();
    if (form.placeSize == 4 && newPlace + directory->end - directory->entries > 0xFFFFFF00) {
        return {ErrorCode::TooLarge, "There is no room for the recipe in a TIFF file of 4 GB"};
    }
    form.numbers.put(out, directory->count + 1, form.countSize);
    bool put = false;
    const auto putPacketEntry = [&] {
        form.numbers.put(out, kXmpTag, 2);
        form.numbers.put(out, kTypeByte, 2);
        form.numbers.put(out, packet.size(), form.placeSize);
        form.numbers.put(out, packetPlace, form.placeSize);
        put = true;
    };
    for (std::uint64_t i = 0; i < directory->count; ++i) {
        const std::uint64_t entry = directory->entries + i * form.entrySize();
        if (!put && *form.numbers.at(entry, 2) > kXmpTag) putPacketEntry();
        out.insert(out.end(), file.begin() + static_cast<std::ptrdiff_t>(entry),
                   file.begin() + static_cast<std::ptrdiff_t>(entry + form.entrySize()));
    }
    if (!put) putPacketEntry();
    form.numbers.put(out, *form.numbers.at(directory->end, form.placeSize), form.placeSize);
    Bytes place;
    form.numbers.put(place, newPlace, form.placeSize);
    std::copy(place.begin(), place.end(),
              out.begin() + static_cast<std::ptrdiff_t>(form.firstDirectory));
    return out;
}

}  // namespace

std::optional<std::string> xmpPacketOf(ByteView file) {
    const std::string_view text = viewOf(file);
    if (text.starts_with(kPngSignature)) return packetOfPng(file);
    if (text.starts_with("\xFF\xD8"sv)) return packetOfJpeg(file);
    if (const auto form = tiffFormOf(file)) return packetOfTiff(file, *form);
    return std::nullopt;
}

Result<void> roomInJpeg(std::size_t packetBytes) {
    if (packetBytes <= kJpegLargest) return {};
    return {ErrorCode::TooLarge,
            "The recipe is too large for a JPEG file, which has room for 65,504 bytes"};
}

Result<Bytes> withXmpPacket(ByteView file, std::string_view packet) {
    const std::string_view text = viewOf(file);
    if (text.starts_with(kPngSignature)) return pngWithPacket(file, packet);
    if (text.starts_with("\xFF\xD8"sv)) return jpegWithPacket(file, packet);
    if (const auto form = tiffFormOf(file)) return tiffWithPacket(file, *form, packet);
    return {ErrorCode::Unsupported, "Only TIFF, PNG and JPEG files can carry a recipe"};
}

}  // namespace skarnel
