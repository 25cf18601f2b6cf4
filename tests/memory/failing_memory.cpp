#include "memory/failing_memory.h"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
namespace skarnel::testing {
bool canRefuseMemory() {
    return false;
}
void refuseMemory(long, Refusal) {}
long allowMemory() {
    return 0;
}
bool wasRefusedMemory() {
    return false;
}
long liveBlocks() {
    return 0;
}
MemoryPause::MemoryPause() : was_(false) {}
MemoryPause::~MemoryPause() = default;
}  // namespace skarnel::testing
#else

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<bool> counting = false;
std::atomic<long> requests = 0;
std::atomic<long> firstRefused = -1;
std::atomic<bool> refusesOnwards = false;
std::atomic<bool> hasRefused = false;
std::atomic<long> live = 0;

bool mustRefuse() {
    if (!counting) return false;
    const long number = requests++;
    const bool refuses =
        firstRefused >= 0 && (number == firstRefused || (refusesOnwards && number > firstRefused));
    if (refuses) hasRefused = true;
    return refuses;
}

void* counted(void* block) {
    if (block != nullptr) ++live;
    return block;
}

void* refused() {
    errno = ENOMEM;
    return nullptr;
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) {
    return mustRefuse() ? refused() : counted(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) {
    return mustRefuse() ? refused() : counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) {
    if (mustRefuse()) return refused();
    void* moved = __libc_realloc(block, size);
    if (block == nullptr && moved != nullptr) ++live;
    return moved;
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return mustRefuse() ? refused() : counted(__libc_memalign(alignment, size));
}
void* memalign(std::size_t alignment, std::size_t size) {
    return aligned_alloc(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = aligned_alloc(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}
void free(void* block) {
    if (block != nullptr) --live;
    __libc_free(block);
}
// Large blocks come straight from the system.
void* mmap(void* address, std::size_t size, int access, int flags, int file, off_t offset) {
    if ((flags & MAP_ANONYMOUS) != 0 && mustRefuse()) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return reinterpret_cast<void*>(::syscall(SYS_mmap, address, size, access, flags, file, offset));
}
}

namespace skarnel::testing {

bool canRefuseMemory() {
    return true;
}

void refuseMemory(long first, Refusal refusal) {
    requests = 0;
    hasRefused = false;
    firstRefused = first;
    refusesOnwards = refusal == Refusal::FromThenOn;
    counting = true;
}

long allowMemory() {
    counting = false;
    return requests;
}

bool wasRefusedMemory() {
    return hasRefused;
}

long liveBlocks() {
    return live;
}

MemoryPause::MemoryPause() : was_(counting.exchange(false)) {}
MemoryPause::~MemoryPause() {
    counting = was_;
}

}  // namespace skarnel::testing
#endif
