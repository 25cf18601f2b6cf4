#include "imaging/io/heif_items.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string_view>
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

/// Version and flags of a box.
constexpr std::size_t kKindBytes = 4;

/// Of the items that the library decodes; it ends the process where an item is made of any other.
bool isPicture(std::string_view type) {
    return type == "hvc1" || type == "av01" || type == "grid" || type == "iovl" || type == "iden";
}

class Items {
  public:
    explicit Items(std::uint64_t most) : most_(most) {}

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
            if (isPicture(textOf(in.take(4)))) pictures_.insert(item);
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
            const auto number = [&] { return isShort ? in.u16() : in.u32(); };
            const std::uint32_t from = number();
            const int count = in.u16();
            for (int i = 0; i < count && !in.failed(); ++i) {
                const std::uint32_t to = number();
                if (type == "dimg") parts_[from].push_back(to);
                if (type == "auxl" && pictures_.contains(from)) parts_[to].push_back(from);
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
        std::uint64_t sum = 1;
        if (const auto parts = parts_.find(item); parts != parts_.end()) {
            for (const std::uint32_t part : parts->second) {
                sum += pictures_.contains(part) ? decodedFor(part, depth + 1) : most_ + 1;
                if (sum > most_) break;
            }
        }
        return decoded_[item] = std::min(sum, most_ + 1);
    }

  private:
    std::uint64_t most_;
    std::set<std::uint32_t> pictures_;
    std::map<std::uint32_t, std::vector<std::uint32_t>> parts_;
    std::map<std::uint32_t, std::uint64_t> decoded_;
};

}  // namespace

std::uint64_t decodedItems(ByteView file, std::uint32_t item, std::uint64_t most) {
    Items items(most);
    const auto meta = findBox(file, "meta");
    if (meta && meta->size() >= kKindBytes) {
        if (const auto infos = findBox(meta->subspan(kKindBytes), "iinf")) {
            items.addPictures(*infos);
        }
        if (const auto references = findBox(meta->subspan(kKindBytes), "iref")) {
            if (!items.addReferences(*references)) return most + 1;
        }
    }
    return items.decodedFor(item);
}

}  // namespace skarnel::io
