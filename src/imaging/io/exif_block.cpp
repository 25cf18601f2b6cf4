#include "imaging/io/exif_block.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "imaging/io/byte_reader.h"
#include "imaging/io/exif.h"

namespace skarnel {
namespace io {
namespace {

constexpr std::uint16_t kOrientation = 0x0112;
constexpr std::uint16_t kXResolution = 0x011A;
constexpr std::uint16_t kYResolution = 0x011B;
constexpr std::uint16_t kResolutionUnit = 0x0128;
constexpr std::uint16_t kExifDirectory = 0x8769;
constexpr std::uint16_t kGpsDirectory = 0x8825;
constexpr std::uint16_t kColorSpace = 0xA001;

/// Description, maker, model, program, date, artist, copyright: facts, not layout.
constexpr std::array<std::uint16_t, 7> kMainTags = {0x010E, 0x010F, 0x0110, 0x0131,
                                                    0x0132, 0x013B, 0x8298};
/// Maker's note, sizes of the stored pixels, the directory of interoperability.
constexpr std::array<std::uint16_t, 4> kDroppedTags = {0x927C, 0xA002, 0xA003, 0xA005};

constexpr std::uint32_t kMaxValueBytes = 60000;
constexpr unsigned kMaxEntries = 400;
constexpr std::uint64_t kMaxTreeBytes = 1 << 20;  // of all values of a tree

/// A block that is being read, and how many bytes of values may still be taken from it. Honest
/// values do not overlap, so together they are no longer than the block; entries that all name the
/// same bytes would make gigabytes of one marker.
struct Block {
    ByteView bytes;
    ByteOrder order;
    std::uint64_t left;
};

/// Bytes of one number and how many numbers make one value, by the standard's type; 0 = unknown.
struct TypeSize {
    std::uint32_t number;
    std::uint32_t numbers;
};
TypeSize sizeOfType(std::uint16_t type) {
    // clang-format off
    constexpr std::array<TypeSize, 14> kSizes = {{
        {0, 0}, {1, 1}, {1, 1}, {2, 1}, {4, 1}, {4, 2}, {1, 1},
        {1, 1}, {2, 1}, {4, 1}, {4, 2}, {4, 1}, {8, 1}, {4, 1}}};
    // clang-format on
    return type < kSizes.size() ? kSizes[type] : TypeSize{0, 0};
}

bool contains(const auto& tags, std::uint16_t tag) {
    return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

void put(Bytes& out, std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i) out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

ExifField numberField(std::uint16_t tag, std::uint16_t type, std::uint32_t value) {
    ExifField field{tag, type, 1, {}};
    put(field.value, value, type == 3 ? 2 : 4);
    return field;
}

/// A rational of six decimals where the number is small enough for them.
ExifField rationalField(std::uint16_t tag, double value) {
    const std::uint32_t denominator = value < 4000 ? 1000000 : 1;
    ExifField field{tag, 5, 1, {}};
    put(field.value,
        static_cast<std::uint32_t>(std::min(std::round(value * denominator), 4294967295.0)), 4);
    put(field.value, denominator, 4);
    return field;
}

/// Reads one entry, for its value only if the tag is wanted.
std::optional<ExifField> readField(Block& block, ByteReader& in, bool (*isWanted)(std::uint16_t)) {
    ExifField field;
    field.tag = in.u16();
    field.type = in.u16();
    field.count = in.u32();
    const TypeSize size = sizeOfType(field.type);
    const std::uint64_t valueBytes = std::uint64_t{size.number} * size.numbers * field.count;
    ByteReader value(block.bytes, block.order);
    value.seek(in.position());
    const std::uint32_t offset = in.u32();
    if (!isWanted(field.tag) || valueBytes == 0 || valueBytes > kMaxValueBytes ||
        valueBytes > block.left) {
        return std::nullopt;
    }
    if (valueBytes > 4) value.seek(offset);
    const ByteView numbers = value.take(valueBytes);
    if (value.failed() || in.failed()) return std::nullopt;
    block.left -= valueBytes;
    field.value.assign(numbers.begin(), numbers.end());
    if (block.order == ByteOrder::Big && size.number > 1) {
        for (auto at = field.value.begin(); at != field.value.end(); at += size.number) {
            std::reverse(at, at + size.number);
        }
    }
    return field;
}

std::uint32_t offsetIn(const ExifField& field) {
    constexpr std::uint16_t kLong = 4;
    constexpr std::uint16_t kDirectoryOffset = 13;
    if ((field.type != kLong && field.type != kDirectoryOffset) || field.value.size() != 4)
        return 0;
    ByteReader in(field.value, ByteOrder::Little);
    return in.u32();
}

ExifDirectory readDirectory(Block& block, std::uint32_t offset, bool (*isWanted)(std::uint16_t)) {
    ExifDirectory directory;
    if (offset == 0) return directory;  // the block's own head stands there
    ByteReader in(block.bytes, block.order);
    in.seek(offset);
    const unsigned count = std::min<unsigned>(in.u16(), kMaxEntries);
    for (unsigned i = 0; i < count && !in.failed(); ++i) {
        if (auto field = readField(block, in, isWanted)) directory.push_back(*std::move(field));
    }
    std::stable_sort(directory.begin(), directory.end(),
                     [](const ExifField& a, const ExifField& b) { return a.tag < b.tag; });
    return directory;
}

bool isWantedInMain(std::uint16_t tag) {
    return contains(kMainTags, tag) || tag == kExifDirectory || tag == kGpsDirectory;
}

bool isWantedInExif(std::uint16_t tag) {
    return !contains(kDroppedTags, tag);
}

bool isWantedInGps(std::uint16_t) {
    return true;
}

/// The directory's own bytes, without the values that do not fit into an entry.
std::size_t tableBytes(const ExifDirectory& directory) {
    return 2 + 12 * directory.size() + 4;
}

}  // namespace

ExifTree readExifTree(ByteView bytes) {
    ExifTree tree;
    if (bytes.size() < 8) return tree;
    const bool big = bytes[0] == 'M';
    const ByteOrder order = big ? ByteOrder::Big : ByteOrder::Little;
    ByteReader in(bytes, order);
    const std::uint16_t mark = in.u16();
    if (mark != (big ? 0x4D4D : 0x4949) || in.u16() != 42) return tree;
    Block block{bytes, order, std::min<std::uint64_t>(bytes.size(), kMaxTreeBytes)};
    bool hasExif = false;
    bool hasGps = false;
    for (ExifField& field : readDirectory(block, in.u32(), isWantedInMain)) {
        // A directory that is named again is not read again.
        if (field.tag == kExifDirectory) {
            if (!std::exchange(hasExif, true))
                tree.exif = readDirectory(block, offsetIn(field), isWantedInExif);
        } else if (field.tag == kGpsDirectory) {
            if (!std::exchange(hasGps, true))
                tree.gps = readDirectory(block, offsetIn(field), isWantedInGps);
        } else if (field.type == 2) {
            tree.main.push_back(std::move(field));
        }
    }
    for (ExifField& field : tree.exif) {
        if (field.tag == kColorSpace) field = numberField(kColorSpace, 3, 1);  // sRGB
    }
    return tree;
}

Bytes writeExifDirectory(const ExifDirectory& directory, std::uint32_t offset) {
    Bytes table;
    Bytes values;
    put(table, directory.size(), 2);
    for (const ExifField& field : directory) {
        put(table, field.tag, 2);
        put(table, field.type, 2);
        put(table, field.count, 4);
        if (field.value.size() <= 4) {
            table.insert(table.end(), field.value.begin(), field.value.end());
            table.insert(table.end(), 4 - field.value.size(), 0);
        } else {
            put(table, offset + tableBytes(directory) + values.size(), 4);
            values.insert(values.end(), field.value.begin(), field.value.end());
            if (values.size() % 2 != 0) values.push_back(0);
        }
    }
    put(table, 0, 4);  // no directory follows
    table.insert(table.end(), values.begin(), values.end());
    return table;
}

Bytes writeExifBlock(const ExifTree& tree, const std::optional<Resolution>& resolution) {
    if (tree.empty() && !resolution) return {};
    ExifDirectory main = tree.main;
    main.push_back(numberField(kOrientation, 3, 1));
    if (resolution) {
        main.push_back(rationalField(kXResolution, resolution->horizontal));
        main.push_back(rationalField(kYResolution, resolution->vertical));
        main.push_back(numberField(kResolutionUnit, 3, 2));  // the inch
    }
    if (!tree.exif.empty()) main.push_back(numberField(kExifDirectory, 4, 0));
    if (!tree.gps.empty()) main.push_back(numberField(kGpsDirectory, 4, 0));
    std::sort(main.begin(), main.end(), [](const auto& a, const auto& b) { return a.tag < b.tag; });

    constexpr std::uint32_t kStart = 8;
    const auto mainBytes = static_cast<std::uint32_t>(writeExifDirectory(main, kStart).size());
    const Bytes exif = writeExifDirectory(tree.exif, kStart + mainBytes);
    const auto gpsStart =
        static_cast<std::uint32_t>(kStart + mainBytes + (tree.exif.empty() ? 0 : exif.size()));
    for (ExifField& field : main) {
        if (field.tag == kExifDirectory) field = numberField(kExifDirectory, 4, kStart + mainBytes);
        if (field.tag == kGpsDirectory) field = numberField(kGpsDirectory, 4, gpsStart);
    }
    Bytes block = {'I', 'I', 42, 0, kStart, 0, 0, 0};
    auto append = [&block](const Bytes& part) {
        block.insert(block.end(), part.begin(), part.end());
    };
    append(writeExifDirectory(main, kStart));
    if (!tree.exif.empty()) append(exif);
    if (!tree.gps.empty()) append(writeExifDirectory(tree.gps, gpsStart));
    return block;
}

ExifTree exifTreeOf(const ImageProperties& properties) {
    const auto found = properties.find(kPropertyExifBlock);
    const auto* block = found == properties.end() ? nullptr : std::get_if<Bytes>(&found->second);
    return block == nullptr ? ExifTree() : readExifTree(*block);
}

}  // namespace io

void setExifUpright(ImageProperties& properties) {
    const io::ExifTree tree = io::exifTreeOf(properties);
    const PropertyValue compression = properties.count(kPropertyTiffCompression) != 0
                                          ? properties.find(kPropertyTiffCompression)->second
                                          : PropertyValue(std::int64_t{0});
    std::erase_if(properties, [](const auto& entry) {
        return entry.first.starts_with("{TIFF}.") || entry.first.starts_with("{Exif}.") ||
               entry.first.starts_with("{GPS}.");
    });
    if (compression != PropertyValue(std::int64_t{0})) {
        properties.emplace(kPropertyTiffCompression, compression);
    }
    if (!tree.empty()) (void)io::readExif(io::writeExifBlock(tree, std::nullopt), properties);
}

}  // namespace skarnel
