// Makes MO files, so that what is read is not what the reader's own code wrote.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace skarnel::test {

enum class Order { LittleEndian, BigEndian };

inline void appendNumber(std::string& bytes, std::size_t value, Order order) {
    for (int i = 0; i < 4; ++i) {
        const int shift = 8 * (order == Order::LittleEndian ? i : 3 - i);
        bytes += static_cast<char>(value >> shift & 0xFF);
    }
}

/// The header, both tables, then all texts with a zero behind each.
inline std::string moBytes(const std::vector<std::pair<std::string, std::string>>& texts,
                           Order order = Order::LittleEndian) {
    constexpr std::size_t kHeader = 28;
    std::string bytes;
    const std::size_t table = 8 * texts.size();
    for (const std::size_t number : {std::size_t{0x950412DE}, std::size_t{0}, texts.size(), kHeader,
                                     kHeader + table, std::size_t{0}, kHeader + 2 * table})
        appendNumber(bytes, number, order);
    std::string rest;
    for (const bool translated : {false, true}) {
        for (const auto& [phrase, translation] : texts) {
            const std::string& text = translated ? translation : phrase;
            appendNumber(bytes, text.size(), order);
            appendNumber(bytes, kHeader + 2 * table + rest.size(), order);
            rest += text + '\0';
        }
    }
    return bytes + rest;
}

}  // namespace skarnel::test
