// Decoding through the helper program gives what decoding here gives, and survives its death.
#include "imaging/io/decoder_wall.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "decoder/kernel_without_seccomp.h"
#include "decoder/opened_file.h"
#include "imaging/io/color_profile.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"
#include "imaging/io/read_file.h"
#include "util/limited_to.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

Result<DecodedImage> throughHelper(ByteView bytes, const DecodeLimits& limits = {}) {
    return io::decodeBehindWall(DECODER_PROGRAM, memoryFile(bytes).number(), limits);
}

/// A program in the helper's place: a shell script, so that each way of ending badly is one line.
class FalseHelper {
  public:
    explicit FalseHelper(const std::string& body) {
        std::string pattern = (std::filesystem::temp_directory_path() / "helperXXXXXX").string();
        folder_ = ::mkdtemp(pattern.data());
        std::ofstream(path()) << "#!/bin/sh\n" << body << "\n";
        ::chmod(path().c_str(), 0700);
    }
    ~FalseHelper() { std::filesystem::remove_all(folder_); }
    FalseHelper(const FalseHelper&) = delete;
    FalseHelper& operator=(const FalseHelper&) = delete;
    std::string path() const { return (folder_ / "helper").string(); }

  private:
    std::filesystem::path folder_;
};

class Wall : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    }
};

/// Of each format whose library is loaded late.
void expectLateFilesBehindTheWall() {
    for (const auto& entry : std::filesystem::directory_iterator(LATE_FILES)) {
        std::ifstream stream(entry.path(), std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(stream), {}};
        const ImageType* type = imageTypeOfContent(bytes);
        if (type == nullptr || !type->canRead) continue;
        const auto behind = throughHelper(bytes);
        ASSERT_TRUE(behind) << entry.path() << ": " << behind.error().message;
        EXPECT_TRUE(samePixels(behind->image, decodeImage(bytes)->image)) << entry.path();
    }
}

TEST_F(Wall, StandsAroundCodecsThatAreLoadedLateAndStartThreads) {
    expectLateFilesBehindTheWall();
}

TEST_F(Wall, LetsThreadsStartWhateverStackTheUserAllows) {
    constexpr rlim_t kLargeStack = rlim_t{1} << 30U;  // more than a small picture's helper may have
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_STACK, &limit), 0);
    if (limit.rlim_max < kLargeStack) GTEST_SKIP() << "no larger stack is allowed here";
    const test::LimitedTo large(RLIMIT_STACK, kLargeStack);
    expectLateFilesBehindTheWall();
}

TEST_F(Wall, GivesThePictureOfEveryFormat) {
    for (const ImageType& type : imageTypes()) {
        if (!type.canWrite) continue;
        const Bytes bytes = *encodeImage(randomValidPicture(61, 47, 3), type.identifier,
                                         {{std::string(kPropertyDpiWidth), 300.0}});
        const auto behind = throughHelper(bytes);
        ASSERT_TRUE(behind) << type.name << ": " << behind.error().message;
        const auto here = decodeImage(bytes);
        EXPECT_TRUE(samePixels(behind->image, here->image)) << type.name;
        EXPECT_EQ(behind->properties, here->properties) << type.name;
        EXPECT_EQ(behind->type, here->type);
    }
}

/// Its helper loads no library for colours or a camera's facts where a small PNG names neither.
TEST_F(Wall, GivesTheColoursAndTheCamerasFactsOfASmallPng) {
    const Bytes profile = io::makeRgbProfile({.green = {0.1, 0.8}}, io::RgbCurve::Linear);
    Bytes colors = {'w', 'i', 'd', 'e', 0, 0};
    const Bytes packed = zlibBytes(profile);
    colors.insert(colors.end(), packed.begin(), packed.end());
    ByteSink facts(true);
    facts.text("MM").u16(42).u32(8).u16(1).u16(0x0112).u16(3).u32(1).u16(6).u16(0).u32(0);
    const Bytes pixels = {200, 100, 50, 10, 20, 30};
    const Bytes plain = buildPng(2, 1, 8, 2, pixels);
    const Bytes colored = buildPng(2, 1, 8, 2, pixels, {{"iCCP", colors}});
    const Bytes turned = buildPng(2, 1, 8, 2, pixels, {{"eXIf", facts.bytes}});
    for (const Bytes& file : {plain, colored, turned}) {
        const auto behind = throughHelper(file);
        ASSERT_TRUE(behind) << behind.error().message;
        const auto here = decodeImage(file);
        EXPECT_TRUE(samePixels(behind->image, here->image));
        EXPECT_EQ(behind->properties, here->properties);
    }
    // The two chunks do something, or the helper would not have needed anything for them.
    EXPECT_FALSE(samePixels(decodeImage(colored)->image, decodeImage(plain)->image));
    EXPECT_EQ(decodeImage(turned)->image.height(), 2);
}

TEST_F(Wall, GivesPicturesThatGoAroundTheRingOrDoNotFitIt) {
    // 2.6 MB of rows in pieces of 256 KB; two rows of 280 KB each; the same by its columns.
    for (const auto& [width, height] : {std::pair{700, 930}, {70000, 2}, {2, 70000}}) {
        const CGImage image = randomValidPicture(width, height, 11);
        for (const std::string_view type : {kUTTypePNG, kUTTypeTIFF, kUTTypeBMP}) {
            const Bytes bytes = *encodeImage(image, type);
            const auto behind = throughHelper(bytes);
            ASSERT_TRUE(behind) << type << ": " << behind.error().message;
            EXPECT_TRUE(samePixels(behind->image, decodeImage(bytes)->image)) << type << width;
        }
    }
}

TEST_F(Wall, PassesErrorsOnWithTheirReason) {
    const Bytes text = {'h', 'e', 'l', 'l', 'o'};
    const auto unknown = throughHelper(text);
    ASSERT_FALSE(unknown);
    EXPECT_EQ(unknown.error().code, ErrorCode::UnknownFormat);
    EXPECT_EQ(unknown.error().message, decodeImage(text).error().message);

    const Bytes png = *encodeImage(randomValidPicture(40, 40, 3), kUTTypePNG);
    const auto large = throughHelper(png, {1599});
    ASSERT_FALSE(large);
    EXPECT_EQ(large.error().code, ErrorCode::TooLarge);
    const auto cut = throughHelper(ByteView(png).first(png.size() / 2));
    ASSERT_FALSE(cut);
    EXPECT_EQ(cut.error().code, ErrorCode::Damaged);
    EXPECT_FALSE(throughHelper(ByteView()));
}

TEST_F(Wall, OutlivesAHelperThatDies) {
    const Bytes png = *encodeImage(randomValidPicture(4, 4, 3), kUTTypePNG);
    for (const char* body : {"kill -SEGV $$", "kill -KILL $$", "exit 1", "exit 0", "echo x >&4",
                             "head -c 64 /dev/zero >&4"}) {
        const FalseHelper helper(body);
        const auto decoded = io::decodeBehindWall(helper.path(), memoryFile(png).number(), {});
        ASSERT_FALSE(decoded) << body;
        EXPECT_EQ(decoded.error().code, ErrorCode::Damaged) << body;
    }
}

TEST_F(Wall, WaitsForASleepingHelperNoLongerThanItsPatience) {
    const FalseHelper helper("exec sleep 1000");
    const auto decoded = io::decodeBehindWall(helper.path(), memoryFile({}).number(), {},
                                              std::chrono::milliseconds(100));
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error().code, ErrorCode::Damaged);
}

TEST_F(Wall, TellsAHelperWithoutWallsFromADamagedPicture) {
    const FalseHelper helper("exit 3");
    const auto decoded = io::decodeBehindWall(helper.path(), memoryFile({}).number(), {});
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error().code, ErrorCode::Failed);
    EXPECT_NE(decoded.error().message.find("walls"), std::string::npos);
}

TEST_F(Wall, StandsAsFarAsItCanWhereTheKernelHasNoSeccomp) {
    const Bytes png = *encodeImage(randomValidPicture(4, 4, 3), kUTTypePNG);
    const pid_t child = ::fork();
    if (child == 0) {
        if (!takeSeccompAway()) ::_exit(2);
        if (decoderWalls()[3].name != "seccomp" || decoderWalls()[3].stands) ::_exit(3);
        ::_exit(throughHelper(png) ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << "exit status " << WEXITSTATUS(status);
}

TEST_F(Wall, HandsBothLimitsToTheHelper) {
    // 9 million pixels ask for 4500 bytes, of which this file, ending at once, has 3378.
    BmpBuilder bmp;
    bmp.width = bmp.height = 3000;
    bmp.bits = 8;
    bmp.compression = 1;
    bmp.palette = Bytes(1024, 1);
    bmp.pixels = Bytes(2300, 0);
    bmp.pixels[1] = 1;
    const Bytes file = bmp.build();
    const auto refused = throughHelper(file, {9'000'000, 8'999'999});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, ErrorCode::TooLarge);
    EXPECT_NE(refused.error().message.find("--max-pixels"), std::string::npos);
    EXPECT_TRUE(throughHelper(file, {9'000'000, 9'000'000}));
}

TEST_F(Wall, SaysWhenTheHelperCannotBeStarted) {
    const auto decoded = io::decodeBehindWall("/nonexistent/helper", memoryFile({}).number(), {});
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error().code, ErrorCode::Failed);
    EXPECT_FALSE(decoded.error().message.empty());
}

TEST_F(Wall, LeavesNoDescriptorOpen) {
    auto openDescriptors = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    const Bytes png = *encodeImage(randomValidPicture(4, 4, 3), kUTTypePNG);
    (void)throughHelper(png);
    const auto before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        (void)throughHelper(png);
        (void)throughHelper(ByteView(png).first(20));
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Wall, TurnsAndCopiesNothingOfThePictureAway) {
    // A quarter turn needs a second buffer; the answer then holds the turned one.
    const CGImage image = randomValidPicture(130, 70, 9);
    Bytes tiff = *encodeImage(image, kUTTypeTIFF);
    bool changed = false;
    for (std::size_t i = 0; i + 12 <= tiff.size(); ++i) {
        // The orientation's entry: tag 274, type 3, count 1, value 1.
        const std::uint8_t entry[] = {0x12, 0x01, 3, 0, 1, 0, 0, 0, 1, 0};
        if (std::equal(std::begin(entry), std::end(entry), tiff.begin() + static_cast<long>(i))) {
            tiff[i + 8] = 6;
            changed = true;
        }
    }
    ASSERT_TRUE(changed);
    const auto behind = throughHelper(tiff);
    ASSERT_TRUE(behind);
    ASSERT_EQ(behind->image.width(), 70);
    // A quarter turn clockwise: the stored top left pixel goes to the top right.
    EXPECT_EQ(pixelAt(behind->image, 69, 0), pixelAt(image, 0, 0));
    EXPECT_EQ(pixelAt(behind->image, 0, 0), pixelAt(image, 0, 69));
}

TEST_F(Wall, FilesAndForeignBytesGoThroughTheInstalledHelper) {
    ASSERT_TRUE(io::decoderProgram().has_value()) << "the helper lies beside this test";
    const CGImage image = randomValidPicture(12, 9, 2);
    const Bytes png = *encodeImage(image, kUTTypePNG);
    const auto foreign = decodeForeignImage(png);
    ASSERT_TRUE(foreign);
    EXPECT_TRUE(samePixels(foreign->image, image));
    std::string path = (std::filesystem::temp_directory_path() / "wallXXXXXX").string();
    const io::FileDescriptor file(::mkstemp(path.data()));
    ASSERT_EQ(::write(file.number(), png.data(), png.size()), static_cast<ssize_t>(png.size()));
    for (const auto& decoded : {decodeImageFile(path), decodeOwnImageFile(path)}) {
        ASSERT_TRUE(decoded);
        EXPECT_TRUE(samePixels(decoded->image, image));
    }
    std::filesystem::remove(path);
}

TEST_F(Wall, NamesTheWallsThatStand) {
    std::vector<std::string> names;
    for (const DecoderWall& wall : decoderWalls()) names.push_back(wall.name);
    EXPECT_EQ(names, (std::vector<std::string>{"helper program", "no new privileges",
                                               "resource limits", "seccomp", "landlock"}));
    EXPECT_TRUE(decoderWalls().front().stands);
}

TEST(DecodeImageFile, NamesTheReasonWhyAFileCannotBeRead) {
    const auto missing = decodeImageFile("/nonexistent/picture.png");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, ErrorCode::NotFound);
    EXPECT_EQ(missing.error().message, "No such file or directory");
    const auto folder = decodeImageFile("/tmp");
    ASSERT_FALSE(folder);
    EXPECT_EQ(folder.error().code, ErrorCode::CannotRead);
    EXPECT_EQ(folder.error().message, "Is a directory");
    const auto device = decodeImageFile("/dev/zero");
    ASSERT_FALSE(device);
    EXPECT_EQ(device.error().code, ErrorCode::CannotRead);
}

}  // namespace
}  // namespace skarnel
