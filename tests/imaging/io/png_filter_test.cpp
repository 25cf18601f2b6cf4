#include "imaging/io/png_filter.h"

#include <gtest/gtest.h>

#include "imaging/io/pictures.h"

namespace skarnel::io {
namespace {

using namespace skarnel::testing;

Bytes line(PngRows& rows, int y) {
    Bytes out(rows.lineBytes());
    rows.filter(y, out.data());
    return out;
}

TEST(PngRows, SubTakesThePixelToTheLeftAway) {
    const CGImage image = picture(2, 1, {{10, 20, 30, 255}, {13, 19, 30, 255}});
    PngRows colours(image, true, PngFilters::Sub);
    EXPECT_EQ(line(colours, 0), (Bytes{1, 10, 20, 30, 3, 255, 0}));
    PngRows withAlpha(image, false, PngFilters::Sub);
    EXPECT_EQ(line(withAlpha, 0), (Bytes{1, 10, 20, 30, 255, 3, 255, 0, 0}));
}

TEST(PngRows, TheFilterWithTheLeastDifferencesIsTaken) {
    // The second row is the first one, one brighter: Up leaves ones, Sub leaves the steps of 40.
    const CGImage image =
        picture(2, 2, {{10, 10, 10, 255}, {50, 50, 50, 255}, {11, 11, 11, 255}, {51, 51, 51, 255}});
    PngRows rows(image, true, PngFilters::SubOrUp);
    EXPECT_EQ(line(rows, 0)[0], 1);
    EXPECT_EQ(line(rows, 1), (Bytes{2, 1, 1, 1, 1, 1, 1}));
}

TEST(PngRows, PaethIsTakenWhereTheNearerNeighbourChanges) {
    // 50 120 120 120 120 over 50 120 200 200 200: what stands above is equal at first, what stands
    // to the left at last. Paeth leaves one step of 80, Up three, Sub all of 50, 70 and 80.
    const auto grey = [](std::uint8_t value) { return Rgba{value, value, value, 255}; };
    const CGImage image = picture(5, 2,
                                  {grey(50), grey(120), grey(120), grey(120), grey(120), grey(50),
                                   grey(120), grey(200), grey(200), grey(200)});
    PngRows rows(image, true, PngFilters::SubUpOrPaeth);
    EXPECT_EQ(line(rows, 1), (Bytes{4, 0, 0, 0, 0, 0, 0, 80, 80, 80, 0, 0, 0, 0, 0, 0}));
}

TEST(PngRows, RowsMayBeAskedForInAnyOrder) {
    const CGImage image = randomValidPicture(17, 9, 4);
    PngRows inOrder(image, false, PngFilters::SubUpOrPaeth);
    std::vector<Bytes> expected;
    for (int y = 0; y < 9; ++y) expected.push_back(line(inOrder, y));
    PngRows jumping(image, false, PngFilters::SubUpOrPaeth);
    for (const int y : {4, 0, 8, 8, 1, 2, 0}) {
        EXPECT_EQ(line(jumping, y), expected[static_cast<std::size_t>(y)]) << y;
    }
}

}  // namespace
}  // namespace skarnel::io
