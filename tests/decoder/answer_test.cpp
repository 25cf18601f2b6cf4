// What the helper answers, here without its cell and into a file in memory in place of its pipe.
#include "decoder/answer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>
#include <vector>

#include "imaging/io/decoder_protocol.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"
#include "imaging/io/row_ring.h"
#include "util/interruptions.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;
using io::RecordKind;

constexpr std::size_t kRecord = sizeof(io::AnswerRecord);

/// An answer that has been written as a whole.
class WrittenAnswer : public io::AnswerSource {
  public:
    WrittenAnswer(Bytes bytes, io::RowRing* ring) : bytes_(std::move(bytes)), ring_(ring) {}
    bool read(void* target, std::size_t size) override {
        if (size > bytes_.size() - at_) return false;
        if (size > 0) std::memcpy(target, bytes_.data() + at_, size);
        at_ += size;
        return true;
    }
    bool readFromRing(void* target, std::size_t size) override {
        if (ring_ == nullptr) return false;
        ring_->take(target, size);
        return true;
    }
    bool isAtEnd() override { return at_ == bytes_.size(); }

  private:
    Bytes bytes_;
    io::RowRing* ring_;
    std::size_t at_ = 0;
};

/// The kinds of the records of an answer, and how many bytes lie between them.
std::vector<RecordKind> kindsIn(const Bytes& answer) {
    std::vector<RecordKind> kinds;
    std::size_t width = 0;
    for (std::size_t at = 0; at + kRecord <= answer.size();) {
        io::AnswerRecord record;
        std::memcpy(&record, answer.data() + at, kRecord);
        kinds.push_back(record.kind);
        at += kRecord;
        if (record.kind == RecordKind::Picture) width = record.first;
        if (record.kind == RecordKind::Rows) at += 4 * width * record.first;
        if (record.kind == RecordKind::Done || record.kind == RecordKind::Failed)
            at += record.first;
    }
    return kinds;
}

/// Puts a descriptor in the place of the answer's, and afterwards back what was there.
class HelperAnswer : public ::testing::Test {
  protected:
    HelperAnswer() : before_(::fcntl(io::kAnswerDescriptor, F_DUPFD_CLOEXEC, 64)) { answerInto(); }
    ~HelperAnswer() override {
        ::close(io::kAnswerDescriptor);
        if (before_ < 0) return;
        ::dup2(before_, io::kAnswerDescriptor);
        ::close(before_);
    }

    /// An empty file in memory, into which no more than `room` bytes go.
    static void answerInto(std::size_t room = SIZE_MAX) {
        const int file = ::memfd_create("answer", MFD_ALLOW_SEALING);
        ASSERT_GE(file, 0);
        if (room != SIZE_MAX) {
            ASSERT_EQ(::ftruncate(file, static_cast<off_t>(room)), 0);
            ASSERT_EQ(::fcntl(file, F_ADD_SEALS, F_SEAL_GROW), 0);
        }
        putInPlace(file);
    }
    static void putInPlace(int descriptor) {
        if (descriptor == io::kAnswerDescriptor) return;
        ASSERT_EQ(::dup2(descriptor, io::kAnswerDescriptor), io::kAnswerDescriptor);
        ::close(descriptor);
    }
    static Bytes answered() {
        Bytes bytes(static_cast<std::size_t>(::lseek(io::kAnswerDescriptor, 0, SEEK_END)));
        EXPECT_EQ(::pread(io::kAnswerDescriptor, bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
        return bytes;
    }
    static Result<DecodedImage> received(io::RowRing* ring = nullptr) {
        WrittenAnswer source(answered(), ring);
        auto image = io::receiveAnswer(source, {});
        EXPECT_TRUE(source.isAtEnd());
        return image;
    }

  private:
    int before_;  // -1 where there was nothing
};

/// A ring with both of its ends in this process; it holds four records before it is taken from.
struct Ring {
    const std::optional<io::FileDescriptor> file = io::makeRingFile();
    std::optional<io::RowRing> filling = io::RowRing::map(file ? file->number() : -1);
    std::optional<io::RowRing> taking = io::RowRing::map(file ? file->number() : -1);
    bool isThere() const { return filling && taking; }
};

TEST_F(HelperAnswer, IsThePictureWithItsRowsWhereThereIsNoRing) {
    const CGImage image = randomValidPicture(61, 47, 5);
    ASSERT_TRUE(decodeIntoAnswer(*encodeImage(image, kUTTypePNG), {}, nullptr));
    EXPECT_EQ(kindsIn(answered()),
              (std::vector{RecordKind::Picture, RecordKind::Rows, RecordKind::Done}));
    const auto picture = received();
    ASSERT_TRUE(picture);
    EXPECT_TRUE(samePixels(picture->image, image));
    EXPECT_EQ(picture->type, kUTTypePNG);
}

TEST_F(HelperAnswer, LeavesTheRowsInTheRingWhereThereIsOne) {
    const CGImage image = randomValidPicture(61, 47, 5);
    Ring ring;
    ASSERT_TRUE(ring.isThere());
    ASSERT_TRUE(decodeIntoAnswer(*encodeImage(image, kUTTypePNG), {}, &*ring.filling));
    EXPECT_EQ(kindsIn(answered()),
              (std::vector{RecordKind::Picture, RecordKind::RingRows, RecordKind::Done}));
    const auto picture = received(&*ring.taking);
    ASSERT_TRUE(picture);
    EXPECT_TRUE(samePixels(picture->image, image));
}

/// Such a picture is not decoded into the ring: its rows are copied there.
TEST_F(HelperAnswer, CopiesThePictureThatHadToBeTurnedIntoTheRing) {
    Ring ring;
    ASSERT_TRUE(ring.isThere());
    ByteSink facts(true);
    facts.text("MM").u16(42).u32(8).u16(1).u16(0x0112).u16(3).u32(1).u16(6).u16(0).u32(0);
    const Bytes png = buildPng(2, 1, 8, 2, {200, 100, 50, 10, 20, 30}, {{"eXIf", facts.bytes}});
    ASSERT_TRUE(decodeIntoAnswer(png, {}, &*ring.filling));
    const auto picture = received(&*ring.taking);
    ASSERT_TRUE(picture);
    // A quarter turn clockwise: the left pixel stands above the right one.
    EXPECT_EQ(pixelsOf(picture->image),
              (std::vector<Rgba>{{200, 100, 50, 255}, {10, 20, 30, 255}}));
}

TEST_F(HelperAnswer, SendsRowsThatDoNotFitTheRingThroughThePipe) {
    // 280 KB a row, of which the ring holds 256.
    const Bytes bmp = *encodeImage(randomValidPicture(70'000, 2, 5), kUTTypeBMP);
    Ring ring;
    ASSERT_TRUE(ring.isThere());
    ASSERT_TRUE(decodeIntoAnswer(bmp, {}, &*ring.filling));
    EXPECT_EQ(kindsIn(answered()), (std::vector{RecordKind::Picture, RecordKind::Rows,
                                                RecordKind::Rows, RecordKind::Done}));
    const auto picture = received(&*ring.taking);
    ASSERT_TRUE(picture);
    EXPECT_TRUE(samePixels(picture->image, decodeImage(bmp)->image));
}

TEST_F(HelperAnswer, IsTheReasonWhereverThePictureEnds) {
    Bytes badRows = buildPng(2, 1, 8, 2, {200, 100, 50, 10, 20, 30});
    Bytes badEnd = badRows;
    badEnd.back() ^= 1;  // the check of the last chunk
    // Before that chunk of 12 bytes the check of the pixels' chunk, and before that theirs.
    for (std::size_t back = 13; back <= 20; ++back) badRows[badRows.size() - back] ^= 0x55;
    const struct {
        const char* name;
        Bytes file;
        std::vector<RecordKind> kinds;
    } rows[] = {
        {"no picture", {'t', 'e', 'x', 't'}, {RecordKind::Failed}},
        {"in the rows", badRows, {RecordKind::Picture, RecordKind::Failed}},
        {"behind them", badEnd, {RecordKind::Picture, RecordKind::Rows, RecordKind::Failed}},
    };
    for (const auto& row : rows) {
        answerInto();
        ASSERT_TRUE(decodeIntoAnswer(row.file, {}, nullptr)) << row.name;
        EXPECT_EQ(kindsIn(answered()), row.kinds) << row.name;
        const auto picture = received();
        const auto here = decodeImage(row.file);
        ASSERT_TRUE(!picture && !here) << row.name;
        EXPECT_EQ(picture.error().code, here.error().code) << row.name;
        EXPECT_EQ(picture.error().message, here.error().message) << row.name;
    }
}

TEST_F(HelperAnswer, IsNoPictureWhereMemoryWasRefused) {
    const Bytes png = *encodeImage(randomValidPicture(5, 3, 5), kUTTypePNG);
    answerInto();
    ASSERT_TRUE(decodeIntoAnswer(png, {}, nullptr, [] { return true; }));
    EXPECT_EQ(kindsIn(answered()),
              (std::vector{RecordKind::Picture, RecordKind::Rows, RecordKind::Failed}));
    const auto none = received();
    ASSERT_FALSE(none);
    EXPECT_EQ(none.error().code, ErrorCode::OutOfMemory);
    answerInto();
    ASSERT_TRUE(decodeIntoAnswer(png, {}, nullptr, [] { return false; }));
    EXPECT_TRUE(received());
}

TEST_F(HelperAnswer, EndsWhereverNobodyTakesItAnyMore) {
    const Bytes png = *encodeImage(randomValidPicture(5, 3, 5), kUTTypePNG);
    ASSERT_TRUE(decodeIntoAnswer(png, {}, nullptr));
    const std::size_t whole = answered().size();
    for (std::size_t room = 0; room <= whole; ++room) {
        answerInto(room);
        EXPECT_EQ(decodeIntoAnswer(png, {}, nullptr), room == whole) << room;
    }
    Ring ring;
    ASSERT_TRUE(ring.isThere());
    answerInto(kRecord);
    EXPECT_FALSE(decodeIntoAnswer(png, {}, &*ring.filling)) << "behind the picture's size";
    answerInto(kRecord);
    EXPECT_FALSE(sendError({ErrorCode::Damaged, "why"}));
    answerInto(kRecord);
    EXPECT_FALSE(sendEncoded(png));
}

/// All bytes up to the pipe's end.
Bytes allOf(int pipe) {
    Bytes all;
    std::array<std::uint8_t, 65536> some;
    for (;;) {
        const ssize_t count = ::read(pipe, some.data(), some.size());
        if (count <= 0) return all;
        all.insert(all.end(), some.begin(), some.begin() + count);
    }
}

TEST_F(HelperAnswer, GoesOnAfterAnInterruption) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    putInPlace(ends[1]);
    const Bytes file(1'000'000, 7);  // more than a pipe takes: the writing waits
    Bytes answer;
    {
        const test::Interruptions interruptions;
        std::thread reader = test::uninterruptedThread([&] {
            test::Interruptions::await(20);
            answer = allOf(ends[0]);
        });
        EXPECT_TRUE(sendEncoded(file));
        answerInto();  // which ends the pipe
        reader.join();
    }
    ::close(ends[0]);
    ASSERT_EQ(answer.size(), kRecord + file.size());
    EXPECT_TRUE(std::equal(file.begin(), file.end(), answer.begin() + kRecord));
}

}  // namespace
}  // namespace skarnel
