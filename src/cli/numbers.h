// The values of options, read strictly and alike in every locale: the whole text or nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "imaging/cgcontext.h"

namespace skarnel::cli {

/// A finite decimal number: "-20", "7.5", "+1e2". No "nan", "inf", hexadecimal, comma or blank;
/// none also when a float cannot hold it.
std::optional<float> parseNumber(std::string_view text);

/// A whole number from 0 to `largest`.
std::optional<std::int64_t> parseCount(std::string_view text, std::int64_t largest);

/// As parseCount, from 1; a final k, M or G (either case) stands for thousand, million, billion.
std::optional<std::int64_t> parseLargeCount(std::string_view text);

struct PixelSize {
    int width = 0;
    int height = 0;
    friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

/// "800x600"; both at least 1 and at most 1,000,000.
std::optional<PixelSize> parsePixelSize(std::string_view text);

/// "#RRGGBB" in either case, opaque.
std::optional<DeviceColor> parseColor(std::string_view text);

}  // namespace skarnel::cli
