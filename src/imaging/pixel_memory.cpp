#include "imaging/pixel_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace skarnel {
namespace {

constexpr std::size_t kCacheLine = 64;
constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kMappedFrom = std::size_t{1} << 20;    // smaller blocks come from the heap
constexpr std::size_t kSharedUpTo = std::size_t{16} << 20;   // may serve any smaller mapped block
constexpr std::size_t kLargestBlock = std::size_t{1} << 40;  // no machine has that much to give
constexpr std::size_t kDefaultIdleLimit = std::size_t{64} << 20;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kKeepBlocks = false;  // exact blocks let the sanitizer see every stray byte
#else
constexpr bool kKeepBlocks = true;
#endif

struct Block {
    std::uint8_t* bytes = nullptr;
    std::size_t capacity = 0;
    bool fresh = false;       // straight from the system, hence zero
    std::size_t touched = 0;  // bytes from the start that the system has given memory for

    std::size_t untouched(std::size_t size) const { return size > touched ? size - touched : 0; }
};

std::size_t roundUp(std::size_t size, std::size_t unit) {
    return (size + unit - 1) / unit * unit;
}

/// Maps more than asked for and cuts the block out at a huge page's boundary.
Block mapBlock(std::size_t size) {
    const std::size_t capacity = roundUp(size, kHugePage);
    if (capacity < size || capacity + kHugePage < capacity) return {};
    void* mapped = mmap(nullptr, capacity + kHugePage, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return {};
    const auto start = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t aligned = roundUp(start, kHugePage);
    if (aligned > start) munmap(mapped, aligned - start);
    const std::size_t tail = start + kHugePage - aligned;
    if (tail > 0) munmap(reinterpret_cast<void*>(aligned + capacity), tail);
    madvise(reinterpret_cast<void*>(aligned), capacity, MADV_HUGEPAGE);
    return {reinterpret_cast<std::uint8_t*>(aligned), capacity, true, 0};
}

Block newBlock(std::size_t size) {
    if (kKeepBlocks && size >= kMappedFrom) return mapBlock(size);
    void* bytes = ::operator new (size, std::align_val_t{kCacheLine}, std::nothrow);
    return {static_cast<std::uint8_t*>(bytes), size, false, 0};
}

void giveBack(const Block& block) {
    if (kKeepBlocks && block.capacity >= kMappedFrom)
        munmap(block.bytes, block.capacity);
    else
        ::operator delete (block.bytes, std::align_val_t{kCacheLine});
}

/// Whether a block is worth giving for so little: one that is much too large would be missing where
/// it fits. Below kSharedUpTo it is sooner missed that pictures that grow find no block.
bool suits(const Block& block, std::size_t size) {
    if (block.capacity < size) return false;
    return block.capacity <= size + size / 2 + kMappedFrom ||
           (size >= kMappedFrom && block.capacity <= kSharedUpTo);
}

/// Idle blocks, oldest first.
class BlockStore {
  public:
    /// The block that needs the least fresh memory, of these the smallest.
    Block take(std::size_t size) {
        const std::lock_guard lock(mutex_);
        std::size_t best = blocks_.size();
        const auto cost = [&](std::size_t i) {
            return std::pair(blocks_[i].untouched(size), blocks_[i].capacity);
        };
        for (std::size_t i = 0; i < blocks_.size(); ++i) {
            if (!suits(blocks_[i], size)) continue;
            if (best == blocks_.size() || cost(i) < cost(best)) best = i;
        }
        if (best == blocks_.size()) return {};
        const Block block = blocks_[best];
        blocks_.erase(blocks_.begin() + static_cast<std::ptrdiff_t>(best));
        bytes_ -= block.capacity;
        return block;
    }

    /// One step of preparePixelMemory.
    bool prepare(std::size_t size, std::size_t count) {
        std::size_t ready = 0;
        {
            const std::lock_guard lock(mutex_);
            for (Block& block : blocks_) {
                if (!suits(block, size) || ready == count) continue;
                if (block.untouched(size) > 0) {
                    touchPage(block);
                    return false;
                }
                ++ready;
            }
            if (ready == count || !makeRoomFor(roundUp(size, kHugePage), true)) return true;
        }
        const Block block = mapBlock(size);
        if (block.bytes == nullptr) return true;
        put(block);
        return false;
    }

    void put(Block block) noexcept {
        block.fresh = false;
        {
            const std::lock_guard lock(mutex_);
            if (makeRoomFor(block.capacity, isLarge(block))) {
                try {
                    blocks_.push_back(block);
                    bytes_ += block.capacity;
                    return;
                } catch (const std::bad_alloc&) {
                    // Without memory for the list the block is simply not kept.
                }
            }
        }
        giveBack(block);
    }

    void setLimit(std::size_t bytes) {
        const std::lock_guard lock(mutex_);
        limit_ = bytes;
        makeRoomFor(0, false);
    }

    void clear() {
        const std::lock_guard lock(mutex_);
        for (const Block& block : blocks_) giveBack(block);
        blocks_.clear();
        bytes_ = 0;
    }

    std::size_t bytes() {
        const std::lock_guard lock(mutex_);
        return bytes_;
    }

  private:
    /// What the block holds plays no part any more.
    static void touchPage(Block& block) {
        const std::size_t page = std::min(kHugePage, block.capacity - block.touched);
        std::memset(block.bytes + block.touched, 0, page);
        block.touched += page;
    }

    static bool isLarge(const Block& block) { return block.capacity > kSharedUpTo; }

    /// Gives blocks back until one more fits: the large ones first, the others only for one of
    /// their kind. False where that is not enough.
    bool makeRoomFor(std::size_t capacity, bool amongLarge) {
        while (bytes_ + capacity > limit_) {
            auto block = std::find_if(blocks_.begin(), blocks_.end(), isLarge);
            if (block == blocks_.end()) {
                if (amongLarge || blocks_.empty()) return false;
                block = blocks_.begin();
            }
            bytes_ -= block->capacity;
            giveBack(*block);
            blocks_.erase(block);
        }
        return true;
    }

    std::mutex mutex_;
    std::vector<Block> blocks_;
    std::size_t bytes_ = 0;
    std::size_t limit_ = kDefaultIdleLimit;
};

/// Never destroyed: images may outlive every other object of the process.
BlockStore& store() {
    static BlockStore* const instance = new BlockStore;
    return *instance;
}

}  // namespace

std::shared_ptr<std::uint8_t> allocatePixelMemory(std::size_t size, PixelContents contents) {
    if (size == 0 || size > kLargestBlock) return nullptr;
    const bool kept = kKeepBlocks && contents != PixelContents::Reserved;
    Block block = kept ? store().take(size) : Block{};
    if (block.bytes == nullptr) block = newBlock(size);
    if (block.bytes == nullptr) return nullptr;
    block.touched = std::max(block.touched, size);
    if (contents == PixelContents::Zeroed && !block.fresh) std::memset(block.bytes, 0, size);
    try {
        return {block.bytes, [block, kept](std::uint8_t*) {
                    if (kept)
                        store().put(block);
                    else
                        giveBack(block);
                }};
    } catch (const std::bad_alloc&) {
        return nullptr;  // the handle's deleter has run on the block already
    }
}

void setIdlePixelMemoryLimit(std::size_t bytes) {
    store().setLimit(bytes);
}
void releaseIdlePixelMemory() {
    store().clear();
}
void preferHugePages(void* start, std::size_t size) {
    if (!kKeepBlocks || size < kHugePage) return;
    const auto first = reinterpret_cast<std::uintptr_t>(start);
    const std::uintptr_t aligned = roundUp(first, kHugePage);
    const std::size_t within = (first + size - aligned) / kHugePage * kHugePage;
    if (within > 0) madvise(reinterpret_cast<void*>(aligned), within, MADV_HUGEPAGE);
}
bool preparePixelMemory(std::size_t size, std::size_t count) {
    if (!kKeepBlocks || size < kMappedFrom || size > kLargestBlock) return true;
    return store().prepare(size, count);
}
std::size_t idlePixelMemory() {
    return store().bytes();
}

}  // namespace skarnel
