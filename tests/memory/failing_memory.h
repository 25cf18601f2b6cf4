// Takes the place of the program's malloc, which the libraries use as well, so that each request
// for memory in turn can be refused. Link failing_memory.cpp into a test program of its own.
#pragma once

#include <string>

namespace skarnel::testing {

/// False under a sanitizer, which has a malloc of its own; the functions then do nothing.
bool canRefuseMemory();

enum class Refusal { Once, FromThenOn };
inline std::string nameOf(Refusal refusal) {
    return refusal == Refusal::Once ? "Once" : "FromThenOn";
}

/// From now on the request number `first` (from 0) gets nothing, nor do later ones if so wanted.
/// -1 only counts.
void refuseMemory(long first, Refusal refusal);
/// Ends that; the number of requests meanwhile.
long allowMemory();
/// Whether any was refused since refuseMemory.
bool wasRefusedMemory();
/// Blocks that are not given back yet.
long liveBlocks();

/// A pause within the above, for what a test itself does.
class MemoryPause {
  public:
    MemoryPause();
    ~MemoryPause();
    MemoryPause(const MemoryPause&) = delete;
    MemoryPause& operator=(const MemoryPause&) = delete;

  private:
    bool was_;
};

}  // namespace skarnel::testing
