// The table of filters: names, keys, defaults and how each makes its output.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "imaging/ciimage.h"

namespace skarnel {

/// What a key holds; "inputImage" is the only image key and is not listed.
struct FilterKey {
    std::string_view name;
    CIValue defaultValue;  // also fixes the type that the key accepts
};

/// The values of a filter that is about to make its output.
class FilterInputs {
  public:
    FilterInputs(const CIImage& image, std::span<const FilterKey> keys,
                 const std::vector<std::pair<std::string, CIValue>>& values)
        : image_(image), keys_(keys), values_(values) {}

    const CIImage& image() const { return image_; }
    /// The value that was set, or the default. Of a key that the filter lists, as its type.
    template <typename T>
    T value(std::string_view name) const {
        for (const auto& [key, value] : values_)
            if (key == name) return std::get<T>(value);
        for (const FilterKey& key : keys_)
            if (key.name == name) return std::get<T>(key.defaultValue);
        return T{};
    }

  private:
    const CIImage& image_;
    std::span<const FilterKey> keys_;
    const std::vector<std::pair<std::string, CIValue>>& values_;
};

/// One filter. `make` gives none when the inputs define no image.
struct FilterEntry {
    std::string_view name;
    std::vector<FilterKey> keys;
    std::optional<CIImage> (*make)(const FilterInputs& inputs);
};

/// Null for a name that is not registered.
const FilterEntry* filterEntry(std::string_view name);

/// Every filter, in the order of the tables.
const std::vector<FilterEntry>& filterEntries();

// The tables, one a source file; filter_registry.cpp joins them.
std::vector<FilterEntry> geometryFilters();
std::vector<FilterEntry> colorFilters();
std::vector<FilterEntry> areaFilters();

}  // namespace skarnel
