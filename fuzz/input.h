// Takes a fuzzer's bytes apart, from the front; what is not there reads as zeros.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace skarnel::fuzz {

class Input {
  public:
    Input(const std::uint8_t* bytes, std::size_t size) : rest_(bytes, size) {}

    std::size_t size() const { return rest_.size(); }
    std::span<const std::uint8_t> rest() const { return rest_; }
    std::string_view text() const {
        return {reinterpret_cast<const char*>(rest_.data()), rest_.size()};
    }
    /// The rest in the machine's byte order; a last odd byte is left out.
    std::u16string units() const { return unitsOf(rest_); }

    std::uint8_t byte() { return number<std::uint8_t>(); }

    template <typename Number>
    Number number() {
        Number value{};
        const std::size_t there = rest_.size() < sizeof value ? rest_.size() : sizeof value;
        if (there > 0) std::memcpy(&value, rest_.data(), there);
        rest_ = rest_.subspan(there);
        return value;
    }

    /// The units up to the next zero, which is passed over, or up to the end.
    std::u16string unitsUpToZero() {
        const std::u16string all = unitsOf(rest_);
        const std::size_t end = all.find(u'\0');
        const bool found = end != std::u16string::npos;
        rest_ = rest_.subspan(found ? 2 * end + 2 : rest_.size());
        return all.substr(0, end);
    }

  private:
    static std::u16string unitsOf(std::span<const std::uint8_t> bytes) {
        std::u16string units(bytes.size() / 2, u'\0');
        if (!units.empty()) std::memcpy(units.data(), bytes.data(), 2 * units.size());
        return units;
    }
    std::span<const std::uint8_t> rest_;
};

/// Ends the program, which the fuzzer reports with its input.
inline void demand(bool holds) {
    if (!holds) std::abort();
}

}  // namespace skarnel::fuzz
