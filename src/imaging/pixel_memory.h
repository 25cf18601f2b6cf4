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

/// Bytes of the idle blocks, for reports and tests.
std::size_t idlePixelMemory();

}  // namespace skarnel
