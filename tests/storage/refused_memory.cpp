#include "storage/refused_memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> countdown{-1};      // requests until the refused one; negative: none is refused
std::atomic<bool> fromThenOn{false};  // or only that one
std::atomic<bool> refused{false};

bool refuses() {
    if (countdown < 0) return false;
    if (countdown > 0) {
        --countdown;
        return false;
    }
    if (!fromThenOn) countdown = -1;
    refused = true;
    return true;
}

}  // namespace

void* operator new(std::size_t size) {
    if (refuses()) throw std::bad_alloc();
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace skarnel::test {

void refuseMemory(long k, bool onwards) {
    fromThenOn = onwards;
    refused = false;
    countdown = k;
}

bool allowMemory() {
    countdown = -1;
    return !refused;
}

}  // namespace skarnel::test
