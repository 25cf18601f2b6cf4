// The values of options: what is accepted is in range, and printing it gives it again.
#include <fmt/format.h>

#include <cmath>

#include "cli/numbers.h"
#include "input.h"

using namespace skarnel;

namespace {

void number(std::string_view text) {
    const auto value = cli::parseNumber(text);
    if (!value) return;
    fuzz::demand(std::isfinite(*value) && text.find_first_of("xXnN, ") == std::string_view::npos);
    fuzz::demand(cli::parseNumber(fmt::format("{}", *value)) == value);
}

void counts(std::string_view text) {
    constexpr std::int64_t kLargest = 1000;
    const auto count = cli::parseCount(text, kLargest);
    if (count) {
        fuzz::demand(*count >= 0 && *count <= kLargest);
        fuzz::demand(cli::parseCount(std::to_string(*count), kLargest) == count);
    }
    const auto pixels = cli::parseLargeCount(text);
    fuzz::demand(!pixels ||
                 (*pixels >= 1 && cli::parseLargeCount(std::to_string(*pixels)) == pixels));
}

void size(std::string_view text) {
    const auto size = cli::parsePixelSize(text);
    if (!size) return;
    fuzz::demand(size->width >= 1 && size->width <= 1'000'000 && size->height >= 1 &&
                 size->height <= 1'000'000);
    fuzz::demand(cli::parsePixelSize(fmt::format("{}x{}", size->width, size->height)) == size);
}

void color(std::string_view text) {
    const auto color = cli::parseColor(text);
    if (!color) return;
    const auto byte = [](double component) {
        return static_cast<int>(std::lround(component * 255));
    };
    std::string again =
        fmt::format("#{:02x}{:02x}{:02x}", byte(color->red), byte(color->green), byte(color->blue));
    std::string lower(text);
    for (char& c : lower) c = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    fuzz::demand(again == lower);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size_) {
    const std::string_view text = fuzz::Input(bytes, size_).text();
    number(text);
    counts(text);
    size(text);
    color(text);
    return 0;
}
