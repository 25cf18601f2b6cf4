#include "imaging/io/exif.h"

#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "imaging/io/exif_library.h"

namespace skarnel::io {
namespace {

struct UnrefData {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};
using DataHandle = std::unique_ptr<ExifData, UnrefData>;

/// What a block may have at most: it has to fit a JPEG marker, and libexif reads no more.
constexpr std::size_t kMaxBlock = 65533;

DataHandle load(ByteView block) {
    if (block.size() < 8 || block.size() > kMaxBlock - 6 || !exifLibrary().load()) return nullptr;
    Bytes marked{'E', 'x', 'i', 'f', 0, 0};
    marked.insert(marked.end(), block.begin(), block.end());
    DataHandle data(exif_data_new());
    if (!data) return nullptr;
    // Entries are taken as they are: corrections would make up values that no camera wrote.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(data.get(), marked.data(), static_cast<unsigned>(marked.size()));
    return data;
}

std::optional<double> numberOf(const ExifEntry& entry, ExifByteOrder order) {
    if (entry.components != 1 || entry.data == nullptr) return std::nullopt;
    switch (entry.format) {
        case EXIF_FORMAT_SHORT:
            return entry.size >= 2 ? std::optional<double>(exif_get_short(entry.data, order))
                                   : std::nullopt;
        case EXIF_FORMAT_LONG:
            return entry.size >= 4 ? std::optional<double>(exif_get_long(entry.data, order))
                                   : std::nullopt;
        case EXIF_FORMAT_RATIONAL: {
            if (entry.size < 8) return std::nullopt;
            const ExifRational value = exif_get_rational(entry.data, order);
            if (value.denominator == 0) return std::nullopt;
            return static_cast<double>(value.numerator) / value.denominator;
        }
        case EXIF_FORMAT_SRATIONAL: {
            if (entry.size < 8) return std::nullopt;
            const ExifSRational value = exif_get_srational(entry.data, order);
            if (value.denominator == 0) return std::nullopt;
            return static_cast<double>(value.numerator) / value.denominator;
        }
        default:
            return std::nullopt;
    }
}

std::optional<double> numberOf(ExifData& data, ExifIfd ifd, ExifTag tag) {
    const ExifEntry* entry = exif_content_get_entry(data.ifd[ifd], tag);
    return entry == nullptr ? std::nullopt : numberOf(*entry, exif_data_get_byte_order(&data));
}

struct Collector {
    ImageProperties* properties;
    ExifByteOrder order;
    const char* group;
    ExifIfd ifd;
};

void collectEntry(ExifEntry* entry, void* context) {
    const auto& to = *static_cast<Collector*>(context);
    const char* name = exif_tag_get_name_in_ifd(entry->tag, to.ifd);
    if (name == nullptr || entry->tag == EXIF_TAG_MAKER_NOTE) return;
    const std::string key = std::string(to.group) + "." + name;
    if (const auto number = numberOf(*entry, to.order)) {
        if (*number == std::floor(*number) && std::abs(*number) < 1e15) {
            to.properties->insert_or_assign(key, static_cast<std::int64_t>(*number));
        } else {
            to.properties->insert_or_assign(key, *number);
        }
        return;
    }
    std::array<char, 1024> text{};
    exif_entry_get_value(entry, text.data(), text.size());
    if (text[0] != 0) to.properties->insert_or_assign(key, std::string(text.data()));
}

void collect(ExifData& data, ImageProperties& properties) {
    struct Group {
        ExifIfd ifd;
        const char* name;
    };
    constexpr std::array<Group, 3> kGroups = {
        {{EXIF_IFD_0, "{TIFF}"}, {EXIF_IFD_EXIF, "{Exif}"}, {EXIF_IFD_GPS, "{GPS}"}}};
    for (const Group& group : kGroups) {
        Collector collector{&properties, exif_data_get_byte_order(&data), group.name, group.ifd};
        exif_content_foreach_entry(data.ifd[group.ifd], collectEntry, &collector);
    }
}

}  // namespace

ExifFacts readExif(ByteView block, ImageProperties& properties) {
    ExifFacts facts;
    const DataHandle data = load(block);
    if (!data || data->ifd[EXIF_IFD_0]->count + data->ifd[EXIF_IFD_EXIF]->count == 0) return facts;
    const auto before = properties.find(kPropertyTiffCompression);
    const auto compression =
        before == properties.end() ? nullptr : std::make_unique<PropertyValue>(before->second);
    collect(*data, properties);
    properties.insert_or_assign(std::string(kPropertyExifBlock), Bytes(block.begin(), block.end()));
    // Compression here tells of the thumbnail or the raw data, not of how a file would be written.
    if (compression == nullptr) {
        properties.erase(std::string(kPropertyTiffCompression));
    } else {
        properties.insert_or_assign(std::string(kPropertyTiffCompression), *compression);
    }

    const double orientation = numberOf(*data, EXIF_IFD_0, EXIF_TAG_ORIENTATION).value_or(1);
    if (orientation >= 1 && orientation <= 8) facts.orientation = static_cast<int>(orientation);
    const double unit = numberOf(*data, EXIF_IFD_0, EXIF_TAG_RESOLUTION_UNIT).value_or(2);
    const double perInch = unit == 3 ? 2.54 : 1;
    facts.dpiHorizontal = numberOf(*data, EXIF_IFD_0, EXIF_TAG_X_RESOLUTION).value_or(0) * perInch;
    facts.dpiVertical = numberOf(*data, EXIF_IFD_0, EXIF_TAG_Y_RESOLUTION).value_or(0) * perInch;
    return facts;
}

}  // namespace skarnel::io
