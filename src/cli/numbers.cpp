#include "cli/numbers.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace skarnel::cli {
namespace {

constexpr std::int64_t kLargestSide = 1'000'000;

template <typename Number, typename... Base>
std::optional<Number> parseWhole(std::string_view text, Base... base) {
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, base...);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}

}  // namespace

std::optional<float> parseNumber(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const std::optional<float> value = parseWhole<float>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<std::int64_t> parseCount(std::string_view text, std::int64_t largest) {
    const std::optional<std::int64_t> value = parseWhole<std::int64_t>(text);
    return value && *value >= 0 && *value <= largest ? value : std::nullopt;
}

std::optional<std::int64_t> parseLargeCount(std::string_view text) {
    std::int64_t unit = 1;
    switch (text.empty() ? '\0' : text.back()) {
        case 'k':
        case 'K':
            unit = 1000;
            break;
        case 'm':
        case 'M':
            unit = 1'000'000;
            break;
        case 'g':
        case 'G':
            unit = 1'000'000'000;
            break;
        default:
            break;
    }
    if (unit != 1) text.remove_suffix(1);
    const auto count = parseCount(text, std::numeric_limits<std::int64_t>::max() / unit);
    return count && *count >= 1 ? std::optional(*count * unit) : std::nullopt;
}

std::optional<PixelSize> parsePixelSize(std::string_view text) {
    const std::size_t cross = text.find('x');
    if (cross == std::string_view::npos) return std::nullopt;
    const auto width = parseCount(text.substr(0, cross), kLargestSide);
    const auto height = parseCount(text.substr(cross + 1), kLargestSide);
    if (!width || !height || *width < 1 || *height < 1) return std::nullopt;
    return PixelSize{static_cast<int>(*width), static_cast<int>(*height)};
}

std::optional<DeviceColor> parseColor(std::string_view text) {
    if (text.size() != 7 || text.front() != '#') return std::nullopt;
    const std::optional<std::uint32_t> value = parseWhole<std::uint32_t>(text.substr(1), 16);
    if (!value) return std::nullopt;
    const auto component = [&](int shift) { return ((*value >> shift) & 0xFFU) / 255.0; };
    return DeviceColor{component(16), component(8), component(0), 1.0};
}

}  // namespace skarnel::cli
