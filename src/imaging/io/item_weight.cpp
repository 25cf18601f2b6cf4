#include "imaging/io/item_weight.h"

#include <algorithm>
#include <utility>

#include "imaging/io/coded_size.h"
#include "imaging/io/item_boxes.h"

namespace skarnel::io {
namespace {

constexpr std::uint32_t kMostSide = 1U << 16U;  // the library takes no larger one

/// Keeps the first; false where this one says something else.
bool isTheOnly(std::optional<ByteView>& kept, ByteView content) {
    if (!kept) kept = content;
    return std::ranges::equal(*kept, content);
}

/// An encoder codes whole blocks, the largest of 128 pixels; the sides may be exchanged.
bool fitsInto(const CodedSize& coded, const ItemProperties::Facts& stated) {
    constexpr std::uint64_t kMostPadding = 128;
    const auto [shortSide, longSide] =
        std::minmax({std::uint64_t{coded.width}, std::uint64_t{coded.height}});
    const auto [shortStated, longStated] = std::minmax({stated.width, stated.height});
    return shortSide <= shortStated + kMostPadding && longSide <= longStated + kMostPadding;
}

}  // namespace

bool isCanvas(std::string_view type) {
    return type == "grid" || type == "iovl";
}

ItemProperties::ItemProperties(ByteView box) {
    forEachBox(box, [&](std::string_view type, ByteView content) {
        if (type == "ipco") addKinds(content);
        if (type == "ipma") addUses(content);
        return false;
    });
}

void ItemProperties::addKinds(ByteView box) {
    forEachBox(box, [&](std::string_view type, ByteView content) {
        kinds_.push_back({type, content});
        return false;
    });
}

void ItemProperties::addUses(ByteView box) {
    ByteReader in(box, ByteOrder::Big);
    const std::uint32_t kind = in.u32();
    const bool isShort = kind >> 24 == 0;
    const std::uint32_t entries = in.u32();
    for (std::uint32_t entry = 0; entry < entries && !in.failed(); ++entry) {
        const std::uint32_t item = isShort ? in.u16() : in.u32();
        const int count = in.u8();
        for (int i = 0; i < count && !in.failed(); ++i) {
            // The highest bit says whether a reader must know the property.
            const int number = (kind & 1U) != 0 ? in.u16() & 0x7FFF : in.u8() & 0x7F;
            uses_[item].push_back(number);
        }
    }
}

std::optional<ItemProperties::Facts> ItemProperties::factsOf(std::uint32_t item) const {
    Facts facts;
    std::optional<ByteView> size;
    const auto uses = uses_.find(item);
    if (uses == uses_.end()) return facts;
    for (const int number : uses->second) {
        if (number < 1 || static_cast<std::size_t>(number) > kinds_.size()) continue;
        const auto& [type, content] = kinds_[static_cast<std::size_t>(number) - 1];
        if (type == "ispe" && !isTheOnly(size, content)) return std::nullopt;
        const bool isDecoder = type == "hvcC" || type == "av1C";
        if (isDecoder && !isTheOnly(facts.configuration, content)) return std::nullopt;
        if (type == "irot" || type == "imir" || type == "clap") ++facts.times;
    }
    constexpr std::uint64_t kMostTimes = 9;  // whatever size it states
    if (facts.times > kMostTimes) return std::nullopt;
    ByteReader in(size.value_or(ByteView()), ByteOrder::Big);
    in.skip(kKindBytes);
    facts.width = std::min(in.u32(), kMostSide);
    facts.height = std::min(in.u32(), kMostSide);
    return facts;
}

ItemWeights::ItemWeights(ByteView file, ByteView meta)
    : properties_(findBox(meta, "iprp").value_or(ByteView())),
      data_(file, findBox(meta, "iloc").value_or(ByteView()),
            findBox(meta, "idat").value_or(ByteView())),
      left_(file.size() * 2 + (std::size_t{1} << 20U)) {}

std::optional<Weight> ItemWeights::of(std::uint32_t item, std::string_view type) {
    const auto facts = properties_.factsOf(item);
    if (!facts) return std::nullopt;
    const auto coded = sizeInside(item, type, facts->configuration.value_or(ByteView()));
    if (!coded) return std::nullopt;
    const std::uint64_t stated = facts->width * facts->height;
    if (stated > 0 && !fitsInto(*coded, *facts)) return std::nullopt;
    const std::uint64_t inside = std::uint64_t{std::min(coded->width, kMostSide)} *
                                 std::min(coded->height, kMostSide) * std::max(coded->pictures, 1U);
    constexpr std::uint64_t kLeastPixels = 1024;  // an item costs something itself
    return Weight{std::max({stated, inside, kLeastPixels}), facts->times};
}

/// Of nothing where the item has no data.
std::optional<CodedSize> ItemWeights::sizeInside(std::uint32_t item, std::string_view type,
                                                 ByteView configuration) {
    const bool isCoded = type == "hvc1" || type == "av01";
    if (!isCoded && !isCanvas(type)) return CodedSize();
    const std::optional<ByteView> data = data_.of(item);
    if (!data) return std::nullopt;
    const std::size_t count = data->size() + configuration.size();
    if (count > left_) return std::nullopt;
    left_ -= count;
    if (isCanvas(type) && data->empty()) return CodedSize();  // is never made
    if (type == "grid") return sizeOfGrid(*data);
    if (type == "iovl") return sizeOfOverlay(*data);
    return type == "hvc1" ? sizeOfHevc(configuration, *data) : sizeOfAv1(configuration, *data);
}

}  // namespace skarnel::io
