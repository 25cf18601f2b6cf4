// Safe writes on file systems that lack something, answer oddly, or change meanwhile.
#include <gmock/gmock.h>

#include <optional>

#include "storage/fake_file_systems.h"
#include "storage/safe_file.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::bytesOf;
using test::fileText;
using test::putFile;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The code of a failure, or nothing when it went well.
std::optional<ErrorCode> codeOf(const Result<void>& result) {
    return result ? std::nullopt : std::optional<ErrorCode>(result.error().code);
}

TEST(WriteFileSafely, GoesOnAfterShortWrites) {
    const TemporaryFolder folder;
    test::ShortWritingFileSystem fileSystem(3);
    ASSERT_TRUE(
        writeFileSafely(folder / "new", bytesOf("0123456789"), Overwrite::Refuse, fileSystem));
    EXPECT_EQ(fileText(folder / "new"), "0123456789");
    EXPECT_EQ(fileSystem.writes(), 4);  // 3 + 3 + 3 + 1
}

TEST(WriteFileSafely, GivesUpWhenWritesMakeNoProgress) {
    const TemporaryFolder folder;
    test::ShortWritingFileSystem fileSystem(0);
    const Result<void> stuck =
        writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem);
    ASSERT_FALSE(stuck);
    EXPECT_EQ(stuck.error().message, "Nothing more could be written");
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(WriteFileSafely, WithoutAnExclusiveRenameASecondLinkDoesTheSame) {
    const TemporaryFolder folder;
    test::RefusingFileSystem fileSystem({{"renameNoReplace", EINVAL}});
    ASSERT_TRUE(writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem));
    EXPECT_EQ(fileText(folder / "new"), "x");
    EXPECT_THAT(folder.names(), ElementsAre("new"));
    EXPECT_EQ(fileSystem.count("link"), 1);
}

TEST(WriteFileSafely, WithoutLinksEitherItLooksFirst) {
    const TemporaryFolder folder;
    test::RefusingFileSystem fileSystem({{"renameNoReplace", ENOSYS}, {"link", EPERM}});
    ASSERT_TRUE(writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem));
    EXPECT_EQ(fileText(folder / "new"), "x");
    EXPECT_EQ(codeOf(writeFileSafely(folder / "new", bytesOf("y"), Overwrite::Refuse, fileSystem)),
              ErrorCode::AlreadyExists);
    EXPECT_THAT(folder.names(), ElementsAre("new"));
}

TEST(WriteFileSafely, WithoutLinksEitherAFileThatCameMeanwhileIsNotReplaced) {
    for (const int error : {EPERM, EOPNOTSUPP}) {
        class LateComer final : public test::InterceptedFileSystem {
          public:
            LateComer(std::string path, int error) : path_(std::move(path)), error_(error) {}

          private:
            int before(const std::string& call, const std::string&) override {
                if (call == "renameNoReplace") putFile(path_, "theirs");
                if (call == "link") return -error_;
                return call == "renameNoReplace" ? -EINVAL : 0;
            }
            std::string path_;
            int error_;
        };
        const TemporaryFolder folder;
        LateComer fileSystem(folder / "name", error);
        const Result<void> refused =
            writeFileSafely(folder / "name", bytesOf("ours"), Overwrite::Refuse, fileSystem);
        EXPECT_EQ(codeOf(refused), ErrorCode::AlreadyExists);
        EXPECT_EQ(fileText(folder / "name"), "theirs");
        EXPECT_THAT(folder.names(), ElementsAre("name"));
    }
}

TEST(WriteFileSafely, WithoutLinksEitherAFailingLookReplacesNothing) {
    class Blind final : public test::InterceptedFileSystem {
      public:
        explicit Blind(std::string path) : path_(std::move(path)) {}

      private:
        int before(const std::string& call, const std::string&) override {
            if (call == "renameNoReplace") {
                putFile(path_, "theirs");
                hasArrived_ = true;
                return -EINVAL;
            }
            if (call == "link") return -EPERM;
            return call == "lstat" && hasArrived_ ? -EIO : 0;
        }
        std::string path_;
        bool hasArrived_ = false;
    };
    const TemporaryFolder folder;
    Blind fileSystem(folder / "name");
    const Result<void> refused =
        writeFileSafely(folder / "name", bytesOf("ours"), Overwrite::Refuse, fileSystem);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "Input/output error");
    EXPECT_EQ(fileText(folder / "name"), "theirs");
    EXPECT_THAT(folder.names(), ElementsAre("name"));
}

TEST(WriteFileSafely, ASecondLinkThatFailsIsAFailureWithItsCause) {
    const TemporaryFolder folder;
    test::RefusingFileSystem broken({{"renameNoReplace", EINVAL}, {"link", EIO}});
    const Result<void> failed =
        writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, broken);
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().message, "Input/output error");
    test::RefusingFileSystem taken({{"renameNoReplace", EINVAL}, {"link", EEXIST}});
    EXPECT_EQ(codeOf(writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, taken)),
              ErrorCode::AlreadyExists);
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(WriteFileSafely, WhereReplacingIsAllowedAnExistingFileIsNoReasonOfOurs) {
    const TemporaryFolder folder;
    putFile(folder / "old", "old");
    test::RefusingFileSystem odd({{"rename", EEXIST}});
    const Result<void> failed =
        writeFileSafely(folder / "old", bytesOf("x"), Overwrite::Allow, odd);
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().code, ErrorCode::CannotWrite);
    EXPECT_EQ(failed.error().message, "File exists");
    EXPECT_EQ(fileText(folder / "old"), "old");
}

TEST(WriteFileSafely, FileSystemsWithoutLocksModesOrFolderFlushesAreServed) {
    const TemporaryFolder folder;
    for (const int error : {ENOLCK, ENOSYS, EINVAL, EOPNOTSUPP}) {
        test::RefusingFileSystem noLocks({{"flock", error}});
        EXPECT_TRUE(writeFileSafely(folder / "a", bytesOf("a"), Overwrite::Allow, noLocks));
    }
    putFile(folder / "b", "old");
    for (const int error : {EPERM, EOPNOTSUPP}) {
        test::RefusingFileSystem noModes({{"fchmod", error}});
        EXPECT_TRUE(writeFileSafely(folder / "b", bytesOf("b"), Overwrite::Allow, noModes));
    }
    class NoFolderFlush final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string&) override {
            return call == "fsync" && ++flushes_ == 2 ? -EINVAL : 0;
        }
        int flushes_ = 0;
    } noFlush;
    EXPECT_TRUE(writeFileSafely(folder / "c", bytesOf("c"), Overwrite::Refuse, noFlush));
    EXPECT_THAT(folder.names(), ElementsAre("a", "b", "c"));
}

TEST(WriteFileSafely, ACleanerThatIsQuickerThanOurLockCostsOnlyAnotherName) {
    // The cleaner takes the fresh file away just before we lock it.
    class QuickCleaner final : public test::InterceptedFileSystem {
      public:
        int opens = 0;

      private:
        int before(const std::string& call, const std::string& path) override {
            if (call == "open") {
                opens += path.ends_with(".part") ? 1 : 0;
                last_ = path;
            }
            if (call == "flock" && opens == 1) real_.unlink(last_.c_str());
            return 0;
        }
        std::string last_;
    } fileSystem;
    const TemporaryFolder folder;
    ASSERT_TRUE(writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem));
    EXPECT_EQ(fileSystem.opens, 2);
    EXPECT_THAT(folder.names(), ElementsAre("new"));
}

TEST(WriteFileSafely, TakenTemporaryNamesAreTriedEightTimes) {
    class AlwaysTaken final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string& path) override {
            return call == "open" && path.ends_with(".part") ? -EEXIST : 0;
        }
    } fileSystem;
    const TemporaryFolder folder;
    const Result<void> refused =
        writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "No free name for a temporary file");
}

TEST(WriteFileSafely, AFileThatIsShorterThanWhatWasWrittenIsAFailure) {
    class Shrinking final : public test::InterceptedFileSystem {
        int before(const std::string&, const std::string&) override { return 0; }
        int fstat(int descriptor, struct stat& status) override {
            const int result = real_.fstat(descriptor, status);
            if (status.st_size > 0) --status.st_size;
            return result;
        }
    } fileSystem;
    const TemporaryFolder folder;
    const Result<void> refused =
        writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "The file does not have the size that was written");
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(WriteFileSafely, AFlushOfTheFolderThatFailsIsSaid) {
    class FailingFolder final : public test::InterceptedFileSystem {
        int before(const std::string& call, const std::string&) override {
            return call == "fsync" && ++flushes_ == 2 ? -EIO : 0;
        }
        int flushes_ = 0;
    } fileSystem;
    const TemporaryFolder folder;
    const Result<void> result =
        writeFileSafely(folder / "new", bytesOf("x"), Overwrite::Refuse, fileSystem);
    ASSERT_FALSE(result);
    EXPECT_THAT(result.error().message, HasSubstr("folder could not be flushed"));
    EXPECT_THAT(result.error().message, HasSubstr("Input/output error"));
    EXPECT_EQ(fileText(folder / "new"), "x");
}

}  // namespace
}  // namespace skarnel
