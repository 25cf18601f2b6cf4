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
constexpr std::uint32_t kLargestCode = (1U << kCodeBits) - 1;
constexpr unsigned kPlaceBits = 15;  // eight times the entries
constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;

/// What changes from byte to byte; a local one stays in registers.
struct Walk {
    std::uint32_t prefix;  // code of the string so far
    std::uint32_t free;    // the entry that is made next
    std::uint32_t* table;  // byte and code; which prefix they follow is told by the place
    std::uint16_t* codes;  // the one that ends with the making of an entry, by entry

    /// Looks one string up; a new one ends the old and makes an entry. The prefix and what its
    /// byte sends it by give the place, so that each prefix has one of its own for a byte.
    void take(std::uint32_t byte, const std::uint32_t* spread) {
        std::uint32_t& place = table[prefix ^ spread[byte]];
        const std::uint32_t tag = byte << kCodeBits;
        const std::uint32_t code = place ^ tag;
        codes[free] = static_cast<std::uint16_t>(prefix);
        if (code > kLargestCode) {
            place = tag | free;
            ++free;
            prefix = byte;
        } else {
            prefix = code;
        }
    }
};

/// Writes codes, the highest bit first, by storing words.
struct CodeWriter {
    std::uint8_t* at = nullptr;
    std::uint64_t bits = 0;  // the lowest `count` of them are not yet written
    unsigned count = 0;

    /// Between two flushes at most four codes.
    void put(std::uint32_t code, unsigned width) {
        bits = bits << width | code;
        count += width;
    }
    /// Writes the whole bytes that are there, and leaves at most seven bits.
    void flush() {
        static_assert(std::endian::native == std::endian::little);
        const std::uint64_t word = __builtin_bswap64(bits << 1 << (63 - count));
        std::memcpy(at, &word, sizeof word);
        at += count / 8;
        count &= 7U;
    }
    void putAll(const std::uint16_t* codes, std::size_t size, unsigned width) {
        CodeWriter writer = *this;
        std::size_t i = 0;
        for (; i + 4 <= size; i += 4) {
            for (std::size_t k = 0; k < 4; ++k) writer.put(codes[i + k], width);
            writer.flush();
        }
        for (; i < size; ++i) writer.put(codes[i], width);
        writer.flush();
        *this = writer;
    }
    void fillLastByte() {
        if (count == 0) return;
        put(0, 8 - count);
        flush();
    }
};

}  // namespace

struct LzwEncoder::Strip {
    ByteView rest;
    Walk walk;
    CodeWriter out;

    /// Bytes that surely do not fill the table more than full.
    std::size_t room() const { return std::min<std::size_t>(rest.size(), kFull - walk.free); }

    /// Writes the codes that made the entries so far: one more bit from each entry on that needs
    /// it.
    void writeCodes() {
        std::uint32_t entry = kFirstFree;
        for (unsigned width = kFirstWidth; entry < walk.free; ++width) {
            const std::uint32_t end = std::min(walk.free, 1U << width);
            out.putAll(walk.codes + entry, end - entry, width);
            entry = end;
        }
    }
    void clearTable() {
        std::fill_n(walk.table, std::size_t{1} << kPlaceBits, kNoEntry);
        walk.free = kFirstFree;
    }
    /// Goes on behind bytes that were taken.
    void goOn(const Walk& taken, std::size_t size) {
        walk = taken;
        rest = rest.subspan(size);
        if (walk.free < kFull) return;
        writeCodes();
        out.put(kClear, kCodeBits);
        out.flush();
        clearTable();
    }
    /// Of the next code.
    unsigned width() const { return static_cast<unsigned>(std::bit_width(walk.free)); }
};

LzwEncoder::LzwEncoder() {
    // The fraction of the golden ratio spreads the bytes evenly over all places.
    constexpr std::uint32_t kGolden = 0x9E3779B1;
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        spread_[byte] = byte * kGolden >> (32 - kPlaceBits);
    }
}

void LzwEncoder::encode(ByteView strip, Bytes& codes) {
    Strip only{};
    only.rest = strip;
    begin(only, lanes_[0], codes);
    end(only, codes);
}

void LzwEncoder::encodeTwo(ByteView first, Bytes& firstCodes, ByteView second, Bytes& secondCodes) {
    Strip one{};
    Strip other{};
    one.rest = first;
    other.rest = second;
    begin(one, lanes_[0], firstCodes);
    begin(other, lanes_[1], secondCodes);
    while (!one.rest.empty() && !other.rest.empty()) {
        takeFromBoth(one, other, std::min(one.room(), other.room()));
    }
    end(one, firstCodes);
    end(other, secondCodes);
}

void LzwEncoder::begin(Strip& strip, Lane& lane, Bytes& out) {
    lane.table.resize(std::size_t{1} << kPlaceBits);
    lane.codes.resize(kFull);
    // At worst every byte is a code of the full width; a clear code comes after 3836 of them.
    out.resize(strip.rest.size() * kCodeBits / 8 + strip.rest.size() / 1024 + 64);
    strip.out.at = out.data();
    strip.out.put(kClear, kFirstWidth);
    strip.out.flush();
    strip.walk = {strip.rest[0], kFirstFree, lane.table.data(), lane.codes.data()};
    strip.clearTable();
    strip.rest = strip.rest.subspan(1);
}

void LzwEncoder::takeBytes(Strip& strip, std::size_t size) const {
    Walk walk = strip.walk;
    for (std::size_t i = 0; i < size; ++i) walk.take(strip.rest[i], spread_.data());
    strip.goOn(walk, size);
}

void LzwEncoder::takeFromBoth(Strip& first, Strip& second, std::size_t size) const {
    Walk one = first.walk;
    Walk other = second.walk;
    for (std::size_t i = 0; i < size; ++i) {
        one.take(first.rest[i], spread_.data());
        other.take(second.rest[i], spread_.data());
    }
    first.goOn(one, size);
    second.goOn(other, size);
}

void LzwEncoder::end(Strip& strip, Bytes& out) const {
    while (!strip.rest.empty()) takeBytes(strip, strip.room());
    strip.writeCodes();
    CodeWriter& writer = strip.out;
    writer.put(strip.walk.prefix, strip.width());
    writer.flush();
    // The decoder makes an entry for this code as well.
    ++strip.walk.free;
    if (strip.walk.free == kFull) {
        writer.put(kClear, kCodeBits);
        strip.walk.free = kFirstFree;
    }
    writer.put(kEnd, strip.width());
    writer.flush();
    writer.fillLastByte();
    out.resize(static_cast<std::size_t>(writer.at - out.data()));
}

}  // namespace skarnel::io
