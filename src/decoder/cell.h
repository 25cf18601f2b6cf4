// The cell that a decoder is locked into: nothing can be reached but two descriptors and memory.
#pragma once

#include <sys/resource.h>
#include <time.h>

#include <chrono>
#include <cstdint>
#include <optional>

#include "util/log/result.h"

namespace skarnel {

struct CellLimits {
    std::uint64_t memoryBytes;  // address space
    /// Of processor time, that of all threads and of the start together, above 0. Where the kernel
    /// has no timers of that it is rounded up to whole seconds, and one more.
    std::chrono::milliseconds processorTime;
    /// Whether the decoder may start threads of its own; never processes.
    enum class Threads : std::uint8_t { One, Many } threads = Threads::One;
    std::uint64_t dataBytes = UINT64_MAX;  // of the address space, what can be written to
};

/// While it lives, the calling process has one more second of processor time, all threads together,
/// and may write to 256 MB; it is killed for the one, and is refused more of the other. For what is
/// looked at before its limits can be known. Where the kernel has no timers the time is two seconds
/// from the process's start.
class ScanLimits {
  public:
    ScanLimits();
    ~ScanLimits();
    ScanLimits(const ScanLimits&) = delete;
    ScanLimits& operator=(const ScanLimits&) = delete;

  private:
    std::optional<timer_t> timer_;
    rlimit data_{};  // as they were
    rlimit time_{};
};

/// Locks the calling process in for good; it must have one thread:
/// - every descriptor but 0 to 2 and the two given is closed, and no new one can be had;
/// - memory and processor time are bounded, no file can be written, there are no core files;
/// - no privileges can be gained, the process dies with its parent and cannot be traced;
/// - Landlock, where the kernel has it, takes the whole file system away;
/// - seccomp, where the kernel has it, kills the process at any system call but those that reading
///   `picture`, writing to `answer`, a pipe, and memory need.
///
/// A wall that the kernel lacks is left out; decoderWalls() tells which. Fails when one that it has
/// cannot be raised; a decoder must not run then.
Result<void> lockIn(int picture, int answer, const CellLimits& limits);

/// All of it but seccomp, the part of lockIn that a kernel without filters leaves.
Result<void> raiseOuterWalls(int picture, int answer, const CellLimits& limits);

}  // namespace skarnel
