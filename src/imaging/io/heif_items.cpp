#include "imaging/io/heif_items.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "imaging/io/byte_reader.h"
#include "imaging/io/item_boxes.h"
#include "imaging/io/item_weight.h"

namespace skarnel::io {
namespace {

/// Where there are several, readers differ in which one counts.
bool hasAtMostOne(ByteView bytes, std::string_view wanted) {
    int count = 0;
    forEachBox(bytes, [&](std::string_view type, ByteView) {
        count += type == wanted ? 1 : 0;
        return count > 1;
    });
    return count <= 1;
}

/// The boxes that describe an item each, behind their number.
ByteView infosIn(ByteView box) {
    ByteReader in(box, ByteOrder::Big);
    const bool isShort = in.u8() == 0;
    in.skip(kKindBytes - 1 + (isShort ? 2 : 4));
    return in.take(in.left());
}

/// Of the items that the library decodes; it ends the process where an item is made of any other.
bool isPicture(std::string_view type) {
    return type == "hvc1" || type == "av01" || type == "grid" || type == "iovl" ||
           type == kStandsForAnother;
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
    std::uint64_t ownWeight(std::uint32_t item) {
        const std::string_view type = typeOf(item);
        auto weight = knownWeight(item);
        if (!weight) return most_ + 1;
        if (type == kStandsForAnother) {
            for (const std::uint32_t part : partsOf(item)) {
                const auto other = knownWeight(part);
                if (!other || typeOf(part) == kStandsForAnother) return most_ + 1;
                weight->pixels = std::max(weight->pixels, other->pixels);
            }
        }
        return std::min(std::min(weight->pixels, most_ + 1) * weight->times, most_ + 1);
    }

    std::optional<Weight> knownWeight(std::uint32_t item) {
        const auto known = weights_.find(item);
        if (known != weights_.end()) return known->second;
        return weights_[item] = weigh_(item, typeOf(item));
    }

    std::span<const std::uint32_t> partsOf(std::uint32_t item) const {
        const auto found = parts_.find(item);
        if (found == parts_.end()) return {};
        return found->second;
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
    std::map<std::uint32_t, std::optional<Weight>> weights_;
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
    ItemWeights weights(file, contentOfMeta(file).value_or(ByteView()));
    return sumFor(file, item, most,
                  [&](std::uint32_t of, std::string_view type) { return weights.of(of, type); });
}

}  // namespace skarnel::io
