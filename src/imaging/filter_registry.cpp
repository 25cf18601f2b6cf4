#include "imaging/filter_registry.h"

#include <string>

#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr std::string_view kInputImage = "inputImage";
constexpr std::string_view kOutputImage = "outputImage";

std::vector<FilterEntry> joinedTables() {
    std::vector<FilterEntry> all;
    for (auto table : {geometryFilters, colorFilters, areaFilters}) {
        std::vector<FilterEntry> entries = table();
        all.insert(all.end(), entries.begin(), entries.end());
    }
    return all;
}

const FilterKey* keyOf(const FilterEntry& entry, std::string_view name) {
    for (const FilterKey& key : entry.keys)
        if (key.name == name) return &key;
    return nullptr;
}

}  // namespace

const std::vector<FilterEntry>& filterEntries() {
    static const std::vector<FilterEntry> entries = joinedTables();
    return entries;
}

const FilterEntry* filterEntry(std::string_view name) {
    for (const FilterEntry& entry : filterEntries())
        if (entry.name == name) return &entry;
    return nullptr;
}

std::optional<CIFilter> CIFilter::filterWithName(std::string_view name) {
    if (filterEntry(name) == nullptr) return std::nullopt;
    CIFilter filter;
    filter.name_ = name;
    return filter;
}

std::vector<std::string> CIFilter::filterNames() {
    std::vector<std::string> names;
    for (const FilterEntry& entry : filterEntries()) names.emplace_back(entry.name);
    return names;
}

void CIFilter::setDefaults() {
    for (const FilterKey& key : filterEntry(name_)->keys) setValue(key.defaultValue, key.name);
}

void CIFilter::setValue(CIValue value, std::string_view key) {
    const FilterKey* known = keyOf(*filterEntry(name_), key);
    const bool fits = key == kInputImage
                          ? std::holds_alternative<CIImage>(value)
                          : known != nullptr && known->defaultValue.index() == value.index();
    if (!fits) {
        systemLog("Filter " + name_ + " does not take this value for its key " + std::string(key));
        return;
    }
    for (auto& [name, held] : values_) {
        if (name != key) continue;
        held = std::move(value);
        return;
    }
    values_.emplace_back(key, std::move(value));
}

std::optional<CIValue> CIFilter::valueForKey(std::string_view key) const {
    if (key == kOutputImage) {
        std::optional<CIImage> output = outputImage();
        if (!output) return std::nullopt;
        return CIValue(*std::move(output));
    }
    for (const auto& [name, value] : values_)
        if (name == key) return value;
    return std::nullopt;
}

std::optional<CIImage> CIFilter::outputImage() const {
    const FilterEntry* entry = filterEntry(name_);
    for (const auto& [name, value] : values_)
        if (name == kInputImage)
            return entry->make(FilterInputs(std::get<CIImage>(value), entry->keys, values_));
    return std::nullopt;
}

}  // namespace skarnel
