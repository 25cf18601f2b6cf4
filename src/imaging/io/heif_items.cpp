#include "imaging/io/heif_items.h"

#include <algorithm>
#include <map>
#include <optional>
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

class Items {
  public:
    explicit Items(std::uint64_t most) : most_(most) {}

    void addReferences(ByteView box) {
        if (box.size() < kKindBytes) return;
        const bool isShort = box[0] == 0;
        forEachBox(box.subspan(kKindBytes), [&](std::string_view type, ByteView content) {
            ByteReader in(content, ByteOrder::Big);
            const auto number = [&] { return isShort ? in.u16() : in.u32(); };
            const std::uint32_t from = number();
            const int count = in.u16();
            for (int i = 0; i < count && !in.failed(); ++i) {
                const std::uint32_t to = number();
                if (type == "dimg") parts_[from].push_back(to);
                if (type == "auxl") parts_[to].push_back(from);
            }
            return false;
        });
    }

    std::uint64_t decodedFor(std::uint32_t item, int depth = 0) {
        // No honest file derives from what is derived more than a few times.
        constexpr int kMostDepth = 16;
        if (depth > kMostDepth) return most_ + 1;
        if (const auto known = decoded_.find(item); known != decoded_.end()) return known->second;
        std::uint64_t sum = 1;
        if (const auto parts = parts_.find(item); parts != parts_.end()) {
            for (const std::uint32_t part : parts->second) {
                sum += decodedFor(part, depth + 1);
                if (sum > most_) break;
            }
        }
        return decoded_[item] = std::min(sum, most_ + 1);
    }

  private:
    std::uint64_t most_;
    std::map<std::uint32_t, std::vector<std::uint32_t>> parts_;
    std::map<std::uint32_t, std::uint64_t> decoded_;
};

}  // namespace

std::uint64_t decodedItems(ByteView file, std::uint32_t item, std::uint64_t most) {
    Items items(most);
    const auto meta = findBox(file, "meta");
    if (meta && meta->size() >= kKindBytes) {
        if (const auto references = findBox(meta->subspan(kKindBytes), "iref")) {
            items.addReferences(*references);
        }
    }
    return items.decodedFor(item);
}

}  // namespace skarnel::io
