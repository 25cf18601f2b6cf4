// Encoding through the helper program gives what encoding here gives, and survives its death.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "imaging/io/encoder_wall.h"
#include "imaging/io/pictures.h"
#include "imaging/io/writers.h"
#include "memory/failing_memory.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

constexpr std::string_view kTypes[] = {kUTTypeJPEG2000, kUTTypeWebP};

/// A program in the helper's place: a shell script of one line.
class Script {
  public:
    explicit Script(const std::string& body) : path_(folder_ / "helper") {
        std::ofstream(path_) << "#!/bin/sh\n" << body << "\n";
        ::chmod(path_.c_str(), 0700);
    }
    const std::string& path() const { return path_; }

  private:
    test::TemporaryFolder folder_;
    std::string path_;
};

class EncoderWall : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    }
};

/// Three samples a pixel, with room behind each row.
CGImage pictureWithoutAlpha(int width, int height) {
    const CGImage source = randomValidPicture(width, height, 5);
    const std::size_t stride = static_cast<std::size_t>(width) * 3 + 5;
    Bytes bytes(stride * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int k = 0; k < 3; ++k) {
                bytes[stride * static_cast<std::size_t>(y) + static_cast<std::size_t>(3 * x + k)] =
                    source.pixels().row(y)[4 * x + k];
            }
        }
    }
    return *CGImage::copyOf({bytes.data(), width, height, static_cast<std::ptrdiff_t>(stride), 3});
}

TEST_F(EncoderWall, GivesTheFileThatEncodingHereGives) {
    ImageProperties lossy{{std::string(kPropertyLossyQuality), 0.6},
                          {std::string(kPropertyDpiWidth), 300.0}};
    for (const CGImage& image : {randomValidPicture(301, 270, 3), randomValidPicture(1, 1, 4),
                                 pictureWithoutAlpha(40, 1300)}) {
        for (const std::string_view type : kTypes) {
            for (const ImageProperties& properties : {ImageProperties{}, lossy}) {
                io::ImageRows rows(image);
                const auto here = io::writeWithLibrary(rows, type, properties);
                const auto behind = io::encodeBehindWall(DECODER_PROGRAM, image, type, properties);
                ASSERT_TRUE(here) << type;
                ASSERT_TRUE(behind) << type << ": " << behind.error().message;
                EXPECT_EQ(*here, *behind) << type;
            }
        }
    }
}

TEST_F(EncoderWall, PassesErrorsOnWithTheirReason) {
    const CGImage wide(*PixelBuffer::zeroed(16384, 1));
    const auto encoded = io::encodeBehindWall(DECODER_PROGRAM, wide, kUTTypeWebP, {});
    ASSERT_FALSE(encoded);
    EXPECT_EQ(encoded.error().code, ErrorCode::TooLarge);
    EXPECT_NE(encoded.error().message.find("16383"), std::string::npos);
}

TEST_F(EncoderWall, IsUsedWhereTheHelperStandsBesideTheProgram) {
    const CGImage image = randomValidPicture(9, 7, 3);
    for (const std::string_view type : kTypes) {
        const auto encoded = encodeImage(image, type);
        ASSERT_TRUE(encoded) << type;
        EXPECT_TRUE(samePixels(decodeImage(*encoded)->image, image)) << type;
    }
}

TEST_F(EncoderWall, OutlivesAHelperThatDiesOrAnswersAnythingElse) {
    // Larger than what the system keeps of a request that nobody reads.
    const CGImage image(*PixelBuffer::zeroed(1000, 1000));
    for (const char* body :
         {"exit 0", "exit 5", "kill -9 $$", "cat <&3 >/dev/null; kill -ABRT $$",
          "cat <&3 >/dev/null; printf x >&4", "cat <&3 >/dev/null; head -c 5000 /dev/zero >&4",
          // Encoded, of 2^32 - 1 bytes and of one byte too few
          R"(cat <&3 >/dev/null; printf '\005\104\113\123\377\377\377\377\0\0\0\0x' >&4)",
          R"(cat <&3 >/dev/null; printf '\005\104\113\123\002\0\0\0\0\0\0\0x' >&4)",
          R"(cat <&3 >/dev/null; printf '\005\104\113\123\001\0\0\0\0\0\0\0xy' >&4)",
          R"(cat <&3 >/dev/null; printf '\005\104\113\123\001\0\0\0\0\0\0\0x' >&4; exit 1)"}) {
        const Script helper(body);
        const auto encoded = io::encodeBehindWall(helper.path(), image, kUTTypeWebP, {});
        ASSERT_FALSE(encoded) << body;
        EXPECT_EQ(encoded.error().code, ErrorCode::Failed) << body;
        EXPECT_NE(encoded.error().message.find("cannot be encoded"), std::string::npos) << body;
    }
    // What the bytes of an honest answer are is for encodeImage to see.
    const Script right(R"(cat <&3 >/dev/null; printf '\005\104\113\123\001\0\0\0\0\0\0\0x' >&4)");
    const auto encoded = io::encodeBehindWall(right.path(), image, kUTTypeWebP, {});
    ASSERT_TRUE(encoded);
    EXPECT_EQ(*encoded, Bytes{'x'});
}

TEST_F(EncoderWall, WaitsForASleepingHelperNoLongerThanItsPatience) {
    const CGImage image(*PixelBuffer::zeroed(1000, 1000));
    const Script helper("exec sleep 60");
    const auto before = std::chrono::steady_clock::now();
    EXPECT_FALSE(
        io::encodeBehindWall(helper.path(), image, kUTTypeWebP, {}, std::chrono::seconds(1)));
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(30));
}

TEST_F(EncoderWall, SaysWhenTheHelperCannotBeStarted) {
    const auto encoded =
        io::encodeBehindWall("/nonexistent/helper", randomValidPicture(3, 3, 1), kUTTypeWebP, {});
    ASSERT_FALSE(encoded);
    EXPECT_EQ(encoded.error().code, ErrorCode::Failed);
}

/// Each request of the helper for memory in turn is refused, once and from then on.
TEST_F(EncoderWall, IsACleanErrorOrTheRightFileWhereTheHelperHasNoMemory) {
    const CGImage image = randomValidPicture(21, 17, 3);
    const test::TemporaryFolder folder;
    const std::string count = folder / "count";
    const auto encoded = [&](std::string_view type, long order) {
        const Script helper("exec " ENCODER_WITHOUT_MEMORY " " + std::to_string(order) + " '" +
                            count + "' \"$1\"");
        return io::encodeBehindWall(helper.path(), image, type, {});
    };
    for (const std::string_view type : kTypes) {
        ASSERT_TRUE(encoded(type, 0)) << type;
        long requests = 0;
        std::ifstream(count) >> requests;
        ASSERT_GT(requests, 10) << type;
        const long tries = test::isLongRun() ? 2000 : 10;
        const long step = std::max(1L, requests / tries);
        long errors = 0;
        for (long request = 0; request < requests; request += step) {
            for (const long order : {1 + 2 * request, 2 + 2 * request}) {
                const auto file = encoded(type, order);
                errors += file ? 0 : 1;
                if (file) {
                    EXPECT_TRUE(samePixels(decodeImage(*file)->image, image))
                        << type << ", order " << order;
                } else {
                    EXPECT_FALSE(file.error().message.empty());
                }
            }
        }
        EXPECT_GT(errors, 0) << type << ": nothing was refused";
    }
}

}  // namespace
}  // namespace skarnel
