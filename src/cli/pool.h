// Many jobs on all processors: worker processes that take one job after the other.
#pragma once

#include <cstddef>
#include <functional>

#include "cli/job.h"
#include "cli/machine_share.h"

namespace skarnel::cli {

/// How many workers the machine serves: one a processor, and no more than memory for a picture of
/// some fifty megapixels each allows; in a container, what that may use.
int defaultWorkers();
int workersFor(const MachineShare& share);

struct PoolCallbacks {
    std::function<JobReport(std::size_t job)> run;        // in a worker
    std::function<void(const JobReport& report)> report;  // in this process, in order
    std::function<void(std::size_t done)> progress;       // in this process, at once
};

/// Runs the jobs 0 .. count-1 with at most `workers` at a time. With one worker, or one job, all
/// happens in this process. A worker that dies costs only the job that it had: `lost` makes its
/// report, and another worker takes its place. An interruption ends the workers, each after the
/// file that it is writing, and then the program.
void runPool(std::size_t count, int workers, const PoolCallbacks& callbacks,
             const std::function<JobReport(std::size_t job, const std::string& cause)>& lost);

/// A report as bytes for a pipe, and back; none when the bytes are no report.
std::string packReport(const JobReport& report);
std::optional<JobReport> unpackReport(std::string_view bytes);

}  // namespace skarnel::cli
