#include "imaging/io/exif.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "imaging/io/exif_library.h"

namespace skarnel::io {
namespace {

/// The library leaves out an entry that it has no memory for, and gives its functions no context to
/// tell of that: set by those below, until somebody clears it.
thread_local bool lackedMemory = false;

void* noted(void* memory) {
    lackedMemory = lackedMemory || memory == nullptr;
    return memory;
}
void* onAllocate(ExifLong size) {
    return noted(std::calloc(size, 1));
}
void* onResize(void* memory, ExifLong size) {
    return noted(std::realloc(memory, size));
}
void onFree(void* memory) {
    std::free(memory);
}

struct UnrefMemory {
    void operator()(ExifMem* memory) const { exif_mem_unref(memory); }
};
using MemoryHandle = std::unique_ptr<ExifMem, UnrefMemory>;

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
    lackedMemory = false;
    const MemoryHandle memory(exif_mem_new(onAllocate, onResize, onFree));
    DataHandle data(memory ? exif_data_new_mem(memory.get()) : nullptr);
    if (!data) throw std::bad_alloc();
    // Entries are taken as they are: corrections would make up values that no camera wrote.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(data.get(), marked.data(), static_cast<unsigned>(marked.size()));
    if (lackedMemory) throw std::bad_alloc();
    return data;
}

std::optional<double> numberOf(const ExifEntry& entry, ExifByteOrder order) {
    // The bytes are there where the size says so.
    if (entry.components != 1 || entry.size < exif_format_get_size(entry.format)) {
        return std::nullopt;
    }
    switch (entry.format) {
        case EXIF_FORMAT_SHORT:
            return exif_get_short(entry.data, order);
        case EXIF_FORMAT_LONG:
            return exif_get_long(entry.data, order);
        case EXIF_FORMAT_RATIONAL: {
            const ExifRational value = exif_get_rational(entry.data, order);
            if (value.denominator == 0) return std::nullopt;
            return static_cast<double>(value.numerator) / value.denominator;
        }
        case EXIF_FORMAT_SRATIONAL: {
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
        if (*number == std::floor(*number)) {  // of 32 bits at most
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
    ImageProperties found;
    collect(*data, found);
    if (lackedMemory) throw std::bad_alloc();
    // Compression here tells of the thumbnail or the raw data, not of how a file would be written.
    found.erase(std::string(kPropertyTiffCompression));
    found.insert_or_assign(std::string(kPropertyExifBlock), Bytes(block.begin(), block.end()));
    for (auto& [key, value] : found) properties.insert_or_assign(key, std::move(value));

    const double orientation = numberOf(*data, EXIF_IFD_0, EXIF_TAG_ORIENTATION).value_or(1);
    if (orientation >= 1 && orientation <= 8) facts.orientation = static_cast<int>(orientation);
    const double unit = numberOf(*data, EXIF_IFD_0, EXIF_TAG_RESOLUTION_UNIT).value_or(2);
    const double perInch = unit == 3 ? 2.54 : 1;
    facts.dpiHorizontal = numberOf(*data, EXIF_IFD_0, EXIF_TAG_X_RESOLUTION).value_or(0) * perInch;
    facts.dpiVertical = numberOf(*data, EXIF_IFD_0, EXIF_TAG_Y_RESOLUTION).value_or(0) * perInch;
    return facts;
}

}  // namespace skarnel::io
