#include "decoder/memory_watch.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
namespace skarnel {
bool wasRefusedMemory() {
    return false;
}
}  // namespace skarnel
#else

// The library's own, under the names that it keeps for programs with a malloc before its own.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

std::atomic<bool> refused = false;

void* watched(void* block, bool asked) {
    if (block == nullptr && asked) refused = true;
    return block;
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) {
    return watched(__libc_malloc(size), true);
}
void* calloc(std::size_t count, std::size_t size) {
    return watched(__libc_calloc(count, size), true);
}
void* realloc(void* block, std::size_t size) {
    return watched(__libc_realloc(block, size), size > 0);  // to nothing is to give it back
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return watched(__libc_memalign(alignment, size), true);
}
void* memalign(std::size_t alignment, std::size_t size) {
    return aligned_alloc(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    const bool isPowerOfTwo = alignment > 0 && (alignment & (alignment - 1)) == 0;
    if (!isPowerOfTwo || alignment % sizeof(void*) != 0) return EINVAL;
    void* aligned = aligned_alloc(alignment, size);
    if (aligned == nullptr) return ENOMEM;
    *block = aligned;
    return 0;
}
}

namespace skarnel {

bool wasRefusedMemory() {
    return refused;
}

}  // namespace skarnel
#endif
