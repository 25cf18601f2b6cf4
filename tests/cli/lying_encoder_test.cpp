// What an encoder gives takes the place of a file, or of what is on the pasteboard, only when it is
// what was asked for. Beside this program stands a helper that lies.
#include <gmock/gmock.h>

#include "app/standard_image_files.h"
#include "cli/job.h"
#include "imaging/io/image_io.h"
#include "storage/temporary_folder.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

using ::testing::ElementsAre;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

constexpr std::string_view kTypes[] = {kUTTypeJPEG2000, kUTTypeWebP};
constexpr int kLies = 4;  // pictures of so many pixels and fewer are lied about
const std::string kRefusal = "The encoded picture is not of its format";

CGImage rowOf(int pixels) {
    return CGImage(*PixelBuffer::zeroed(pixels, 1));
}

class LyingEncoder : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitized program encodes by itself";
        test::putFile(path_, "the old file");
    }
    void expectTheOldFileAlone() const {
        EXPECT_EQ(test::fileText(path_), "the old file");
        EXPECT_THAT(folder_.names(), ElementsAre("result"));
    }
    void expectAPictureOf(int pixels) const {
        const Bytes file = test::bytesOf(test::fileText(path_));
        const auto decoded = decodeImage(file);
        ASSERT_TRUE(decoded) << decoded.error().message;
        EXPECT_EQ(decoded->image.width(), pixels);
        EXPECT_THAT(folder_.names(), ElementsAre("result"));
    }

    const test::TemporaryFolder folder_;
    const std::string path_ = folder_ / "result";
};

TEST_F(LyingEncoder, IsNotBelieved) {
    for (const std::string_view type : kTypes) {
        for (int pixels = 1; pixels <= kLies; ++pixels) {
            const auto encoded = encodeImage(rowOf(pixels), type);
            ASSERT_FALSE(encoded) << type << " " << pixels;
            EXPECT_EQ(encoded.error().code, ErrorCode::Failed) << type << " " << pixels;
            EXPECT_EQ(encoded.error().message, kRefusal) << type << " " << pixels;
        }
        EXPECT_TRUE(encodeImage(rowOf(kLies + 1), type)) << type;
    }
}

TEST_F(LyingEncoder, LeavesTheOldFileOfASaveFromTheWindow) {
    std::vector<std::string> saved;
    StandardImageFiles files;
    files.setSaved([&](const std::string& path) { saved.push_back(path); });
    const auto save = [&](int pixels, std::string_view type) {
        const auto writer = files.imageDestinationCreateWithURL(path_, type);
        writer->addImage(rowOf(pixels), {});
        return writer->finalize();
    };
    for (const std::string_view type : kTypes) {
        test::putFile(path_, "the old file");
        for (int pixels = 1; pixels <= kLies; ++pixels) {
            const ScopedLogCapture captured;
            EXPECT_FALSE(save(pixels, type)) << type << " " << pixels;
            EXPECT_EQ(captured.text(), "Couldn't write " + path_ + ": " + kRefusal + "\n");
            expectTheOldFileAlone();
        }
        EXPECT_TRUE(saved.empty());
        EXPECT_TRUE(save(kLies + 1, type));
        expectAPictureOf(kLies + 1);
        EXPECT_THAT(saved, ElementsAre(path_));
        saved.clear();
    }
}

TEST_F(LyingEncoder, LeavesATemporaryFileOfTheWindow) {
    StandardImageFiles files;
    files.setPrivateFolder(folder_.path());
    const auto writer = files.imageDestinationCreateWithURL(path_, kUTTypeWebP);
    writer->addImage(rowOf(1), {});
    const ScopedLogCapture captured;
    EXPECT_FALSE(writer->finalize());
    expectTheOldFileAlone();
}

TEST_F(LyingEncoder, GivesThePasteboardNothing) {
    StandardImageFiles files;
    for (const std::string_view type : kTypes) {
        for (int pixels = 1; pixels <= kLies; ++pixels) {
            const auto data = files.dataCreateMutable();
            const auto writer = files.imageDestinationCreateWithData(data, type);
            writer->addImage(rowOf(pixels), {});
            const ScopedLogCapture captured;
            EXPECT_FALSE(writer->finalize()) << type << " " << pixels;
            EXPECT_EQ(captured.text(), "Couldn't write picture data: " + kRefusal + "\n");
            EXPECT_TRUE(data->empty());
        }
    }
}

TEST_F(LyingEncoder, LeavesTheOldFileOfTheCommandLine) {
    for (const std::string_view type : kTypes) {
        test::putFile(path_, "the old file");
        const cli::Job job{"in.png", path_, std::string(type), {}};
        cli::JobReport report;
        for (int pixels = 1; pixels <= kLies; ++pixels) {
            const auto written =
                cli::encodeAndWrite(rowOf(pixels), job, {}, Overwrite::Allow, report);
            ASSERT_FALSE(written) << type << " " << pixels;
            EXPECT_EQ(written.error().message, kRefusal) << type << " " << pixels;
            expectTheOldFileAlone();
        }
        EXPECT_TRUE(cli::encodeAndWrite(rowOf(kLies + 1), job, {}, Overwrite::Allow, report));
        expectAPictureOf(kLies + 1);
    }
}

}  // namespace
}  // namespace skarnel
