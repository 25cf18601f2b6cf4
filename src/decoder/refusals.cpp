#include "decoder/refusals.h"

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
namespace skarnel {
bool wasRefusedMemory() {
    return false;
}
void endWithoutThreads(void (*)()) {}
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
std::atomic<void (*)()> lastWordsWithoutThreads = nullptr;

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

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) {
    static const auto create =
        reinterpret_cast<decltype(&::pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    const int error = create(thread, attributes, run, argument);
    if (auto* const lastWords = lastWordsWithoutThreads.load();
        error != 0 && lastWords != nullptr) {
        lastWords();
        ::_exit(0);
    }
    return error;
}
}

namespace skarnel {

bool wasRefusedMemory() {
    return refused;
}

void endWithoutThreads(void (*lastWords)()) {
    lastWordsWithoutThreads = lastWords;
}

}  // namespace skarnel
#endif
