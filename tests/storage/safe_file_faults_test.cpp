// Every system call of a safe write fails once, and from then on, with every error that it may
// meet. The file is always the old one or the new one, nothing is left over after a cleaning, and
// a failure has its cause.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "storage/every_fault.h"
#include "storage/fake_file_systems.h"
#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/temporary_folder.h"
#include "util/log/system_error.h"

namespace skarnel {
namespace {

using test::Fault;
using test::FaultyFileSystem;
using test::fileText;
using test::Repeat;
using test::TemporaryFolder;

const std::string kOld(5000, 'o');
const std::string kNew(9000, 'n');

enum class Before { Absent, Present, BehindALink };

/// What is written where, and what the file system lacks.
struct Scene {
    Before before;
    Overwrite overwrite;
    std::map<std::string, int> lacking = {};
};

const std::map<std::string, int> kNoExclusiveRename = {{"renameNoReplace", EINVAL}};
const std::map<std::string, int> kNoLinksEither = {{"renameNoReplace", EINVAL}, {"link", EPERM}};
const std::map<std::string, int> kNoLocksOrModes = {{"flock", ENOLCK}, {"fchmod", EPERM}};

/// A folder before the write.
class Scenery {
  public:
    explicit Scenery(Before before) : before_(before) {
        if (before != Before::Absent) test::putFile(target(), kOld);
        if (before == Before::BehindALink) std::filesystem::create_symlink("target", path());
        names_ = folder_.names();
    }
    std::string path() const { return folder_ / "file"; }
    std::string target() const { return folder_ / (isLinked() ? "target" : "file"); }
    std::string old() const { return before_ == Before::Absent ? "(none)" : kOld; }
    /// Nothing is there but what was there and, once it is written, the file.
    void expectNothingElse() const {
        removeLeftOvers(folder_.path());
        auto expected = names_;
        if (before_ == Before::Absent && fileText(path()) != "(none)") expected = {"file"};
        EXPECT_EQ(folder_.names(), expected);
        EXPECT_EQ(std::filesystem::is_symlink(path()), isLinked());
    }

  private:
    bool isLinked() const { return before_ == Before::BehindALink; }
    const TemporaryFolder folder_;
    Before before_;
    std::vector<std::string> names_;
};

/// The number of system calls that a write makes when nothing fails.
int callsOfAWrite(const Scene& scene) {
    return test::callsOf(
        [&](FileSystem& healthy) {
            const Scenery scenery(scene.before);
            EXPECT_TRUE(
                writeFileSafely(scenery.path(), test::bytesOf(kNew), scene.overwrite, healthy));
        },
        scene.lacking);
}

/// What a failure by this fault is to say.
std::string causeOf(const Fault& fault) {
    return describeError(fault.error > 0 ? fault.error : ENOSPC);
}

void expectOldOrNew(const Scene& scene, const Fault& fault) {
    const Scenery scenery(scene.before);
    FaultyFileSystem faulty(fault.call, fault.error, fault.repeat, scene.lacking);
    const Result<void> result =
        writeFileSafely(scenery.path(), test::bytesOf(kNew), scene.overwrite, faulty);
    const std::string now = fileText(scenery.target());
    if (result) {
        EXPECT_EQ(now, kNew);
    } else {
        const std::string& message = result.error().message;
        EXPECT_THAT(message, testing::HasSubstr(causeOf(fault)));
        EXPECT_NE(fault.error, test::kShortWrite) << "the rest can be written";
        const bool written = message.starts_with("The file was written, but");
        EXPECT_EQ(now, written ? kNew : scenery.old());
        EXPECT_EQ(result.error().code, ErrorCode::CannotWrite) << message;
    }
    scenery.expectNothingElse();
}

void failEveryCall(const Scene& scene) {
    const int calls = callsOfAWrite(scene);
    ASSERT_GE(calls, 12);
    test::forEachFault(calls, [&](const Fault& fault) { expectOldOrNew(scene, fault); });
}

TEST(WriteFileSafelyFaults, ReplacingAFileSurvivesEveryFailingCall) {
    failEveryCall({Before::Present, Overwrite::Allow});
}

TEST(WriteFileSafelyFaults, ReplacingWhatALinkLeadsToSurvivesEveryFailingCall) {
    failEveryCall({Before::BehindALink, Overwrite::Allow});
}

TEST(WriteFileSafelyFaults, MakingAFileSurvivesEveryFailingCall) {
    failEveryCall({Before::Absent, Overwrite::Refuse});
}

TEST(WriteFileSafelyFaults, MakingAFileThatMayBeReplacedSurvivesEveryFailingCall) {
    failEveryCall({Before::Absent, Overwrite::Allow});
}

TEST(WriteFileSafelyFaults, MakingAFileByASecondLinkSurvivesEveryFailingCall) {
    failEveryCall({Before::Absent, Overwrite::Refuse, kNoExclusiveRename});
}

TEST(WriteFileSafelyFaults, MakingAFileWithoutLinksSurvivesEveryFailingCall) {
    failEveryCall({Before::Absent, Overwrite::Refuse, kNoLinksEither});
}

TEST(WriteFileSafelyFaults, ReplacingAFileWithoutLocksOrModesSurvivesEveryFailingCall) {
    failEveryCall({Before::Present, Overwrite::Allow, kNoLocksOrModes});
}

TEST(WriteFileSafelyFaults, WhichLooksFailAFileThatMayNotBeReplacedStays) {
    for (const auto& lacking : {std::map<std::string, int>(), kNoExclusiveRename, kNoLinksEither}) {
        // As many calls as a write makes that goes through, since a failing look may let it begin.
        const int calls = callsOfAWrite({Before::Absent, Overwrite::Refuse, lacking});
        test::forEachFault(calls, [&](const Fault& fault) {
            const Scenery scenery(Before::Present);
            FaultyFileSystem faulty(fault.call, fault.error, fault.repeat, lacking);
            EXPECT_FALSE(
                writeFileSafely(scenery.path(), test::bytesOf(kNew), Overwrite::Refuse, faulty));
            EXPECT_EQ(fileText(scenery.path()), kOld);
            scenery.expectNothingElse();
        });
    }
}

/// The pipe's reader holds it open, and what was written waits in it.
class Pipe {
  public:
    Pipe() {
        EXPECT_EQ(::mkfifo(path().c_str(), 0600), 0);
        reader_ = ::open(path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        EXPECT_GE(reader_, 0);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() { ::close(reader_); }
    std::string path() const { return folder / "pipe"; }
    std::string received() const {
        std::string text(2 * kNew.size(), '\0');
        const ssize_t count = ::read(reader_, text.data(), text.size());
        text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return text;
    }
    const TemporaryFolder folder;

  private:
    int reader_ = -1;
};

/// What went into a stream cannot be taken back: it is a beginning of the bytes, and success means
/// all of them.
void expectABeginning(const Result<void>& result, const std::string& received, const Fault& fault) {
    if (result) {
        EXPECT_EQ(received, kNew);
        return;
    }
    EXPECT_EQ(result.error().message, causeOf(fault));
    EXPECT_NE(fault.error, test::kShortWrite) << "the rest can be written";
    EXPECT_EQ(received, kNew.substr(0, received.size()));
}

TEST(WriteFileSafelyFaults, APipeGetsABeginningOrAllWhicheverCallFails) {
    const int calls = test::callsOf([](FileSystem& healthy) {
        const Pipe pipe;
        EXPECT_TRUE(writeFileSafely(pipe.path(), test::bytesOf(kNew), Overwrite::Allow, healthy));
    });
    ASSERT_EQ(calls, 5);  // look, open, wait, write, close
    test::forEachFault(calls, [](const Fault& fault) {
        const Pipe pipe;
        FaultyFileSystem faulty(fault.call, fault.error, fault.repeat);
        const auto result =
            writeFileSafely(pipe.path(), test::bytesOf(kNew), Overwrite::Allow, faulty);
        expectABeginning(result, pipe.received(), fault);
        EXPECT_TRUE(std::filesystem::is_fifo(pipe.path()));
        EXPECT_EQ(pipe.folder.names().size(), 1U);
    });
}

TEST(WriteDescriptorFaults, AnOpenStreamGetsABeginningOrAllWhicheverWriteFails) {
    constexpr int kWrites = 13;  // of 700 bytes
    test::forEachFault(kWrites, [](const Fault& fault) {
        const Pipe pipe;
        const int descriptor = ::open(pipe.path().c_str(), O_WRONLY | O_CLOEXEC);
        ASSERT_GE(descriptor, 0);
        // Takes 700 bytes at a time, so that there is a middle.
        class Narrow final : public test::InterceptedFileSystem {
          public:
            explicit Narrow(FaultyFileSystem& faulty) : faulty_(faulty) {}
            ssize_t write(int to, const void* bytes, std::size_t count) override {
                return faulty_.write(to, bytes, std::min<std::size_t>(count, 700));
            }

          private:
            int before(const std::string&, const std::string&) override { return 0; }
            FaultyFileSystem& faulty_;
        };
        FaultyFileSystem faulty(fault.call, fault.error, fault.repeat);
        Narrow narrow(faulty);
        const auto result = writeDescriptor(descriptor, test::bytesOf(kNew), narrow);
        ::close(descriptor);
        expectABeginning(result, pipe.received(), fault);
    });
}

TEST(WriteFileSafelyFaults, AnInterruptedCallIsRepeatedAndTheWriteSucceeds) {
    const int calls = callsOfAWrite({Before::Present, Overwrite::Allow});
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
