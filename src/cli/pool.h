// Many jobs on all processors: worker processes that take one job after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "cli/job.h"
#include "cli/machine_share.h"

namespace skarnel::cli {

/// What a run may take of the machine.
struct PoolShare {
    int workers = 1;                         // at the same time
    std::uint64_t memoryBytes = UINT64_MAX;  // for all jobs that are at work together
    /// Jobs that may be begun beyond the first that is not reported yet.
    std::size_t ahead = SIZE_MAX;
};

/// How many workers the machine serves: one a processor, and no more than memory for the smallest
/// pictures allows; in a container, what that may use.
int workersFor(const MachineShare& share);

/// Three quarters of the memory that is free, the rest being for other programs and for needs that
/// are told too low; a gigabyte where nobody says how much is free.
std::uint64_t memoryFor(const MachineShare& share);

struct PoolCallbacks {
    std::function<JobReport(std::size_t job)> run;        // in a worker
    std::function<void(const JobReport& report)> report;  // in this process, in order
    std::function<void(std::size_t done)> progress;       // in this process, at once
    /// In this process, before the job is begun: the bytes that it will take. None takes any where
    /// this is empty.
    std::function<std::uint64_t(std::size_t job)> memory = {};
    /// In this process: whether the rest need not be done. Never where this is empty.
    std::function<bool()> isEnough = {};
};

/// Runs the jobs 0 .. count-1 in their order, as many at a time as the share allows; a job that is
/// larger than all of it waits until it is alone. With one worker, or one job, all happens in this
/// process. A worker that dies costs only the job that it had: `lost` makes its report, and another
/// worker takes its place. An interruption ends the workers, each after the file that it is
/// writing; what is finished by then is reported, in its order but with gaps, and the program ends.
void runPool(std::size_t count, const PoolShare& share, const PoolCallbacks& callbacks,
             const std::function<JobReport(std::size_t job, const std::string& cause)>& lost);

/// A report as bytes for a pipe, and back; none when the bytes are no report. What the job made
/// travels apart.
std::string packReport(const JobReport& report);
std::optional<JobReport> unpackReport(std::string_view bytes);

}  // namespace skarnel::cli
