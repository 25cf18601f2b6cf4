#include "cli/machine_share.h"

#include <sched.h>

#include <algorithm>
#include <fstream>
#include <thread>
#include <vector>

namespace skarnel::cli {
namespace {

/// The number after `key` in a file of lines "KEY NUMBER ...".
std::optional<std::uint64_t> valueOf(const std::string& path, const std::string& key) {
    std::ifstream file(path);
    std::string word;
    std::string rest;
    while (file >> word) {
        std::uint64_t value = 0;
        if (word == key) return file >> value ? std::optional(value) : std::nullopt;
        std::getline(file, rest);
    }
    return std::nullopt;
}

/// The number that a file begins with; none for the word "max" or without the file.
std::optional<std::uint64_t> numberIn(const std::string& path) {
    std::ifstream file(path);
    std::uint64_t value = 0;
    return file >> value ? std::optional(value) : std::nullopt;
}

/// Names of the files of one version of control groups.
struct GroupFiles {
    const char* memoryLimit;
    const char* memoryUse;
    const char* unusedFiles;  // a key of memory.stat
};

constexpr GroupFiles kFirstVersion = {"memory.limit_in_bytes", "memory.usage_in_bytes",
                                      "total_inactive_file"};
constexpr GroupFiles kSecondVersion = {"memory.max", "memory.current", "inactive_file"};

std::optional<std::uint64_t> memoryLeft(const std::string& group, const GroupFiles& names) {
    const auto limit = numberIn(group + "/" + names.memoryLimit);
    const auto use = numberIn(group + "/" + names.memoryUse);
    if (!limit || !use) return std::nullopt;
    const std::uint64_t files = valueOf(group + "/memory.stat", names.unusedFiles).value_or(0);
    const std::uint64_t needed = *use > files ? *use - files : 0;
    return *limit > needed ? *limit - needed : 0;
}

/// Processors of a quota, rounded up.
std::optional<unsigned> quota(std::int64_t allowed, std::int64_t period) {
    if (allowed <= 0 || period <= 0) return std::nullopt;
    const std::int64_t processors = allowed / period + (allowed % period != 0 ? 1 : 0);
    return static_cast<unsigned>(std::min<std::int64_t>(processors, 1 << 20));
}

std::optional<unsigned> firstVersionQuota(const std::string& group) {
    const auto allowed = numberIn(group + "/cpu.cfs_quota_us");
    const auto period = numberIn(group + "/cpu.cfs_period_us");
    if (!allowed || !period) return std::nullopt;
    return quota(static_cast<std::int64_t>(*allowed), static_cast<std::int64_t>(*period));
}

std::optional<unsigned> secondVersionQuota(const std::string& group) {
    std::ifstream file(group + "/cpu.max");
    std::int64_t allowed = 0;
    std::int64_t period = 0;
    if (!(file >> allowed >> period)) return std::nullopt;  // also the word "max"
    return quota(allowed, period);
}

/// The folders of a group and of those above it. In a container the path may be the host's, of
/// which only the mount's root is there.
std::vector<std::string> withParents(const std::string& root, std::string path) {
    std::vector<std::string> groups;
    while (!path.empty() && path != "/") {
        groups.push_back(root + path);
        path.erase(path.rfind('/'));
    }
    groups.push_back(root);
    return groups;
}

void lessen(MachineShare& share, std::optional<std::uint64_t> memory,
            std::optional<unsigned> processors) {
    if (memory) share.freeMemory = std::min(share.freeMemory.value_or(*memory), *memory);
    if (processors) share.processors = std::min(share.processors, *processors);
}

/// One line of /proc/self/cgroup: "NUMBER:CONTROLLERS:PATH", without controllers in version 2.
void lessenByGroup(MachineShare& share, const std::string& line, const std::string& root) {
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (second == std::string::npos || line.compare(second + 1, 1, "/") != 0) return;
    const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
    const std::string path = line.substr(second + 1);
    if (controllers == ",,") {
        for (const std::string& group : withParents(root, path))
            lessen(share, memoryLeft(group, kSecondVersion), secondVersionQuota(group));
    }
    if (controllers.find(",memory,") != std::string::npos) {
        for (const std::string& group : withParents(root + "/memory", path))
            lessen(share, memoryLeft(group, kFirstVersion), std::nullopt);
    }
    if (controllers.find(",cpu,") != std::string::npos) {
        for (const std::string& group : withParents(root + "/cpu", path))
            lessen(share, std::nullopt, firstVersionQuota(group));
    }
}

unsigned processorsOfAffinity() {
    cpu_set_t set;
    CPU_ZERO(&set);
    const bool known = ::sched_getaffinity(0, sizeof set, &set) == 0;
    return std::max(
        1U, known ? static_cast<unsigned>(CPU_COUNT(&set)) : std::thread::hardware_concurrency());
}

}  // namespace

MachineShare machineShare(const KernelFolders& folders) {
    MachineShare share;
    share.processors = processorsOfAffinity();
    if (const auto kilobytes = valueOf(folders.proc + "/meminfo", "MemAvailable:"))
        share.freeMemory = *kilobytes * 1024;
    std::ifstream groups(folders.proc + "/self/cgroup");
    for (std::string line; std::getline(groups, line);) lessenByGroup(share, line, folders.cgroup);
    return share;
}

}  // namespace skarnel::cli
