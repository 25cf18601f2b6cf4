#include "cli/sweep.h"

#include <gmock/gmock.h>
#include <webp/demux.h>

#include "cli/pictures.h"
#include "imaging/io/animation.h"
#include "storage/temporary_folder.h"

namespace skarnel::cli {
namespace {

using test::TemporaryFolder;

Sweep turn(float from, float to, int count) {
    return {indexOfSetting("imagePerspective"), from, to, count};
}

TEST(Sweep, StepsEvenlyAndMeetsItsEnds) {
    const RenderSettings settings = defaultSettings();
    const Sweep sweep = turn(0, 100, 5);
    const auto at = [&](int index) {
        return frameSettings(settings, sweep, index).number("imagePerspective");
    };
    EXPECT_EQ(at(0), 0.0F);
    EXPECT_EQ(at(1), 25.0F);
    EXPECT_EQ(at(2), 50.0F);
    EXPECT_EQ(at(4), 100.0F);
    EXPECT_EQ(frameSettings(settings, turn(0.1F, 0.7F, 7), 6).number("imagePerspective"), 0.7F);
    EXPECT_EQ(frameSettings(settings, sweep, 3).number("gradient"), 7.0F);
}

TEST(Sweep, CentresByWholePixelsAndCopiesTheBytes) {
    const CGImage picture = test::gradientPicture(3, 2);
    const auto centred = centredIn(picture, {6, 5});
    ASSERT_TRUE(centred);
    // One column of three to the left, and of three rows one below, two above.
    const PixelView view = centred->pixels();
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 6; ++x) {
            const bool inside = x >= 1 && x < 4 && y >= 2 && y < 4;
            const std::uint8_t expected = inside ? picture.pixels().row(y - 2)[4 * (x - 1)] : 0;
            EXPECT_EQ(view.row(y)[4 * x], expected) << x << " " << y;
            EXPECT_EQ(view.row(y)[4 * x + 3], inside ? 255 : 0);
        }
    }
    EXPECT_TRUE(centredIn(picture, {3, 2})->isSame(picture));
}

TEST(Sweep, TheLargestFrameHoldsThemAll) {
    // At 0 and 50 the canvas is 400 x 300; at 25 and 75 it is 240 x 420.
    EXPECT_EQ(largestFrame({400, 150}, defaultSettings(), turn(0, 100, 5)), (PixelSize{400, 420}));
    RenderSettings flat = defaultSettings();
    flat.numbers[indexOfSetting("perspectiveHeight")] = 0;
    EXPECT_FALSE(largestFrame({400, 150}, flat, turn(0, 100, 5)));
}

class SweepRun : public testing::Test {
  protected:
    SweepRun() {
        test::putPicture(folder_ / "in.png", 40, 15);
        request_.job = {folder_ / "in.png", folder_ / "out.png", std::string(kUTTypePNG), {}};
        request_.settings.render = defaultSettings();
        request_.sweep = turn(0, 100, 5);
    }
    std::vector<JobReport> run(bool animated) {
        std::vector<JobReport> reports;
        const auto report = [&](const JobReport& each) { reports.push_back(each); };
        const auto progress = [](std::size_t) {};
        if (animated) {
            runAnimation(request_, report, progress);
        } else {
            runSweep(request_, report, progress);
        }
        return reports;
    }

    const TemporaryFolder folder_;
    SweepRequest request_;
};

TEST_F(SweepRun, WritesNumberedFramesOfOneSize) {
    request_.share.workers = 2;
    const auto reports = run(false);
    ASSERT_EQ(reports.size(), 5U);
    for (int i = 1; i <= 5; ++i) {
        const std::string name = folder_ / ("out-000" + std::to_string(i) + ".png");
        EXPECT_EQ(reports[static_cast<std::size_t>(i - 1)].output, name);
        const auto frame = decodeImageFile(name);
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->image.width(), 40);
        EXPECT_EQ(frame->image.height(), 42);
    }
}

TEST_F(SweepRun, AFrameThatIsThereIsNotReplaced) {
    test::putFile(folder_ / "out-0003.png", "mine");
    const auto reports = run(false);
    ASSERT_EQ(reports.size(), 5U);
    EXPECT_TRUE(reports[2].error);
    EXPECT_FALSE(reports[1].error || reports[3].error);
    EXPECT_EQ(test::fileText(folder_ / "out-0003.png"), "mine");
}

TEST_F(SweepRun, APictureThatCannotBeReadIsOneFailure) {
    request_.job.input = folder_ / "missing.png";
    const auto reports = run(false);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_TRUE(reports[0].error);
}

TEST_F(SweepRun, PreviewFramesFitTheirBox) {
    request_.settings.preview = PixelSize{20, 20};
    for (const JobReport& report : run(false)) {
        ASSERT_TRUE(report.outputSize);
        EXPECT_LE(report.outputSize->width, 20);
        EXPECT_LE(report.outputSize->height, 20);
    }
}

/// The types of a PNG file's chunks in their order.
std::vector<std::string> chunksOf(const std::string& png) {
    std::vector<std::string> types;
    for (std::size_t at = 8; at + 12 <= png.size();) {
        std::uint32_t length = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            length = length << 8 | static_cast<std::uint8_t>(png[at + i]);
        }
        types.push_back(png.substr(at + 4, 4));
        at += length + 12;
    }
    return types;
}

TEST_F(SweepRun, AnAnimatedPngHasItsControlsAndReadsAsItsFirstFrame) {
    const auto reports = run(true);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_FALSE(reports[0].error) << *reports[0].error;
    EXPECT_EQ(reports[0].outputSize, (PixelSize{40, 42}));
    const std::string png = test::fileText(folder_ / "out.png");
    const std::vector<std::string> chunks = chunksOf(png);
    EXPECT_EQ(std::count(chunks.begin(), chunks.end(), "acTL"), 1);
    EXPECT_EQ(std::count(chunks.begin(), chunks.end(), "fcTL"), 5);
    EXPECT_EQ(std::count(chunks.begin(), chunks.end(), "IDAT"), 1);
    EXPECT_EQ(std::count(chunks.begin(), chunks.end(), "fdAT"), 4);
    EXPECT_EQ(chunks.back(), "IEND");
    const auto first = decodeImageFile(folder_ / "out.png");
    ASSERT_TRUE(first);
    EXPECT_EQ(first->image.height(), 42);
}

TEST_F(SweepRun, AnAnimatedWebPHasEveryFrame) {
    request_.job.output = folder_ / "out.webp";
    request_.job.type = std::string(kUTTypeWebP);
    request_.frameMilliseconds = 70;
    const auto reports = run(true);
    ASSERT_EQ(reports.size(), 1U);
    ASSERT_FALSE(reports[0].error) << *reports[0].error;
    const std::string webp = test::fileText(folder_ / "out.webp");
    const WebPData data = {reinterpret_cast<const std::uint8_t*>(webp.data()), webp.size()};
    WebPAnimDecoder* decoder = WebPAnimDecoderNew(&data, nullptr);
    ASSERT_NE(decoder, nullptr);
    WebPAnimInfo info;
    ASSERT_TRUE(WebPAnimDecoderGetInfo(decoder, &info));
    EXPECT_EQ(info.frame_count, 5U);
    EXPECT_EQ(info.canvas_width, 40U);
    EXPECT_EQ(info.canvas_height, 42U);
    EXPECT_EQ(info.loop_count, 0U);
    int lastTime = 0;
    std::uint8_t* pixels = nullptr;
    while (WebPAnimDecoderHasMoreFrames(decoder)) {
        ASSERT_TRUE(WebPAnimDecoderGetNext(decoder, &pixels, &lastTime));
    }
    EXPECT_EQ(lastTime, 5 * 70);
    WebPAnimDecoderDelete(decoder);
}

TEST_F(SweepRun, AnAnimationIsTheSameBytesWithAnyNumberOfWorkers) {
    for (const std::string_view type : {kUTTypePNG, kUTTypeWebP}) {
        request_.job.type = std::string(type);
        std::vector<std::string> files;
        for (const int workers : {1, 3}) {
            request_.share.workers = workers;
            request_.job.output = folder_ / ("out" + std::to_string(workers));
            request_.settings.overwrite = Overwrite::Allow;
            const auto reports = run(true);
            ASSERT_EQ(reports.size(), 1U);
            EXPECT_FALSE(reports[0].error) << *reports[0].error;
            EXPECT_EQ(reports[0].outputSize, (PixelSize{40, 42}));
            files.push_back(test::fileText(request_.job.output));
        }
        EXPECT_TRUE(files[0] == files[1]) << type;
    }
}

TEST_F(SweepRun, AFrameThatFailsEndsTheAnimation) {
    request_.sweep = {indexOfSetting("perspectiveHeight"), 100, 0, 3};  // the last has no result
    for (const int workers : {1, 2}) {
        request_.share.workers = workers;
        const auto reports = run(true);
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0].error, "A reflection without height gives no result");
        EXPECT_FALSE(reports[0].output);
        EXPECT_FALSE(reports[0].outputSize);
    }
    EXPECT_EQ(folder_.names().size(), 1U);
}

/// Every frame of an animated WebP as its player shows it.
std::vector<Bytes> framesOf(const std::string& webp, int width, int height) {
    const WebPData data = {reinterpret_cast<const std::uint8_t*>(webp.data()), webp.size()};
    std::vector<Bytes> frames;
    WebPAnimDecoder* decoder = WebPAnimDecoderNew(&data, nullptr);
    std::uint8_t* pixels = nullptr;
    for (int time = 0; decoder != nullptr && WebPAnimDecoderHasMoreFrames(decoder) != 0;) {
        if (WebPAnimDecoderGetNext(decoder, &pixels, &time) == 0) break;
        frames.emplace_back(pixels, pixels + std::ptrdiff_t{4} * width * height);
    }
    WebPAnimDecoderDelete(decoder);
    return frames;
}

TEST(AnimationEncoder, AWebPShowsEachFrameWhateverChanged) {
    constexpr int kWidth = 21;
    constexpr int kHeight = 13;
    std::vector<CGImage> frames = {test::gradientPicture(kWidth, kHeight)};
    // One pixel, nothing at all, a clear corner at odd places, and all.
    const auto changed = [&](int left, int top, int right, int bottom, std::uint8_t value) {
        PixelBuffer buffer = *PixelBuffer::zeroed(kWidth, kHeight);
        const PixelView old = frames.back().pixels();
        for (int y = 0; y < kHeight; ++y) std::copy_n(old.row(y), 4 * kWidth, buffer.view().row(y));
        for (int y = top; y < bottom; ++y)
            std::fill(buffer.view().row(y) + 4 * left, buffer.view().row(y) + 4 * right, value);
        return CGImage(std::move(buffer));
    };
    frames.push_back(changed(20, 12, 21, 13, 255));
    frames.push_back(frames.back());
    frames.push_back(changed(3, 5, 8, 6, 0));
    frames.push_back(changed(0, 0, kWidth, kHeight, 255));
    const auto encoder = AnimationEncoder::create(kUTTypeWebP, kWidth, kHeight, 50);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const auto encoded = encoder->encode(frames[i], i == 0 ? nullptr : &frames[i - 1]);
        ASSERT_TRUE(encoded);
        ASSERT_TRUE(encoder->add(*encoded));
    }
    const Bytes file = *encoder->finish();
    const auto shown = framesOf({file.begin(), file.end()}, kWidth, kHeight);
    ASSERT_EQ(shown.size(), frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const PixelView pixels = frames[i].pixels();
        for (int y = 0; y < kHeight; ++y)
            EXPECT_TRUE(std::equal(pixels.row(y), pixels.row(y) + 4 * kWidth,
                                   shown[i].begin() + std::ptrdiff_t{4} * kWidth * y))
                << i << " " << y;
    }
}

TEST(AnimationEncoder, RefusesFramesOfAnotherSize) {
    for (const std::string_view type : {kUTTypePNG, kUTTypeWebP}) {
        const auto encoder = AnimationEncoder::create(type, 4, 3, 40);
        EXPECT_EQ(encoder->encode(test::gradientPicture(3, 4), nullptr).error().code,
                  ErrorCode::InvalidArgument);
        EXPECT_FALSE(encoder->finish());
    }
    EXPECT_EQ(AnimationEncoder::create(kUTTypeWebP, 16384, 1, 40), nullptr);
}

TEST_F(SweepRun, AnAnimationIsNotBegunWhereAFileStands) {
    test::putFile(folder_ / "out.png", "mine");
    request_.job.input = folder_ / "missing.png";  // which would be the first failure
    const auto reports = run(true);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].error,
              folder_ / "out.png" + ": The file already exists (--force replaces it)");
}

TEST_F(SweepRun, AnAnimatedWebPHasLossesUnlessAskedForOthers) {
    // Noise: without losses it takes more than its 3 bytes a pixel allow to save.
    PixelBuffer noise = *PixelBuffer::zeroed(64, 64);
    std::uint32_t state = 1;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 256; ++x) {
            state = state * 1664525 + 1013904223;
            noise.view().row(y)[x] = x % 4 == 3 ? 255 : static_cast<std::uint8_t>(state >> 24);
        }
    }
    test::putBytes(folder_ / "in.png", *encodeImage(CGImage(std::move(noise)), kUTTypePNG));
    request_.job.output = folder_ / "out.webp";
    request_.job.type = std::string(kUTTypeWebP);
    request_.settings.overwrite = Overwrite::Allow;
    run(true);
    const std::size_t byDefault = test::fileText(folder_ / "out.webp").size();
    // The opaque half of five frames without losses: 5 x 64 x 64 x 3 bytes.
    EXPECT_LT(byDefault, std::size_t{5} * 64 * 64 * 3 * 2 / 3);
    request_.settings.format.quality = 5;
    run(true);
    EXPECT_LT(test::fileText(folder_ / "out.webp").size(), byDefault);
}

TEST_F(SweepRun, OtherFormatsCannotBeAnimated) {
    request_.job.output = folder_ / "out.tiff";
    request_.job.type = std::string(kUTTypeTIFF);
    const auto reports = run(true);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].error, "Only PNG and WebP can be animated");
    EXPECT_EQ(folder_.names().size(), 1U);
}

}  // namespace
}  // namespace skarnel::cli
