// Every system call of a safe write fails once, and from then on, with every error that it may
// meet. The file is always the old one or the new one, nothing is left over after a cleaning, and
// a failure has its cause.
#include <gmock/gmock.h>

#include <cerrno>

#include "storage/fake_file_systems.h"
#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/temporary_folder.h"
#include "util/log/system_error.h"

namespace skarnel {
namespace {

using test::FaultyFileSystem;
using test::fileText;
using test::Repeat;
using test::TemporaryFolder;

const std::string kOld(5000, 'o');
const std::string kNew(9000, 'n');

enum class Before { Absent, Present };

struct Fault {
    int call;
    int error;
    Repeat repeat;
};

/// The number of system calls that a write makes when nothing fails.
int callsOfAWrite(Before before, Overwrite overwrite) {
    const TemporaryFolder folder;
    if (before == Before::Present) test::putFile(folder / "file", kOld);
    FaultyFileSystem healthy(-1, 0, Repeat::Once);
    EXPECT_TRUE(writeFileSafely(folder / "file", test::bytesOf(kNew), overwrite, healthy));
    return static_cast<int>(healthy.calls().size());
}

void expectOldOrNew(Before before, Overwrite overwrite, const Fault& fault) {
    const TemporaryFolder folder;
    const std::string path = folder / "file";
    if (before == Before::Present) test::putFile(path, kOld);
    FaultyFileSystem faulty(fault.call, fault.error, fault.repeat);
    const Result<void> result = writeFileSafely(path, test::bytesOf(kNew), overwrite, faulty);

    const std::string old = before == Before::Present ? kOld : "(none)";
    const std::string now = fileText(path);
    if (result) {
        EXPECT_EQ(now, kNew);
    } else {
        EXPECT_FALSE(result.error().message.empty());
        const bool written = result.error().message.starts_with("The file was written, but");
        EXPECT_EQ(now, written ? kNew : old);
        EXPECT_EQ(result.error().code, ErrorCode::CannotWrite) << result.error().message;
    }
    removeLeftOvers(folder.path());
    EXPECT_EQ(folder.names().size(), now == "(none)" ? 0U : 1U) << folder.names().front();
}

void failEveryCall(Before before, Overwrite overwrite) {
    const int calls = callsOfAWrite(before, overwrite);
    ASSERT_GE(calls, 12);
    for (const int error : {ENOSPC, EIO, EDQUOT, EACCES, EINTR, EROFS}) {
        for (const Repeat repeat : {Repeat::Once, Repeat::FromThenOn}) {
            for (int call = 0; call < calls; ++call) {
                SCOPED_TRACE("call " + std::to_string(call) + ", " + describeError(error) +
                             (repeat == Repeat::Once ? ", once" : ", from then on"));
                expectOldOrNew(before, overwrite, {call, error, repeat});
            }
        }
    }
}

TEST(WriteFileSafelyFaults, ReplacingAFileSurvivesEveryFailingCall) {
    failEveryCall(Before::Present, Overwrite::Allow);
}

TEST(WriteFileSafelyFaults, MakingAFileSurvivesEveryFailingCall) {
    failEveryCall(Before::Absent, Overwrite::Refuse);
}

TEST(WriteFileSafelyFaults, MakingAFileThatMayBeReplacedSurvivesEveryFailingCall) {
    failEveryCall(Before::Absent, Overwrite::Allow);
}

TEST(WriteFileSafelyFaults, AnInterruptedCallIsRepeatedAndTheWriteSucceeds) {
    const int calls = callsOfAWrite(Before::Present, Overwrite::Allow);
    const TemporaryFolder folder;
    FaultyFileSystem healthy(-1, 0, Repeat::Once);
    test::putFile(folder / "file", kOld);
    ASSERT_TRUE(writeFileSafely(folder / "file", test::bytesOf(kNew), Overwrite::Allow, healthy));
    int repeated = 0;
    for (int call = 0; call < calls; ++call) {
        const std::string& name = healthy.calls()[static_cast<std::size_t>(call)];
        if (name != "open" && name != "write" && name != "fsync" && name != "flock") continue;
        SCOPED_TRACE(name);
        const TemporaryFolder fresh;
        test::putFile(fresh / "file", kOld);
        FaultyFileSystem faulty(call, EINTR, Repeat::Once);
        EXPECT_TRUE(writeFileSafely(fresh / "file", test::bytesOf(kNew), Overwrite::Allow, faulty));
        EXPECT_EQ(fileText(fresh / "file"), kNew);
        ++repeated;
    }
    EXPECT_GE(repeated, 6);  // the file, its lock, its bytes, its flush; the folder and its flush
}

TEST(WriteFileSafelyFaults, TheCauseOfAFullDiskIsTheMessage) {
    const TemporaryFolder folder;
    test::RefusingFileSystem full({{"write", ENOSPC}});
    const Result<void> result =
        writeFileSafely(folder / "file", test::bytesOf(kNew), Overwrite::Allow, full);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().message, "No space left on device");
    test::RefusingFileSystem quota({{"fsync", EDQUOT}});
    const Result<void> over =
        writeFileSafely(folder / "file", test::bytesOf(kNew), Overwrite::Allow, quota);
    ASSERT_FALSE(over);
    EXPECT_EQ(over.error().message, "Disk quota exceeded");
}

}  // namespace
}  // namespace skarnel
