// Forty programs change the settings at the same time.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

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
    store.setLockPatience(std::chrono::minutes(5));  // a slow disk must not decide the test
    for (int number = 0; number < kKeysEach; ++number) {
        store.setFloat(keyOf(process, number), static_cast<float>(process * 100 + number));
        store.setFloat("common", static_cast<float>(process));
        if (!store.synchronize()) return false;
    }
    return true;
}

TEST(ManyProcesses, FortyWritersLoseNoKey) {
    const test::TemporaryFolder folder;
    const std::string path = folder / "settings.json";
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) ::_exit(writeKeys(path, process) ? 0 : 1);
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    const SettingsStore store(path);
    EXPECT_EQ(store.keys().size(), static_cast<std::size_t>(kProcesses * kKeysEach + 1));
    for (int process = 0; process < kProcesses; ++process) {
        for (int number = 0; number < kKeysEach; ++number) {
            EXPECT_EQ(store.floatForKey(keyOf(process, number)),
                      static_cast<float>(process * 100 + number));
        }
    }
    EXPECT_EQ(folder.names().size(), 2U);  // the file and its lock, nothing damaged
}

}  // namespace
}  // namespace skarnel
