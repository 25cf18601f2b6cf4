// Each request for memory of the window's own picture work in turn is refused: none, or the right
// picture, and no exception.
#include <cstring>

#include "controller_fixture.h"
#include "imaging/pixel_memory.h"
#include "memory/refuse_each.h"

namespace skarnel::testing_app {
namespace {

using skarnel::testing::canRefuseMemory;
using skarnel::testing::MemoryPause;
using skarnel::testing::Refusal;
using skarnel::testing::refuseEach;

bool haveSamePixels(const CGImage& a, const CGImage& b) {
    const PixelView one = a.pixels();
    const PixelView other = b.pixels();
    if (one.width != other.width || one.height != other.height) return false;
    for (int y = 0; y < one.height; ++y)
        if (std::memcmp(one.row(y), other.row(y), 4 * static_cast<std::size_t>(one.width)) != 0)
            return false;
    return true;
}

class NoMemory : public ::testing::TestWithParam<Refusal> {
  protected:
    void SetUp() override {
        if (!canRefuseMemory()) GTEST_SKIP() << "a sanitizer has a malloc of its own";
        setIdlePixelMemoryLimit(0);  // what was given back earlier would do without a request
    }

    /// `work` gives none or the same as ever, or what else is right.
    template <typename Work>
    void expectNoneOrTheSame(const char* name, Work work,
                             const std::optional<CGImage>& orElse = std::nullopt) {
        const std::optional<CGImage> expected = work();
        ASSERT_TRUE(expected) << name;
        refuseEach(name, GetParam(), [&] {
            const std::optional<CGImage> made = work();
            const MemoryPause pause;
            return !made || haveSamePixels(*made, *expected) ||
                   (orElse && haveSamePixels(*made, *orElse));
        });
    }

    ImageOperations operations;
};

TEST_P(NoMemory, ARefreshOfThePreviewGivesNoneOrTheSame) {
    const NSImage photo = testImage(64, 48);
    float turn = 50;
    const RenderInputReaders readers([] { return 200.0F; },
                                     [] {
                                         return std::optional(DeviceColor{0.2, 0.4, 0.6, 1});
                                     },
                                     [&turn] { return turn; });
    const auto refreshed = [&]() -> std::optional<CGImage> {
        const auto small = operations.imageByScalingProportionallyToSize(photo, {40, 30});
        const auto bitmap = small ? operations.getCGImageRef(*small) : std::nullopt;
        const auto result =
            bitmap ? operations.addReflectionToCGImage(*bitmap, 20, 60, 5, 0, 7, readers)
                   : std::nullopt;
        const auto wrapped = result ? operations.NSImageFromCGImageRef(*result) : std::nullopt;
        const auto fitted = wrapped
                                ? operations.imageByScalingProportionallyToSize(*wrapped, {25, 25})
                                : std::nullopt;
        return fitted ? operations.getCGImageRef(*fitted) : std::nullopt;
    };
    // A turn that cannot be made leaves the canvas.
    const std::optional<CGImage> unturned = refreshed();
    ASSERT_TRUE(unturned);
    turn = 30;
    expectNoneOrTheSame("refresh", refreshed, unturned);
}

TEST_P(NoMemory, AFileIsNoneOrTheSame) {
    const test::TemporaryFolder folder;
    const std::string path = folder / "photo.bmp";
    const Result<Bytes> bytes = encodeImage(testPicture(40, 30), kUTTypeBMP);
    ASSERT_TRUE(bytes);
    test::putFile(path, {bytes->begin(), bytes->end()});
    expectNoneOrTheSame("file", [&]() -> std::optional<CGImage> {
        const auto photo = operations.initByReferencingFile(path);
        if (!photo) return std::nullopt;
        if (!photo->isValid()) {
            EXPECT_TRUE(photo->readError());
            EXPECT_EQ(photo->size(), CGSize{});
            return std::nullopt;
        }
        const auto data = operations.TIFFRepresentation(*photo);
        const auto decoded = data ? data->decoded() : std::nullopt;
        if (!decoded) return std::nullopt;
        return operations.getCGImageRef(*photo);
    });
}

TEST_P(NoMemory, AKnockedOutPageIsNoneOrTheSame) {
    const CGImage page = testPicture(40, 30);
    const CIImage image = CIImage::imageWithCGImage(page);
    expectNoneOrTheSame("page", [&]() -> std::optional<CGImage> {
        const auto wrapped = operations.imageWithBitmap(page);
        const auto clear =
            wrapped ? operations.CIImageMakeFirtsPixelColorTransparent(image) : std::nullopt;
        return clear ? operations.CIImageGetCGImage(*clear) : std::nullopt;
    });
}

INSTANTIATE_TEST_SUITE_P(Once_AndFromThenOn, NoMemory,
                         ::testing::Values(Refusal::Once, Refusal::FromThenOn),
                         [](const auto& row) { return nameOf(row.param); });

}  // namespace
}  // namespace skarnel::testing_app
