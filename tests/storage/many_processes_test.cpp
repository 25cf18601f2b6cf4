// Forty programs change the settings at the same time.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <vector>

#include "storage/killed_writer.h"
#include "storage/settings_store.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

constexpr int kProcesses = 40;
constexpr int kKeysEach = 10;

std::string keyOf(int process, int number) {
    return "process" + std::to_string(process) + "-" + std::to_string(number);
}

/// Writes a key after the other, each with a synchronize of its own; false when one fails.
bool writeKeys(const std::string& path, int process) {
    SettingsStore store(path);
    store.setLockPatience(std::chrono::minutes(5));  // none is refused here, however slow the disk
    for (int number = 0; number < kKeysEach; ++number) {
        store.setFloat(keyOf(process, number), static_cast<float>(process * 100 + number));
        store.setFloat("common", static_cast<float>(process));
        if (!store.synchronize()) return false;
    }
    return true;
}

/// Forty processes at `work(process)`, which tells whether all went well, and `meanwhile()` beside
/// them; then all keys are there.
template <typename Work, typename Meanwhile>
void expectNoKeyLost(const test::TemporaryFolder& folder, Work work, Meanwhile meanwhile) {
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) ::_exit(work(process) ? 0 : 1);
        children.push_back(child);
    }
    meanwhile();
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    const SettingsStore store(folder / "settings.json");
    EXPECT_EQ(store.keys().size(), static_cast<std::size_t>(kProcesses * kKeysEach + 1));
    for (int process = 0; process < kProcesses; ++process) {
        for (int number = 0; number < kKeysEach; ++number) {
            EXPECT_EQ(store.floatForKey(keyOf(process, number)),
                      static_cast<float>(process * 100 + number));
        }
    }
    EXPECT_EQ(folder.names().size(), 2U);  // the file and its lock, nothing damaged
}

TEST(ManyProcesses, FortyWritersLoseNoKey) {
    const test::TemporaryFolder folder;
    expectNoKeyLost(
        folder, [&](int process) { return writeKeys(folder / "settings.json", process); }, [] {});
}

TEST(ManyProcesses, FortyWindowsThatAreRefusedLoseNoKey) {
    const test::TemporaryFolder folder;
    const std::string path = folder / "settings.json";
    test::SharedCounter refusedProcesses;
    test::SharedCounter refusals;
    // As a window: no refusal is waited out, and the key comes with a later try.
    const auto work = [&](int process) {
        SettingsStore store(path);
        store.setLockPatience(std::chrono::milliseconds(500));
        int refused = 0;
        const auto written = [&] {
            if (store.synchronize()) return true;
            ++*refusals;
            if (++refused == 1) ++*refusedProcesses;
            return false;
        };
        for (int number = 0; number < kKeysEach; ++number) {
            store.setFloat(keyOf(process, number), static_cast<float>(process * 100 + number));
            store.setFloat("common", static_cast<float>(process));
            written();
        }
        for (int tries = 0; tries < 3000 && store.hasUnsavedChanges(); ++tries) written();
        return !store.hasUnsavedChanges() && refused > 0;
    };
    const int held = ::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    expectNoKeyLost(folder, work, [&] {
        // Whoever was forked has the lock's descriptor too; it is given up, not closed.
        for (int i = 0; i < 60'000 && *refusedProcesses < kProcesses; ++i) ::usleep(1000);
        EXPECT_EQ(*refusedProcesses, kProcesses);
        EXPECT_EQ(::flock(held, LOCK_UN), 0);
    });
    ::close(held);
    std::printf("%d refusals, and none in the end, of %d writes\n", int(*refusals),
                kProcesses* kKeysEach);
}

}  // namespace
}  // namespace skarnel
