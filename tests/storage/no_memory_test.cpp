// The k-th request for memory is refused, for every k, once and from then on: no crash, no
// exception out of the store, and the file is the old one or the new one.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <new>
#include <optional>

#include "storage/left_overs.h"
#include "storage/refused_memory.h"
#include "storage/safe_file.h"
#include "storage/settings_store.h"
#include "storage/temporary_folder.h"
#include "storage/whole_file.h"

namespace skarnel {
namespace {

using test::fileText;
using test::TemporaryFolder;

/// Runs `work` with the k-th request refused; true when it made no more than k requests.
template <typename Work>
bool runsWithoutRequest(long k, bool onwards, Work work) {
    test::refuseMemory(k, onwards);
    work();
    return test::allowMemory();
}

TEST(NoMemory, ASafeWriteLeavesTheOldOrTheNewFile) {
    for (const bool onwards : {false, true}) {
        for (long k = 0;; ++k) {
            const TemporaryFolder folder;
            const std::string path = folder / "file";
            test::putFile(path, "old");
            const std::vector<std::uint8_t> bytes = test::bytesOf("the new bytes");
            std::optional<Result<void>> result;
            const bool done = runsWithoutRequest(
                k, onwards, [&] { result = writeFileSafely(path, bytes, Overwrite::Allow); });
            const std::string now = fileText(path);
            ASSERT_TRUE(now == "old" || now == "the new bytes") << k << now;
            if (*result) {
                ASSERT_EQ(now, "the new bytes") << k;
            }
            removeLeftOvers(folder.path());
            ASSERT_EQ(folder.names().size(), 1U) << k;
            if (done) break;
            ASSERT_LT(k, 1000);
        }
    }
}

TEST(NoMemory, TheSettingsSurvive) {
    const std::string old = "{\"a\": 1, \"b\": 2, \"c\": 3}";
    for (const bool onwards : {false, true}) {
        for (long k = 0;; ++k) {
            const TemporaryFolder folder;
            const std::string path = folder / "settings.json";
            test::putFile(path, old);
            const bool done = runsWithoutRequest(k, onwards, [&] {
                try {
                    SettingsStore store(std::string(path.c_str()));
                    store.setFloat("a", 4);
                    store.removeObject("b");
                    static_cast<void>(store.synchronize());
                    static_cast<void>(store.reload());
                } catch (const std::bad_alloc&) {
                    // Only the argument's own copy may throw, before the store begins.
                    ASSERT_EQ(k, 0);
                }
            });
            const SettingsStore after(path);
            ASSERT_EQ(after.floatForKey("c"), 3.0F) << "nobody touched it, " << k;
            if (done) {
                ASSERT_EQ(after.floatForKey("a"), 4.0F);
                ASSERT_FALSE(after.contains("b"));
                break;
            }
            ASSERT_LT(k, 2000);
        }
    }
}

TEST(NoMemory, ReadingIsRefusedWithTheReason) {
    const TemporaryFolder folder;
    const std::string path = folder / "file";
    test::putFile(path, std::string(100'000, 'x'));
    for (long k = 0;; ++k) {
        std::optional<ErrorCode> code;
        const bool done = runsWithoutRequest(k, true, [&] {
            const auto bytes = readWholeFile(path, 1'000'000);
            if (!bytes) code = bytes.error().code;
        });
        if (done) break;
        ASSERT_EQ(code, ErrorCode::OutOfMemory) << k;
        ASSERT_LT(k, 100);
    }
}

TEST(NoMemory, ReadingWhatIsOpenIsRefusedWithTheReason) {
    const TemporaryFolder folder;
    test::putFile(folder / "file", std::string(100'000, 'x'));
    const int descriptor = ::open((folder / "file").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    for (long k = 0;; ++k) {
        ASSERT_EQ(::lseek(descriptor, 0, SEEK_SET), 0);
        std::optional<ErrorCode> code;
        const bool done = runsWithoutRequest(k, true, [&] {
            const auto bytes = readDescriptor(descriptor, 1'000'000);
            if (!bytes) code = bytes.error().code;
        });
        if (done) break;
        ASSERT_EQ(code, ErrorCode::OutOfMemory) << k;
        ASSERT_LT(k, 100);
    }
    ::close(descriptor);
}

}  // namespace
}  // namespace skarnel
