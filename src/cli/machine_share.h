// What of the machine this process may use: processors and memory, a container's limits included.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace skarnel::cli {

struct MachineShare {
    unsigned processors = 1;                  // at least 1; a part of one counts as one
    std::optional<std::uint64_t> freeMemory;  // bytes without swapping; none: nobody says
};

/// Where the kernel tells of itself.
struct KernelFolders {
    std::string proc = "/proc";
    std::string cgroup = "/sys/fs/cgroup";
};

/// The processors of this process's affinity, less where its control group or one above has a
/// smaller quota, and the machine's available memory, less where such a group has less left. What a
/// group holds of files that nobody uses counts as left. Both versions of control groups are read,
/// as Documentation/admin-guide/cgroup-v1 and cgroup-v2.rst of Linux define them; what cannot be
/// read limits nothing.
MachineShare machineShare(const KernelFolders& folders = {});

}  // namespace skarnel::cli
