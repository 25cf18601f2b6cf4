#include "imaging/pixel_memory.h"

#include <sys/mman.h>

#include <cstring>
#include <mutex>
#include <new>
#include <vector>

namespace skarnel {
namespace {

constexpr std::size_t kCacheLine = 64;
constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kMappedFrom = std::size_t{1} << 20;    // smaller blocks come from the heap
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
    bool fresh = false;  // straight from the system, hence zero
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
    return {reinterpret_cast<std::uint8_t*>(aligned), capacity, true};
}

Block newBlock(std::size_t size) {
    if (kKeepBlocks && size >= kMappedFrom) return mapBlock(size);
    void* bytes = ::operator new (size, std::align_val_t{kCacheLine}, std::nothrow);
    return {static_cast<std::uint8_t*>(bytes), size, false};
}

void giveBack(const Block& block) {
    if (kKeepBlocks && block.capacity >= kMappedFrom)
        munmap(block.bytes, block.capacity);
    else
        ::operator delete (block.bytes, std::align_val_t{kCacheLine});
}

/// Idle blocks, oldest first.
class BlockStore {
  public:
    Block take(std::size_t size) {
        const std::lock_guard lock(mutex_);
        std::size_t best = blocks_.size();
        for (std::size_t i = 0; i < blocks_.size(); ++i) {
            const std::size_t capacity = blocks_[i].capacity;
            // A block that is much too large would be missing where it fits.
            if (capacity < size || capacity > size + size / 2 + kMappedFrom) continue;
            if (best == blocks_.size() || capacity < blocks_[best].capacity) best = i;
        }
        if (best == blocks_.size()) return {};
        const Block block = blocks_[best];
        blocks_.erase(blocks_.begin() + static_cast<std::ptrdiff_t>(best));
        bytes_ -= block.capacity;
        return block;
    }

    void put(Block block) noexcept {
        block.fresh = false;
        {
            const std::lock_guard lock(mutex_);
            if (block.capacity <= limit_) {
                makeRoomFor(block.capacity);
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
        makeRoomFor(0);
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
    void makeRoomFor(std::size_t capacity) {
        while (!blocks_.empty() && bytes_ + capacity > limit_) {
            bytes_ -= blocks_.front().capacity;
            giveBack(blocks_.front());
            blocks_.erase(blocks_.begin());
        }
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
std::size_t idlePixelMemory() {
    return store().bytes();
}

}  // namespace skarnel
