// Memory that the decoder's helper and the program that started it both see: rows go through it
// without being copied into the kernel and out of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "imaging/io/read_file.h"

namespace skarnel::io {

/// What a record of rows may hold at most, and how many of them may wait: small enough to stay in
/// the caches of both, and for the helper to be a few records ahead.
inline constexpr std::size_t kRingSlotBytes = std::size_t{256} << 10;
inline constexpr std::uint32_t kRingSlots = 4;

/// A file in memory of the ring's size that nobody can resize, so that no access to it can fail
/// later on; none where the system has no such files.
std::optional<FileDescriptor> makeRingFile();

/// One program's view of the ring: slots that are filled and taken in turn, and a count of those
/// that were taken. That a slot was filled is told by other means. Move-only.
///
/// Whoever fills may go on writing to a slot that is being taken: what is taken is copied first
/// and looked at afterwards.
class RowRing {
  public:
    /// None for a descriptor that is no ring's file, or without memory.
    static std::optional<RowRing> map(int descriptor);
    RowRing(RowRing&& other) noexcept;
    RowRing& operator=(RowRing&&) = delete;
    ~RowRing();

    /// For who fills: the next slot, kRingSlotBytes long, as soon as it is free. The same one again
    /// until `filled` is called.
    std::uint8_t* freeSlot();
    void filled() { ++position_; }

    /// For who takes: copies the next slot's first `size` bytes, at most kRingSlotBytes, and frees
    /// it.
    void take(void* target, std::size_t size);

  private:
    explicit RowRing(std::uint8_t* memory) : memory_(memory) {}
    std::uint8_t* slot() const { return memory_ + position_ % kRingSlots * kRingSlotBytes; }
    std::uint32_t* takenCount() const;

    std::uint8_t* memory_;
    std::uint32_t position_ = 0;  // slots filled or taken by this program; wraps around
};

}  // namespace skarnel::io
