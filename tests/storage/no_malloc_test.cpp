// Every request for memory is refused in turn, those of the C library's own calls among them: the
// file is the old one or the new one, nothing is lost, no block and no descriptor stays behind, and
// nobody gets to read what is the user's alone.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "memory/failing_memory.h"
#include "memory/process_size.h"
#include "memory/refuse_each.h"
#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/settings_store.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::fileText;
using test::TemporaryFolder;
using testing::MemoryPause;
using testing::Refusal;

const std::string kOld(5000, 'o');
const std::string kNew(9000, 'n');
const std::string kOldSettings = "{\"a\": 1, \"b\": 2, \"c\": 3}";

unsigned modeOf(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

class NoMalloc : public ::testing::TestWithParam<Refusal> {
  protected:
    void SetUp() override {
        before_ = ::umask(077);
        if (!testing::canRefuseMemory()) GTEST_SKIP() << "a sanitizer has a malloc of its own";
    }
    void TearDown() override { ::umask(before_); }

    /// Refuses each request of `work()`, which tells whether it succeeded. The folder holds `text`
    /// as the file before it, or nothing, and `check(succeeded)` looks at it afterwards.
    template <typename Work, typename Check>
    void refuseEach(const char* name, const std::string& text, Work work, Check check) {
        const std::ptrdiff_t descriptors = testing::openDescriptors();
        testing::refuseEach(name, GetParam(), [&] {
            std::optional<MemoryPause> pause(std::in_place);
            for (const std::string& each : folder.names()) ::unlink((folder / each).c_str());
            if (!text.empty()) test::putFile(path, text);
            pause.reset();
            const bool succeeded = work();
            pause.emplace();
            removeLeftOvers(folder.path());
            return check(succeeded) && testing::openDescriptors() == descriptors;
        });
    }

    // One for all tries: the library remembers which folders it has swept.
    const TemporaryFolder folder;
    const std::string path = folder / "file";

  private:
    mode_t before_ = 0;
};

TEST_P(NoMalloc, AReplacedFileIsTheOldOrTheNewOne) {
    const std::vector<std::uint8_t> bytes = test::bytesOf(kNew);
    refuseEach(
        "replace", kOld, [&] { return bool(writeFileSafely(path, bytes, Overwrite::Allow)); },
        [&](bool succeeded) {
            const std::string now = fileText(path);
            return (now == kNew || (!succeeded && now == kOld)) && modeOf(path) == 0600 &&
                   folder.names().size() == 1;
        });
}

TEST_P(NoMalloc, ANewFileIsForTheUserAloneWhereTheMaskSaysSo) {
    const std::vector<std::uint8_t> bytes = test::bytesOf(kNew);
    refuseEach(
        "make", "", [&] { return bool(writeFileSafely(path, bytes, Overwrite::Refuse)); },
        [&](bool succeeded) {
            if (folder.names().empty()) return !succeeded;
            return fileText(path) == kNew && modeOf(path) == 0600 && folder.names().size() == 1;
        });
}

TEST_P(NoMalloc, LeftOversAreRemovedOrStay) {
    refuseEach(
        "left-overs", kOld,
        [&] {
            try {
                removeLeftOvers(folder.path());
                return true;
            } catch (const std::bad_alloc&) {
                return false;
            }
        },
        [&](bool) { return fileText(path) == kOld; });
}

TEST_P(NoMalloc, LeftOversThatNobodyWaitsForStayWithoutMemoryForTheThread) {
    test::putFile(temporaryFilePath(folder.path()), "half");
    std::string name = folder.path();
    testing::refuseMemory(0, GetParam());
    removeLeftOversApart(std::move(name));
    testing::allowMemory();
    EXPECT_EQ(folder.names().size(), 1U);
}

TEST_P(NoMalloc, NoSettingIsLost) {
    refuseEach(
        "settings", kOldSettings,
        [&] {
            try {
                SettingsStore store(path);
                store.setFloat("a", 4);
                store.removeObject("b");
                return bool(store.synchronize()) && bool(store.reload());
            } catch (const std::bad_alloc&) {
                return false;  // of the path's copy, before the store begins
            }
        },
        [&](bool) {
            // Nobody touched c; a has its old or its new value. No copy beside has to help.
            const SettingsStore after(path);
            const float a = after.floatForKey("a");
            return after.floatForKey("c") == 3.0F && (a == 1 || a == 4) &&
                   !std::filesystem::exists(path + ".damaged");
        });
}

INSTANTIATE_TEST_SUITE_P(Memory, NoMalloc, ::testing::Values(Refusal::Once, Refusal::FromThenOn),
                         [](const auto& tried) { return testing::nameOf(tried.param); });

}  // namespace
}  // namespace skarnel
