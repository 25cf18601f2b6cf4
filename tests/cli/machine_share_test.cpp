#include "cli/machine_share.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "cli/pool.h"
#include "storage/temporary_folder.h"

namespace skarnel::cli {
namespace {

constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20;

/// A kernel's files as a test wants them.
class Kernel {
  public:
    Kernel() { put("proc/meminfo", "MemTotal:       66000000 kB\nMemAvailable:   8388608 kB\n"); }
    void put(const std::string& name, const std::string& text) {
        std::filesystem::create_directories(std::filesystem::path(folder_ / name).parent_path());
        test::putFile(folder_ / name, text);
    }
    MachineShare share() const { return machineShare({folder_ / "proc", folder_ / "cgroup"}); }

  private:
    test::TemporaryFolder folder_;
};

unsigned allProcessors() {
    return machineShare({"/nonexistent", "/nonexistent"}).processors;
}

TEST(MachineShare, WithoutAGroupItIsTheMachines) {
    EXPECT_EQ(Kernel().share().freeMemory, 8192 * kMegabyte);
    EXPECT_EQ(Kernel().share().processors, allProcessors());
}

TEST(MachineShare, WithoutFilesNothingIsKnownOfMemory) {
    const MachineShare share = machineShare({"/nonexistent", "/nonexistent"});
    EXPECT_FALSE(share.freeMemory.has_value());
    EXPECT_GE(share.processors, 1U);
}

TEST(MachineShare, AContainersLimitsCount) {
    Kernel kernel;
    kernel.put("proc/self/cgroup", "0::/\n");
    kernel.put("cgroup/memory.max", "536870912\n");
    kernel.put("cgroup/memory.current", "209715200\n");
    kernel.put("cgroup/memory.stat", "anon 104857600\nfile 104857600\ninactive_file 52428800\n");
    kernel.put("cgroup/cpu.max", "50000 100000\n");
    // 512 MB less the 200 in use, of which 50 are files that nobody needs.
    EXPECT_EQ(kernel.share().freeMemory, 362 * kMegabyte);
    EXPECT_EQ(kernel.share().processors, 1U);  // half a processor is one
}

TEST(MachineShare, TheSmallestOfAGroupAndThoseAboveIt) {
    Kernel kernel;
    kernel.put("proc/self/cgroup", "0::/user.slice/app.scope\n");
    kernel.put("cgroup/user.slice/memory.max", "1073741824\n");
    kernel.put("cgroup/user.slice/memory.current", "1048576\n");
    kernel.put("cgroup/user.slice/app.scope/memory.max", "max\n");
    kernel.put("cgroup/user.slice/app.scope/memory.current", "1048576\n");
    kernel.put("cgroup/user.slice/app.scope/cpu.max", "max 100000\n");
    EXPECT_EQ(kernel.share().freeMemory, 1023 * kMegabyte);
    EXPECT_EQ(kernel.share().processors, allProcessors());
}

TEST(MachineShare, TheFirstVersionOfControlGroups) {
    Kernel kernel;
    // The path is the host's; of it a container sees only its own root.
    kernel.put("proc/self/cgroup", "9:cpu,cpuacct:/docker/0a1b\n4:memory:/docker/0a1b\n0::/\n");
    kernel.put("cgroup/memory/memory.limit_in_bytes", "2147483648\n");
    kernel.put("cgroup/memory/memory.usage_in_bytes", "1073741824\n");
    kernel.put("cgroup/memory/memory.stat", "inactive_file 1\ntotal_inactive_file 536870912\n");
    kernel.put("cgroup/cpu/cpu.cfs_quota_us", "100000\n");
    kernel.put("cgroup/cpu/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(kernel.share().freeMemory, 1536 * kMegabyte);
    EXPECT_EQ(kernel.share().processors, 1U);
}

TEST(MachineShare, AGroupWithoutLimitsTakesNothing) {
    Kernel kernel;
    kernel.put("proc/self/cgroup", "4:memory:/\n1:cpu:/\n");
    kernel.put("cgroup/memory/memory.limit_in_bytes", "9223372036854771712\n");
    kernel.put("cgroup/memory/memory.usage_in_bytes", "1073741824\n");
    kernel.put("cgroup/cpu/cpu.cfs_quota_us", "-1\n");
    kernel.put("cgroup/cpu/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(kernel.share().freeMemory, 8192 * kMegabyte);
    EXPECT_EQ(kernel.share().processors, allProcessors());
}

TEST(MachineShare, MoreInUseThanAllowedLeavesNothing) {
    Kernel kernel;
    kernel.put("proc/self/cgroup", "0::/\n");
    kernel.put("cgroup/memory.max", "1048576\n");
    kernel.put("cgroup/memory.current", "2097152\n");
    EXPECT_EQ(kernel.share().freeMemory, 0U);
}

TEST(MachineShare, DamagedLinesLimitNothing) {
    Kernel kernel;
    kernel.put("proc/self/cgroup", "\nno colon\n0:\n0:memory\n4:memory:relative\n0::/../..\n");
    kernel.put("cgroup/memory.max", "many\n");
    EXPECT_EQ(kernel.share().freeMemory, 8192 * kMegabyte);
}

TEST(WorkersFor, OneAProcessorAndNoMoreThanSmallPicturesHaveMemoryFor) {
    EXPECT_EQ(workersFor({8, 64 * 1024 * kMegabyte}), 8);
    EXPECT_EQ(workersFor({64, 512 * kMegabyte}), 16);
    EXPECT_EQ(workersFor({64, 40 * kMegabyte}), 1);
    EXPECT_EQ(workersFor({64, 0}), 1);
    EXPECT_EQ(workersFor({64, std::nullopt}), 32);
}

TEST(MemoryFor, LeavesAQuarterOfWhatIsFree) {
    EXPECT_EQ(memoryFor({8, 4096 * kMegabyte}), 3072 * kMegabyte);
    EXPECT_EQ(memoryFor({8, 0}), 0U);
    EXPECT_EQ(memoryFor({8, std::nullopt}), 768 * kMegabyte);
}

}  // namespace
}  // namespace skarnel::cli
