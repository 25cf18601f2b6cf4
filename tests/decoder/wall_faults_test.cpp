// What this side of the wall does where the system gives it nothing, or the helper's answer does
// not fit: a reason, or the picture by a longer way.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "decoder/opened_file.h"
#include "imaging/io/decoder_protocol.h"
#include "imaging/io/decoder_wall.h"
#include "imaging/io/pictures.h"
#include "imaging/io/read_file.h"
#include "imaging/io/row_ring.h"
#include "storage/temporary_folder.h"
#include "util/interruptions.h"
#include "util/limited_to.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;
using io::RecordKind;
using test::LimitedTo;

/// The records of an answer, one behind the other.
class AnswerBytes {
  public:
    AnswerBytes& record(RecordKind kind, std::size_t first, std::size_t second,
                        ByteView rest = {}) {
        const io::AnswerRecord head{kind, static_cast<std::uint32_t>(first),
                                    static_cast<std::uint32_t>(second)};
        const auto* bytes = reinterpret_cast<const char*>(&head);
        text_.append(bytes, sizeof head).append(rest.begin(), rest.end());
        return *this;
    }
    AnswerBytes& done() {
        const Bytes properties = io::packProperties(kUTTypePNG, {});
        return record(RecordKind::Done, properties.size(), 0, properties);
    }
    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

/// A helper that gives an answer which was written before; `before` is a line of shell.
class ReadyHelper {
  public:
    explicit ReadyHelper(const AnswerBytes& answer, const std::string& before = "") {
        test::putFile(folder_ / "answer", answer.text());
        std::ofstream(path()) << "#!/bin/sh\n"
                              << before << "\ncat " << folder_ / "answer"
                              << " >&4\n";
        ::chmod(path().c_str(), 0700);
    }
    std::string path() const { return folder_ / "helper"; }
    Result<DecodedImage> decoded() const {
        return io::decodeBehindWall(path(), memoryFile({}).number(), {});
    }

  private:
    const test::TemporaryFolder folder_;
};

const Bytes kOnePixel{10, 20, 30, 255};

AnswerBytes onePixel() {
    AnswerBytes answer;
    answer.record(RecordKind::Picture, 1, 1).record(RecordKind::Rows, 1, 0, kOnePixel).done();
    return answer;
}

TEST(WallFaults, AnAnswerIsReadWhateverProgramGivesIt) {
    const auto decoded = ReadyHelper(onePixel()).decoded();
    ASSERT_TRUE(decoded) << decoded.error().message;
    EXPECT_EQ(pixelsOf(decoded->image), (std::vector<Rgba>{{10, 20, 30, 255}}));
}

TEST(WallFaults, WaitingGoesOnAfterASignal) {
    const ReadyHelper helper(onePixel(), "sleep 0.1");
    const test::Interruptions interruptions;
    const auto decoded = helper.decoded();
    ASSERT_TRUE(decoded) << decoded.error().message;
    EXPECT_EQ(pixelsOf(decoded->image), (std::vector<Rgba>{{10, 20, 30, 255}}));
}

TEST(WallFaults, NoRowsComeOutOfARingThatHasNoRoomForThem) {
    // 280 KB a row; a record of the ring holds 256.
    AnswerBytes answer;
    answer.record(RecordKind::Picture, 70'000, 1).record(RecordKind::RingRows, 1, 0).done();
    const auto decoded = ReadyHelper(answer).decoded();
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error().code, ErrorCode::Damaged);
}

TEST(WallFaults, NoRowsComeOutOfARingThatIsNotThere) {
    AnswerBytes answer;
    answer.record(RecordKind::Picture, 1, 1).record(RecordKind::RingRows, 1, 0).done();
    const ReadyHelper helper(answer);
    EXPECT_TRUE(helper.decoded()) << "there is one as a rule";
    const io::FileDescriptor nothing = memoryFile({});
    const LimitedTo noFile(RLIMIT_FSIZE, 0);
    const auto decoded = io::decodeBehindWall(helper.path(), nothing.number(), {});
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error().code, ErrorCode::Damaged);
}

TEST(WallFaults, AFileOfOursThatCannotBeReadHasAReason) {
    const test::TemporaryFolder folder;
    const auto missing = decodeOwnImageFile(folder / "none");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, ErrorCode::NotFound);
    test::putFile(folder / "text", std::string(100, 'x'));
    const auto text = decodeOwnImageFile(folder / "text");
    ASSERT_FALSE(text);
    EXPECT_EQ(text.error().code, ErrorCode::UnknownFormat);
}

/// Where memory is short the helper is not waited for, and its answer is the reason all the same.
TEST(WallFaults, ThatTheHelperHasNoMemoryIsPassedOn) {
    AnswerBytes answer;
    answer.record(RecordKind::Failed, 3, static_cast<std::size_t>(ErrorCode::OutOfMemory),
                  Bytes{'w', 'h', 'y'});
    const auto decoded = ReadyHelper(answer).decoded();
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error().code, ErrorCode::OutOfMemory);
    EXPECT_EQ(decoded.error().message, "why");
}

/// The real helper, whose cell no sanitizer's run-time can live in.
class WallFaultsOfHelper : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    }
    const CGImage image_ = randomValidPicture(61, 47, 3);
    const Bytes png_ = *encodeImage(image_, kUTTypePNG);
    const io::FileDescriptor file_ = memoryFile(png_);
};

TEST_F(WallFaultsOfHelper, APictureComesWithoutTheRing) {
    const LimitedTo noFile(RLIMIT_FSIZE, 0);
    EXPECT_FALSE(io::makeRingFile());
    const auto decoded = io::decodeBehindWall(DECODER_PROGRAM, file_.number(), {});
    ASSERT_TRUE(decoded) << decoded.error().message;
    EXPECT_TRUE(samePixels(decoded->image, image_));
}

TEST_F(WallFaultsOfHelper, WithoutDescriptorsThereIsAReason) {
    const rlim_t used = test::descriptorsInUse();
    for (rlim_t limit = used; limit < used + 30; ++limit) {
        const LimitedTo few(RLIMIT_NOFILE, limit);
        const auto decoded = io::decodeBehindWall(DECODER_PROGRAM, file_.number(), {});
        if (limit < used + 2) {  // the pipe's two ends
            ASSERT_FALSE(decoded) << limit;
            EXPECT_EQ(decoded.error().message, "The decoder: Too many open files") << limit;
        } else if (decoded) {
            EXPECT_TRUE(samePixels(decoded->image, image_)) << limit;
        } else {
            EXPECT_FALSE(decoded.error().message.empty()) << limit;
        }
    }
    EXPECT_TRUE(io::decodeBehindWall(DECODER_PROGRAM, file_.number(), {}));
}

TEST_F(WallFaultsOfHelper, BytesThatCannotBeHandedOverHaveAReason) {
    {
        const LimitedTo none(RLIMIT_NOFILE, test::descriptorsInUse());
        const auto decoded = decodeForeignImage(png_);
        ASSERT_FALSE(decoded);
        EXPECT_EQ(decoded.error().message, "The decoder: Too many open files");
    }
    {
        const LimitedTo short_(RLIMIT_FSIZE, png_.size() - 1);
        const auto decoded = decodeForeignImage(png_);
        ASSERT_FALSE(decoded);
        EXPECT_EQ(decoded.error().message,
                  "The picture cannot be handed to the decoder: File too large");
    }
    EXPECT_TRUE(decodeForeignImage(png_));
}

}  // namespace
}  // namespace skarnel
