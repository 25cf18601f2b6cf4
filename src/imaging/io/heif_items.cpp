#include "imaging/io/heif_items.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "imaging/io/byte_reader.h"

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

/// Of the items that the library decodes; it ends the process where an item is made of any other.
bool isPicture(std::string_view type) {
    return type == "hvc1" || type == "av01" || type == "grid" || type == "iovl" || type == "iden";
}

/// Of those the ones whose size stands in their own data, whatever else the file says of it.
bool isCanvas(std::string_view type) {
    return type == "grid" || type == "iovl";
}

/// What the file says of each item: its size, and how often it is turned or cut.
class Properties {
  public:
    void addKinds(ByteView box) {
        forEachBox(box, [&](std::string_view type, ByteView content) {
            ByteReader in(content, ByteOrder::Big);
            in.skip(kKindBytes);
            const bool isTurn = type == "irot" || type == "imir" || type == "clap";
            kinds_.push_back({isTurn, type == "ispe", in.u64()});
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

    /// Pixels that are made for an item alone, once more for each time that it is turned or cut;
    /// none where it has several sizes, or is turned more than a few times.
    std::optional<std::uint64_t> pixelsOf(std::uint32_t item) const {
        constexpr std::uint64_t kLeastPixels = 1024;  // an item costs something itself
        std::optional<std::uint64_t> size;
        std::uint64_t times = 1;
        const auto uses = uses_.find(item);
        if (uses == uses_.end()) return kLeastPixels;
        for (const int number : uses->second) {
            if (number < 1 || static_cast<std::size_t>(number) > kinds_.size()) continue;
            const Kind& kind = kinds_[static_cast<std::size_t>(number) - 1];
            if (kind.isSize) {
                if (size && *size != kind.size) return std::nullopt;
                size = kind.size;
            }
            if (kind.isTurn) ++times;
        }
        constexpr std::uint64_t kMostTimes = 9;  // whatever size it states
        if (times > kMostTimes) return std::nullopt;
        constexpr std::uint64_t kMostSide = 1U << 16U;  // the library takes no larger one
        const std::uint64_t width = std::min(size.value_or(0) >> 32, kMostSide);
        const std::uint64_t height = std::min(size.value_or(0) & 0xFFFFFFFFU, kMostSide);
        return std::max(width * height, kLeastPixels) * times;
    }

  private:
    struct Kind {
        bool isTurn = false;
        bool isSize = false;
        std::uint64_t size = 0;  // where it is one: the width above the height
    };
    std::vector<Kind> kinds_;  // by number, from 1 on
    std::map<std::uint32_t, std::vector<int>> uses_;
};

class Items {
  public:
    /// Adds up what `weigh` says of an item, none for too much.
    using Weigh = std::function<std::optional<std::uint64_t>(std::uint32_t item)>;
    Items(std::uint64_t most, Weigh weigh) : most_(most), weigh_(std::move(weigh)) {}

    void addPictures(ByteView box) {
        ByteReader head(box, ByteOrder::Big);
        const bool isShort = head.u8() == 0;
        head.skip(kKindBytes - 1 + (isShort ? 2 : 4));  // how many there are
        forEachBox(head.take(head.left()), [&](std::string_view type, ByteView content) {
            if (type != "infe") return false;
            ByteReader in(content, ByteOrder::Big);
            const int version = in.u8();
            in.skip(kKindBytes - 1);
            const std::uint32_t item = version == 2 ? in.u16() : in.u32();
            in.skip(2);  // its protection
            const std::string_view kind = textOf(in.take(4));
            if (isPicture(kind)) pictures_.insert(item);
            if (isCanvas(kind)) canvases_.insert(item);
            return false;
        });
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
                if (type == "auxl" && pictures_.contains(from)) additions_[to].push_back(from);
            }
            if (in.failed() || in.position() - start != size) return false;
        }
        return true;
    }

    std::uint64_t decodedFor(std::uint32_t item, int depth = 0) {
        // No honest file derives from what is derived more than a few times.
        constexpr int kMostDepth = 16;
        if (depth > kMostDepth) return most_ + 1;
        if (const auto known = decoded_.find(item); known != decoded_.end()) return known->second;
        std::uint64_t sum = std::min(weigh_(item).value_or(most_ + 1), most_ + 1);
        if (const auto parts = parts_.find(item); parts != parts_.end()) {
            for (const std::uint32_t part : parts->second) {
                if (sum > most_) break;
                // No camera makes canvases of canvases, and how large the inner ones are nobody
                // knows before they are made.
                const bool isTooDeep = canvases_.contains(item) && canvases_.contains(part);
                sum += pictures_.contains(part) && !isTooDeep ? decodedFor(part, depth + 1)
                                                              : most_ + 1;
            }
        }
        if (const auto more = additions_.find(item); more != additions_.end()) {
            for (const std::uint32_t addition : more->second) {
                if (sum > most_) break;
                // A tile may have transparency of its own, but that is coded.
                const bool isTooDeep = depth > 0 && canvases_.contains(addition);
                sum += isTooDeep ? most_ + 1 : decodedFor(addition, depth + 1);
            }
        }
        return decoded_[item] = std::min(sum, most_ + 1);
    }

  private:
    std::uint64_t most_;
    Weigh weigh_;
    std::set<std::uint32_t> pictures_;
    std::set<std::uint32_t> canvases_;  // of the pictures
    std::map<std::uint32_t, std::vector<std::uint32_t>> parts_;
    std::map<std::uint32_t, std::vector<std::uint32_t>>
        additions_;  // its transparency and the like
    std::map<std::uint32_t, std::uint64_t> decoded_;
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
        if (const auto infos = findBox(*meta, "iinf")) items.addPictures(*infos);
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
    for (const char* box : {"pitm", "iinf", "iref", "iprp"}) {
        if (!hasAtMostOne(*meta, box)) return false;
    }
    const auto properties = findBox(*meta, "iprp");
    return !properties || hasAtMostOne(*properties, "ipco");
}

std::uint64_t decodedItems(ByteView file, std::uint32_t item, std::uint64_t most) {
    return sumFor(file, item, most, [](std::uint32_t) { return std::optional<std::uint64_t>(1); });
}

std::uint64_t decodedPixels(ByteView file, std::uint32_t item, std::uint64_t most) {
    Properties properties;
    if (const auto meta = contentOfMeta(file)) {
        forEachBox(findBox(*meta, "iprp").value_or(ByteView()),
                   [&](std::string_view type, ByteView content) {
                       if (type == "ipco") properties.addKinds(content);
                       if (type == "ipma") properties.addUses(content);
                       return false;
                   });
    }
    return sumFor(file, item, most, [&](std::uint32_t of) { return properties.pixelsOf(of); });
}

}  // namespace skarnel::io
