#include "imaging/io/item_data.h"

#include <algorithm>
#include <utility>

#include "imaging/io/byte_reader.h"

namespace skarnel::io {
namespace {

enum class Construction : unsigned { File = 0, Inside = 1 };

/// How many bytes the numbers of the table have: 0, 4 or 8 each.
struct Widths {
    unsigned offset, length, base, index;

    bool valid() const {
        const auto is = [](unsigned width) { return width == 0 || width == 4 || width == 8; };
        return is(offset) && is(length) && is(base) && is(index);
    }
};

std::uint64_t numberOf(ByteReader& in, unsigned width) {
    if (width == 0) return 0;
    return width == 4 ? in.u32() : in.u64();
}

/// As much of it as there is.
ByteView partOf(ByteView bytes, std::uint64_t offset, std::uint64_t count) {
    const std::uint64_t begin = std::min<std::uint64_t>(offset, bytes.size());
    return bytes.subspan(begin, std::min<std::uint64_t>(count, bytes.size() - begin));
}

}  // namespace

ItemData::ItemData(ByteView file, ByteView places, ByteView inside) : file_(file), inside_(inside) {
    ByteReader in(places, ByteOrder::Big);
    const int version = in.u8();
    in.skip(3);
    const unsigned widths = in.u16();
    const bool hasConstruction = version > 0;
    const Widths of{widths >> 12U, widths >> 8U & 15U, widths >> 4U & 15U,
                    hasConstruction ? widths & 15U : 0};
    constexpr int kLastVersion = 2;
    // The library overlooks the second version's index.
    const bool hasOddIndex = version < kLastVersion && of.index > 0;
    damaged_ = !places.empty() && (version > kLastVersion || hasOddIndex || !of.valid());
    const bool isShort = version < kLastVersion;
    const std::uint32_t items = isShort ? in.u16() : in.u32();
    for (std::uint32_t i = 0; i < items && !in.failed() && !damaged_; ++i) {
        const std::uint32_t item = isShort ? in.u16() : in.u32();
        Place place;
        if (hasConstruction) place.construction = in.u16() & 15U;
        in.skip(2);  // the file it lies in, of which there is one
        const std::uint64_t base = numberOf(in, of.base);
        const unsigned pieces = in.u16();
        // Without lengths there is nothing in them.
        if (of.length == 0) in.skip(pieces * std::uint64_t{of.index + of.offset});
        for (unsigned piece = 0; of.length > 0 && piece < pieces && !in.failed(); ++piece) {
            numberOf(in, of.index);
            const std::uint64_t offset = base + numberOf(in, of.offset);
            place.pieces.push_back({offset, numberOf(in, of.length)});
        }
        const auto [known, isNew] = places_.emplace(item, std::move(place));
        if (!isNew) known->second.isOnlyOne = false;
    }
}

std::optional<ByteView> ItemData::of(std::uint32_t item) {
    if (damaged_) return std::nullopt;
    const auto found = places_.find(item);
    if (found == places_.end()) return ByteView();
    const Place& place = found->second;
    const bool isInside = place.construction == static_cast<unsigned>(Construction::Inside);
    const bool isKnown =
        isInside || place.construction == static_cast<unsigned>(Construction::File);
    if (!place.isOnlyOne || !isKnown) return std::nullopt;
    const ByteView whole = isInside ? inside_ : file_;
    if (place.pieces.size() == 1) {
        return partOf(whole, place.pieces.front().offset, place.pieces.front().count);
    }
    joined_.clear();
    for (const Piece& piece : place.pieces) {
        const ByteView part = partOf(whole, piece.offset, piece.count);
        joinedBytes_ += part.size();
        if (joinedBytes_ > file_.size()) return std::nullopt;
        joined_.insert(joined_.end(), part.begin(), part.end());
    }
    return joined_;
}

}  // namespace skarnel::io
