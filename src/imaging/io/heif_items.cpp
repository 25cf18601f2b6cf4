#include "imaging/io/heif_items.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "imaging/io/byte_reader.h"
#include "imaging/io/coded_size.h"
#include "imaging/io/item_data.h"

namespace skarnel::io {
namespace {

std::string_view textOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Calls `each` with the type and the content of the boxes that lie side by side, until it says
/// that it is done.
template <typename Each>
void forEachBox(ByteView bytes, Each each) {
    ByteReader in(bytes, ByteOrder::Big);
    while (in.left() > 0) {
        const std::size_t start = in.position();
        std::uint64_t size = in.u32();
        const std::string_view type = textOf(in.take(4));
        if (size == 1) size = in.u64();
        const std::size_t headBytes = in.position() - start;
        if (size == 0) size = headBytes + in.left();
        if (in.failed() || size < headBytes) return;
        const ByteView content = in.take(std::min<std::uint64_t>(size - headBytes, in.left()));
        if (each(type, content)) return;
    }
}

std::optional<ByteView> findBox(ByteView bytes, std::string_view wanted) {
    std::optional<ByteView> found;
    forEachBox(bytes, [&](std::string_view type, ByteView content) {
        if (type == wanted) found = content;
        return found.has_value();
    });
    return found;
}

/// Where there are several, readers differ in which one counts.
bool hasAtMostOne(ByteView bytes, std::string_view wanted) {
    int count = 0;
    forEachBox(bytes, [&](std::string_view type, ByteView) {
        count += type == wanted ? 1 : 0;
        return count > 1;
    });
    return count <= 1;
}

/// Version and flags of a box.
constexpr std::size_t kKindBytes = 4;

/// The boxes that describe an item each, behind their number.
ByteView infosIn(ByteView box) {
    ByteReader in(box, ByteOrder::Big);
    const bool isShort = in.u8() == 0;
    in.skip(kKindBytes - 1 + (isShort ? 2 : 4));
    return in.take(in.left());
}

/// An item that is another one, turned or cut.
constexpr std::string_view kStandsForAnother = "iden";

/// Of the items that the library decodes; it ends the process where an item is made of any other.
bool isPicture(std::string_view type) {
    return type == "hvc1" || type == "av01" || type == "grid" || type == "iovl" ||
           type == kStandsForAnother;
}

/// Of those the ones whose size stands in their own data, whatever else the file says of it.
bool isCanvas(std::string_view type) {
    return type == "grid" || type == "iovl";
}

/// What the file says of each item: its size, how often it is turned or cut, and how it is coded.
class Properties {
  public:
    /// Of one item.
    struct Facts {
        std::uint64_t width = 0;  // 0 where it is not stated
        std::uint64_t height = 0;
        std::uint64_t times = 1;  // that its pixels are made, once more for each turn or cut
        std::optional<ByteView> configuration;  // of its decoder
    };

    void addKinds(ByteView box) {
        forEachBox(box, [&](std::string_view type, ByteView content) {
            kinds_.push_back({type, content});
            return false;
        });
    }

    void addUses(ByteView box) {
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

    /// None where it has several sizes or decoders, or is turned more than a few times.
    std::optional<Facts> factsOf(std::uint32_t item) const {
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
        constexpr std::uint32_t kMostSide = 1U << 16U;  // the library takes no larger one
        ByteReader in(size.value_or(ByteView()), ByteOrder::Big);
        in.skip(kKindBytes);
        facts.width = std::min(in.u32(), kMostSide);
        facts.height = std::min(in.u32(), kMostSide);
        return facts;
    }

  private:
    struct Kind {
        std::string_view type;
        ByteView content;
    };

    /// Keeps the first; false where this one says something else.
    static bool isTheOnly(std::optional<ByteView>& kept, ByteView content) {
        if (!kept) kept = content;
        return std::ranges::equal(*kept, content);
    }

    std::vector<Kind> kinds_;  // by number, from 1 on
    std::map<std::uint32_t, std::vector<int>> uses_;
};

/// What is inside the items' data.
class CodedSizes {
  public:
    CodedSizes(ByteView file, ByteView places, ByteView inside)
        : data_(file, places, inside), left_(file.size() * 2 + kSpareBytes) {}

    /// Of nothing where the item has no data; none where that is damaged, and where what there is
    /// to look at is more than the file, as of items that share most of their data.
    std::optional<CodedSize> of(std::uint32_t item, std::string_view type, ByteView configuration) {
        const bool isCoded = type == "hvc1" || type == "av01";
        if (!isCoded && !isCanvas(type)) return CodedSize();
        const auto known = sizes_.find(item);
        if (known != sizes_.end()) return known->second;
        return sizes_[item] = read(item, type, configuration);
    }

  private:
    static constexpr std::size_t kSpareBytes = std::size_t{1} << 20U;

    std::optional<CodedSize> read(std::uint32_t item, std::string_view type,
                                  ByteView configuration) {
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

    ItemData data_;
    std::size_t left_;  // bytes that may be looked at
    std::map<std::uint32_t, std::optional<CodedSize>> sizes_;
};

/// An encoder codes whole blocks, the largest of 128 pixels; the sides may be exchanged.
bool fitsInto(const CodedSize& coded, const Properties::Facts& stated) {
    constexpr std::uint64_t kMostPadding = 128;
    const auto [shortSide, longSide] =
        std::minmax({std::uint64_t{coded.width}, std::uint64_t{coded.height}});
    const auto [shortStated, longStated] = std::minmax({stated.width, stated.height});
    return shortSide <= shortStated + kMostPadding && longSide <= longStated + kMostPadding;
}

struct Weight {
    std::uint64_t pixels = 0;
    std::uint64_t times = 1;  // that they are made
};

/// Of an item alone, by the larger of what is stated outside its data and inside; none for too
/// much, and where the two do not belong together.
std::optional<Weight> weightOf(const std::optional<Properties::Facts>& facts,
                               const std::optional<CodedSize>& coded) {
    constexpr std::uint64_t kLeastPixels = 1024;  // an item costs something itself
    if (!facts || !coded) return std::nullopt;
    const std::uint64_t stated = facts->width * facts->height;
    if (stated > 0 && !fitsInto(*coded, *facts)) return std::nullopt;
    constexpr std::uint32_t kMostSide = 1U << 16U;
    const std::uint64_t inside = std::uint64_t{std::min(coded->width, kMostSide)} *
                                 std::min(coded->height, kMostSide) * std::max(coded->pictures, 1U);
    return Weight{std::max({stated, inside, kLeastPixels}), facts->times};
}

class Items {
  public:
    /// Adds up what `weigh` says of an item of a type, none for too much.
    using Weigh = std::function<std::optional<Weight>(std::uint32_t item, std::string_view type)>;
    Items(std::uint64_t most, Weigh weigh) : most_(most), weigh_(std::move(weigh)) {}

    /// False where one is said to be of two types.
    bool addTypes(ByteView box) {
        bool hasOneEach = true;
        forEachBox(infosIn(box), [&](std::string_view type, ByteView content) {
            if (type != "infe") return false;
            ByteReader in(content, ByteOrder::Big);
            const int version = in.u8();
            in.skip(kKindBytes - 1);
            const std::uint32_t item = version == 2 ? in.u16() : in.u32();
            in.skip(2);  // its protection
            const std::string_view kind = textOf(in.take(4));
            const auto [known, isNew] = types_.emplace(item, kind);
            hasOneEach = hasOneEach && (isNew || known->second == kind);
            return false;
        });
        return hasOneEach;
    }

    /// False where one is longer or shorter than what it holds: readers differ in where the next
    /// begins then.
    bool addReferences(ByteView box) {
        if (box.size() < kKindBytes) return false;
        const bool isShort = box[0] == 0;
        ByteReader in(box.subspan(kKindBytes), ByteOrder::Big);
        while (in.left() > 0) {
            const std::size_t start = in.position();
            const std::uint32_t size = in.u32();
            const std::string_view type = textOf(in.take(4));
            if (type == "uuid") return false;  // and its name is sixteen bytes more
            const auto number = [&] { return isShort ? in.u16() : in.u32(); };
            const std::uint32_t from = number();
            const int count = in.u16();
            for (int i = 0; i < count && !in.failed(); ++i) {
                const std::uint32_t to = number();
                if (type == "dimg") parts_[from].push_back(to);
                if (type == "auxl" && isPicture(typeOf(from))) additions_[to].push_back(from);
            }
            if (in.failed() || in.position() - start != size) return false;
        }
        return true;
    }

    std::uint64_t decodedFor(std::uint32_t item) { return decodedFor(item, 0, false); }

  private:
    /// `isOnCanvas`: as a part of one, or of a part's part.
    std::uint64_t decodedFor(std::uint32_t item, int depth, bool isOnCanvas) {
        // No honest file derives from what is derived more than a few times.
        constexpr int kMostDepth = 16;
        if (depth > kMostDepth) return most_ + 1;
        const auto key = std::pair(item, isOnCanvas);
        if (const auto known = decoded_.find(key); known != decoded_.end()) return known->second;
        std::uint64_t sum = ownWeight(item);
        const bool arePartsOnCanvas = isOnCanvas || isCanvas(typeOf(item));
        for (const std::uint32_t part : partsOf(item)) {
            if (sum > most_) break;
            // No camera makes canvases of canvases.
            const bool isTooDeep = arePartsOnCanvas && isCanvas(typeOf(part));
            sum += isPicture(typeOf(part)) && !isTooDeep
                       ? decodedFor(part, depth + 1, arePartsOnCanvas)
                       : most_ + 1;
        }
        if (const auto more = additions_.find(item); more != additions_.end()) {
            for (const std::uint32_t addition : more->second) {
                if (sum > most_) break;
                // A tile may have transparency of its own, but that is coded.
                const bool isTooDeep = depth > 0 && isCanvas(typeOf(addition));
                sum += isTooDeep ? most_ + 1 : decodedFor(addition, depth + 1, depth > 0);
            }
        }
        return decoded_[key] = std::min(sum, most_ + 1);
    }

    /// What stands for another picture as it is has that one's pixels, whatever it states; it
    /// turns or cuts them. What stands for such a one again is too much.
    std::uint64_t ownWeight(std::uint32_t item) const {
        const std::string_view type = typeOf(item);
        auto weight = weigh_(item, type);
        if (!weight) return most_ + 1;
        if (type == kStandsForAnother) {
            for (const std::uint32_t part : partsOf(item)) {
                const auto other = weigh_(part, typeOf(part));
                if (!other || typeOf(part) == kStandsForAnother) return most_ + 1;
                weight->pixels = std::max(weight->pixels, other->pixels);
            }
        }
        return std::min(weight->pixels * weight->times, most_ + 1);
    }

    const std::vector<std::uint32_t>& partsOf(std::uint32_t item) const {
        static const std::vector<std::uint32_t> kNone;
        const auto found = parts_.find(item);
        return found == parts_.end() ? kNone : found->second;
    }

    /// Empty where it has none.
    std::string_view typeOf(std::uint32_t item) const {
        const auto found = types_.find(item);
        return found == types_.end() ? std::string_view() : found->second;
    }

    std::uint64_t most_;
    Weigh weigh_;
    std::map<std::uint32_t, std::string_view> types_;
    std::map<std::uint32_t, std::vector<std::uint32_t>> parts_;
    std::map<std::uint32_t, std::vector<std::uint32_t>>
        additions_;  // its transparency and the like
    std::map<std::pair<std::uint32_t, bool>, std::uint64_t> decoded_;
};

/// The boxes that say what the items are, behind version and flags.
std::optional<ByteView> contentOfMeta(ByteView file) {
    const auto meta = findBox(file, "meta");
    if (!meta || meta->size() < kKindBytes) return std::nullopt;
    return meta->subspan(kKindBytes);
}

std::uint64_t sumFor(ByteView file, std::uint32_t item, std::uint64_t most, Items::Weigh weigh) {
    Items items(most, std::move(weigh));
    if (const auto meta = contentOfMeta(file)) {
        if (const auto infos = findBox(*meta, "iinf"); infos && !items.addTypes(*infos)) {
            return most + 1;
        }
        if (const auto references = findBox(*meta, "iref")) {
            if (!items.addReferences(*references)) return most + 1;
        }
    }
    return items.decodedFor(item);
}

}  // namespace

bool hasOneMeaning(ByteView file) {
    if (!hasAtMostOne(file, "meta")) return false;
    const auto meta = contentOfMeta(file);
    if (!meta) return true;
    for (const char* box : {"pitm", "iinf", "iref", "iprp", "iloc", "idat"}) {
        if (!hasAtMostOne(*meta, box)) return false;
    }
    const auto properties = findBox(*meta, "iprp");
    return !properties || hasAtMostOne(*properties, "ipco");
}

std::uint64_t tableSteps(ByteView file) {
    const ByteView meta = contentOfMeta(file).value_or(ByteView());
    std::uint64_t items = 0;
    std::uint64_t bytes = 0;
    for (const char* table : {"iinf", "iloc", "iref"}) {
        bytes += findBox(meta, table).value_or(ByteView()).size();
    }
    forEachBox(findBox(meta, "iprp").value_or(ByteView()),
               [&](std::string_view type, ByteView content) {
                   if (type == "ipma") bytes += content.size();
                   return false;
               });
    forEachBox(infosIn(findBox(meta, "iinf").value_or(ByteView())),
               [&](std::string_view, ByteView) {
                   ++items;
                   return false;
               });
    return items * bytes;
}

std::uint64_t decodedItems(ByteView file, std::uint32_t item, std::uint64_t most) {
    return sumFor(file, item, most, [](std::uint32_t, std::string_view) {
        return std::optional(Weight{1, 1});
    });
}

std::uint64_t decodedPixels(ByteView file, std::uint32_t item, std::uint64_t most) {
    const ByteView meta = contentOfMeta(file).value_or(ByteView());
    Properties properties;
    forEachBox(findBox(meta, "iprp").value_or(ByteView()),
               [&](std::string_view type, ByteView content) {
                   if (type == "ipco") properties.addKinds(content);
                   if (type == "ipma") properties.addUses(content);
                   return false;
               });
    CodedSizes sizes(file, findBox(meta, "iloc").value_or(ByteView()),
                     findBox(meta, "idat").value_or(ByteView()));
    return sumFor(file, item, most, [&](std::uint32_t of, std::string_view type) {
        const auto facts = properties.factsOf(of);
        const ByteView decoder = facts ? facts->configuration.value_or(ByteView()) : ByteView();
        return weightOf(facts, sizes.of(of, type, decoder));
    });
}

}  // namespace skarnel::io
