// The settings file: whatever was read from it is written, and then read alike.
#include <bit>

#include "input.h"
#include "storage/settings_json.h"

using namespace skarnel;

namespace {

/// Like ==, with a NaN equal to one of the same bits.
bool areAlike(const SettingValue& a, const SettingValue& b) {
    const float* x = std::get_if<float>(&a);
    const float* y = std::get_if<float>(&b);
    if (x == nullptr || y == nullptr) return a == b;
    return std::bit_cast<std::uint32_t>(*x) == std::bit_cast<std::uint32_t>(*y);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ParsedSettings parsed = parseSettings({bytes, size});
    const std::string text = serializeSettings(parsed.values);
    const ParsedSettings again =
        parseSettings({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    fuzz::demand(again.whole && again.values.size() == parsed.values.size());
    for (const auto& [key, value] : parsed.values) {
        const auto found = again.values.find(key);
        fuzz::demand(found != again.values.end() && areAlike(found->second, value));
    }
    return 0;
}
