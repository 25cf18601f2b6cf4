// The memory behind bitmaps: aligned, in huge pages where large, and kept for reuse.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace skarnel {

/// Reserved: undefined, and probably never written. Such a block is fresh and not kept, so that it
/// costs next to nothing while nobody touches it, and keeps no touched block from being reused.
enum class PixelContents { Zeroed, Undefined, Reserved };

/// A 64-byte aligned block of at least `size` bytes, or null without memory. The block returns to
/// the store of idle blocks when the last owner lets go. Touching fresh memory costs more than
/// most of the pixel work done on it, which is why blocks are kept.
std::shared_ptr<std::uint8_t> allocatePixelMemory(std::size_t size, PixelContents contents);

/// Upper bound on the bytes of idle blocks, 64 MB at start. Blocks beyond it are given back to the
/// system at once.
void setIdlePixelMemoryLimit(std::size_t bytes);

/// Gives every idle block back to the system.
void releaseIdlePixelMemory();

/// Asks the system to give memory that has not been touched yet in huge pages, where they fit: for
/// large blocks of other owners. Only a hint.
void preferHugePages(void* start, std::size_t size);

/// Readies idle blocks, so that the next `count` blocks of `size` bytes (or fewer) need no fresh
/// memory: one step, which touches a huge page (2 MB) at most. True when nothing is left to do:
/// the blocks are there, the limit is reached, the system gives no more, or the size is one for
/// the heap.
bool preparePixelMemory(std::size_t size, std::size_t count);

/// Bytes of the idle blocks, for reports and tests.
std::size_t idlePixelMemory();

}  // namespace skarnel
