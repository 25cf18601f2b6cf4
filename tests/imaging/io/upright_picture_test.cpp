// Pictures row by row, as the decoder's helper sends them.
#include "imaging/io/upright_picture.h"

#include <gtest/gtest.h>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

/// Hands out rows of one colour each and fails where it is told to.
class NumberedRows : public io::SourceRows {
  public:
    NumberedRows(int failingRow, bool ends) : failingRow_(failingRow), ends_(ends) {}

    Result<void> decode(MutablePixelView rows) override {
        for (int y = 0; y < rows.height; ++y, ++next_) {
            if (next_ == failingRow_) return {ErrorCode::Damaged, "a row"};
            for (int x = 0; x < rows.width; ++x) {
                std::uint8_t* pixel = rows.row(y) + 4 * x;
                pixel[0] = pixel[1] = pixel[2] = static_cast<std::uint8_t>(next_);
                pixel[3] = 255;
            }
        }
        return {};
    }
    Result<void> finish() override {
        if (!ends_) return {ErrorCode::Damaged, "the end"};
        return {};
    }

  private:
    int failingRow_;
    bool ends_;
    int next_ = 0;
};

constexpr int kWidth = 16384;  // 64 KB a row: four of them at a time
constexpr int kHeight = 10;

io::SourcePicture source(int failingRow = -1, bool ends = true, int orientation = 1) {
    io::SourcePicture picture(kWidth, kHeight, std::make_unique<NumberedRows>(failingRow, ends));
    picture.orientation = orientation;
    return picture;
}

/// The first byte of each row that comes, or the error's message.
std::pair<std::vector<int>, std::string> rowsOf(io::SourcePicture picture) {
    auto upright = io::UprightPicture::make(std::move(picture), kUTTypePNG);
    if (!upright) return {{}, upright.error().message};
    std::vector<int> rows;
    while (static_cast<int>(rows.size()) < upright->height()) {
        const auto next = upright->next();
        if (!next) return {rows, next.error().message};
        for (int y = 0; y < next->height; ++y) rows.push_back(next->row(y)[0]);
    }
    const auto ended = upright->finish();
    return {rows, ended ? "" : ended.error().message};
}

TEST(UprightPicture, ComesInPiecesFromTheTop) {
    const auto [rows, error] = rowsOf(source());
    EXPECT_EQ(rows, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(error, "");
}

TEST(UprightPicture, ComesInTheRoomThatIsGivenWhereItIsEnough) {
    auto upright = io::UprightPicture::make(source(), kUTTypePNG);
    ASSERT_TRUE(upright);
    Bytes room(std::size_t{4} * kWidth * 4);
    const auto rows = upright->next(room);
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->bytes, room.data());
    EXPECT_EQ(rows->height, 4);
    EXPECT_EQ(room[std::size_t{4} * kWidth * 3], 3);
    const auto elsewhere = upright->next(std::span(room).first(room.size() - 1));
    ASSERT_TRUE(elsewhere);
    EXPECT_NE(elsewhere->bytes, room.data());
    EXPECT_EQ(elsewhere->row(0)[0], 4);
}

TEST(UprightPicture, ThatWasStoredUpsideDownComesTurned) {
    const auto [rows, error] = rowsOf(source(-1, true, 4));
    EXPECT_EQ(rows, (std::vector<int>{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}));
    EXPECT_EQ(error, "");
}

TEST(UprightPicture, ThatBreaksOffIsAnErrorAtItsRowOrAtItsEnd) {
    EXPECT_EQ(rowsOf(source(5)), std::pair(std::vector<int>({0, 1, 2, 3}), std::string("a row")));
    EXPECT_EQ(rowsOf(source(-1, false)).second, "the end");
    // Turned, it has to be had whole before the first row comes.
    for (const auto& [failingRow, ends] : {std::pair{5, true}, {-1, false}}) {
        const auto [rows, error] = rowsOf(source(failingRow, ends, 3));
        EXPECT_TRUE(rows.empty());
        EXPECT_EQ(error, ends ? "a row" : "the end");
        const auto whole = io::finishPicture(source(failingRow, ends), kUTTypePNG);
        ASSERT_FALSE(whole);
        EXPECT_EQ(whole.error().message, ends ? "a row" : "the end");
        EXPECT_FALSE(io::finishPicture(source(failingRow, ends, 3), kUTTypePNG));
    }
}

TEST(UprightPicture, MayBeHadWholeAndKeepsItsFacts) {
    const auto whole = io::finishPicture(source(), kUTTypePNG);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->type, kUTTypePNG);
    EXPECT_EQ(pixelAt(whole->image, kWidth - 1, 7), (Rgba{7, 7, 7, 255}));
}

TEST(UprightPicture, OfAFileThatIsNoneIsAnError) {
    EXPECT_EQ(io::openUpright({}, {}).error().code, ErrorCode::UnknownFormat);
    EXPECT_EQ(io::openUpright(Bytes(100, 'x'), {}).error().code, ErrorCode::UnknownFormat);
}

}  // namespace
}  // namespace skarnel
