#include "imaging/io/row_ring.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <utility>

namespace skarnel::io {
namespace {

/// The count lies behind the slots, on a page of its own.
constexpr std::size_t kCountOffset = kRingSlots * kRingSlotBytes;
constexpr std::size_t kRingBytes = kCountOffset + 4096;
constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

bool isRingFile(int descriptor) {
    struct stat status {};
    const int seals = ::fcntl(descriptor, F_GET_SEALS);
    return seals >= 0 && (seals & kSeals) == kSeals && ::fstat(descriptor, &status) == 0 &&
           status.st_size == static_cast<off_t>(kRingBytes);
}

void futex(std::uint32_t* word, int operation, std::uint32_t value) {
    ::syscall(SYS_futex, word, operation, value, nullptr, nullptr, 0);
}

}  // namespace

std::optional<FileDescriptor> makeRingFile() {
    FileDescriptor file(::memfd_create("skarnel-rows", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    // Its pages are had now, while a want of memory is an answer and not a signal.
    if (file.number() < 0 ||
        ::fallocate(file.number(), 0, 0, static_cast<off_t>(kRingBytes)) != 0 ||
        ::fcntl(file.number(), F_ADD_SEALS, kSeals) != 0) {
        return std::nullopt;
    }
    return file;
}

std::optional<RowRing> RowRing::map(int descriptor) {
    if (!isRingFile(descriptor)) return std::nullopt;
    void* memory = ::mmap(nullptr, kRingBytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE,
                          descriptor, 0);
    if (memory == MAP_FAILED) return std::nullopt;
    return RowRing(static_cast<std::uint8_t*>(memory));
}

RowRing::RowRing(RowRing&& other) noexcept
    : memory_(std::exchange(other.memory_, nullptr)), position_(other.position_) {}

RowRing::~RowRing() {
    if (memory_ != nullptr) ::munmap(memory_, kRingBytes);
}

std::uint32_t* RowRing::takenCount() const {
    return reinterpret_cast<std::uint32_t*>(memory_ + kCountOffset);
}

std::uint8_t* RowRing::freeSlot() {
    const std::atomic_ref<std::uint32_t> taken(*takenCount());
    for (;;) {
        const std::uint32_t count = taken.load(std::memory_order_acquire);
        if (position_ - count < kRingSlots) return slot();
        futex(takenCount(), FUTEX_WAIT, count);
    }
}

void RowRing::take(void* target, std::size_t size) {
    std::memcpy(target, slot(), size);
    ++position_;
    std::atomic_ref<std::uint32_t>(*takenCount()).store(position_, std::memory_order_release);
    futex(takenCount(), FUTEX_WAKE, INT_MAX);
}

}  // namespace skarnel::io
