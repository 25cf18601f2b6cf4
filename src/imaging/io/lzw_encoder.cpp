#include "imaging/io/lzw_encoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace skarnel::io {
namespace {

constexpr std::uint32_t kClear = 256;
constexpr std::uint32_t kEnd = 257;
constexpr std::uint32_t kFirstFree = 258;
constexpr std::uint32_t kFull = 4094;  // cleared before this entry is made
constexpr unsigned kFirstWidth = 9;
constexpr unsigned kCodeBits = 12;
constexpr std::uint32_t kCodeMask = (1U << kCodeBits) - 1;
constexpr unsigned kPlaceBits = 15;  // eight times the entries
constexpr std::uint32_t kPlaceMask = (1U << kPlaceBits) - 1;
/// Its upper bits are a string that begins with code 4095, which is never made.
constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;

/// What changes from byte to byte.
struct State {
    std::uint32_t prefix = 0;  // code of the string so far
    std::uint32_t free = kFirstFree;
    unsigned width = kFirstWidth;
    unsigned count = 0;      // of bits not yet written
    std::uint64_t bits = 0;  // the lowest `count` of them
    std::uint8_t* at = nullptr;

    void put(std::uint32_t code) {
        bits = bits << width | code;
        count += width;
    }
    /// Writes the whole bytes that are there, by storing a word; at most 63 bits may be waiting.
    void flush() {
        static_assert(std::endian::native == std::endian::little);
        const std::uint64_t word = __builtin_bswap64(bits << 1 << (63 - count));
        std::memcpy(at, &word, sizeof word);
        at += count / 8;
        count &= 7U;
    }
    /// Looks one string up, and on a new one gives the code of the old and makes an entry. Masks
    /// choose, since no branch could be foreseen.
    void take(std::uint32_t byte, std::uint32_t* table, const std::uint32_t* spread) {
        std::uint32_t& place = table[(prefix ^ spread[byte]) & kPlaceMask];
        const std::uint32_t entry = place;
        const std::uint32_t string = prefix << 8 | byte;
        const std::uint32_t isNew = (entry >> kCodeBits) == string ? 0 : ~0U;
        bits = bits << (width & isNew) | (prefix & isNew);
        count += width & isNew;
        place = (entry & ~isNew) | ((string << kCodeBits | free) & isNew);
        free += isNew & 1U;
        prefix = (byte & isNew) | (entry & kCodeMask & ~isNew);
    }
};

constexpr std::size_t kBytesAFlush = 4;  // at most 48 bits beside the 7 that may be left

}  // namespace

struct LzwEncoder::Strip {
    ByteView rest;
    std::uint32_t* table;
    State state;

    /// Bytes that surely leave the width and the table as they are.
    std::size_t room() const {
        return std::min<std::size_t>(rest.size(), std::min(1U << state.width, kFull) - state.free);
    }
};

LzwEncoder::LzwEncoder() {
    // The fraction of the golden ratio spreads the bytes evenly over all places.
    constexpr std::uint32_t kGolden = 0x9E3779B1;
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        spread_[byte] = byte * kGolden >> (32 - kPlaceBits);
    }
}

void LzwEncoder::encode(ByteView strip, Bytes& codes) {
    Strip only{strip, nullptr, {}};
    begin(only, tables_[0], codes);
    end(only, codes);
}

void LzwEncoder::encodeTwo(ByteView first, Bytes& firstCodes, ByteView second, Bytes& secondCodes) {
    Strip one{first, nullptr, {}};
    Strip other{second, nullptr, {}};
    begin(one, tables_[0], firstCodes);
    begin(other, tables_[1], secondCodes);
    while (!one.rest.empty() && !other.rest.empty()) {
        takeFromBoth(one, other, std::min(one.room(), other.room()));
    }
    end(one, firstCodes);
    end(other, secondCodes);
}

void LzwEncoder::begin(Strip& strip, Table& table, Bytes& codes) const {
    table.assign(std::size_t{1} << kPlaceBits, kNoEntry);
    strip.table = table.data();
    // At worst every byte is a code of the full width; a clear code comes after 3836 of them.
    codes.resize(strip.rest.size() * kCodeBits / 8 + strip.rest.size() / 1024 + 64);
    strip.state.at = codes.data();
    strip.state.put(kClear);
    strip.state.prefix = strip.rest[0];
    strip.rest = strip.rest.subspan(1);
}

void LzwEncoder::takeBytes(Strip& strip, std::size_t size) const {
    State state = strip.state;  // a local stays in registers
    for (std::size_t i = 0; i < size; ++i) {
        state.take(strip.rest[i], strip.table, spread_.data());
        if (i % kBytesAFlush == kBytesAFlush - 1) state.flush();
    }
    state.flush();
    strip.state = state;
    strip.rest = strip.rest.subspan(size);
    settle(strip);
}

void LzwEncoder::takeFromBoth(Strip& first, Strip& second, std::size_t size) const {
    State one = first.state;
    State other = second.state;
    for (std::size_t i = 0; i < size; ++i) {
        one.take(first.rest[i], first.table, spread_.data());
        other.take(second.rest[i], second.table, spread_.data());
        if (i % kBytesAFlush == kBytesAFlush - 1) {
            one.flush();
            other.flush();
        }
    }
    one.flush();
    other.flush();
    for (Strip* strip : {&first, &second}) {
        strip->state = strip == &first ? one : other;
        strip->rest = strip->rest.subspan(size);
        settle(*strip);
    }
}

/// After an entry was made: the next code may be wider, or the table full.
void LzwEncoder::settle(Strip& strip) {
    State& state = strip.state;
    if (state.free == kFull) {
        state.put(kClear);
        state.flush();
        std::fill_n(strip.table, std::size_t{1} << kPlaceBits, kNoEntry);
        state.free = kFirstFree;
        state.width = kFirstWidth;
    } else if (state.free == 1U << state.width) {
        ++state.width;
    }
}

void LzwEncoder::end(Strip& strip, Bytes& codes) const {
    while (!strip.rest.empty()) takeBytes(strip, strip.room());
    State& state = strip.state;
    state.put(state.prefix);
    // The decoder makes an entry for this code as well.
    ++state.free;
    settle(strip);
    state.put(kEnd);
    state.flush();
    if (state.count > 0) {
        state.bits <<= 8 - state.count;
        state.count = 8;
        state.flush();
    }
    codes.resize(static_cast<std::size_t>(state.at - codes.data()));
}

}  // namespace skarnel::io
