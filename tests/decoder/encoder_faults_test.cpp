// What this side of the encoder's wall does where the system gives it nothing, or the helper breaks
// off: a reason, or the file all the same. The helper is a shell script here.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "imaging/io/encoder_wall.h"
#include "imaging/io/pictures.h"
#include "storage/temporary_folder.h"
#include "util/interruptions.h"
#include "util/limited_to.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

class EncoderFaults : public ::testing::Test {
  protected:
    /// What becomes of a picture that a helper of these lines of shell is given.
    Result<Bytes> encoded(const std::string& body, const ImageProperties& properties = {}) const {
        const std::string path = folder_ / "helper";
        std::ofstream(path) << "#!/bin/sh\n" << body << "\n";
        ::chmod(path.c_str(), 0700);
        return io::encodeBehindWall(path, image_, kUTTypeWebP, properties);
    }

    // Larger than what the system keeps of a request that nobody reads.
    const CGImage image_ = CGImage(*PixelBuffer::zeroed(1000, 1000));

  private:
    const test::TemporaryFolder folder_;
};

/// Reads the whole request; then a file of the one byte "x".
constexpr const char* kGivesX =
    "cat <&3 >/dev/null; printf '\\005\\104\\113\\123\\001\\0\\0\\0\\0\\0\\0\\0x' >&4";

TEST_F(EncoderFaults, WaitingGoesOnAfterASignal) {
    const test::Interruptions interruptions;
    // The request waits for its reader, and then the answer's reader for its writer.
    const auto file = encoded("sleep 0.1; " + std::string(kGivesX) + "; sleep 0.1");
    ASSERT_TRUE(file) << file.error().message;
    EXPECT_EQ(*file, Bytes{'x'});
}

TEST_F(EncoderFaults, AFileMayBeLargerByWhatThePropertiesSay) {
    const ImageProperties facts{{std::string(kPropertyExifBlock), Bytes(300'000, 1)},
                                {std::string(kPropertyDpiWidth), 300.0}};
    const auto file = encoded(kGivesX, facts);
    ASSERT_TRUE(file) << file.error().message;
    EXPECT_EQ(*file, Bytes{'x'});
    // One that is gone after the first bytes does not get the properties either.
    EXPECT_FALSE(encoded("exec 3<&-", facts));
}

TEST_F(EncoderFaults, AHelperWithoutWallsSaysSo) {
    for (const char* body : {"exit 3", "cat <&3 >/dev/null; exit 3"}) {
        const auto file = encoded(body);
        ASSERT_FALSE(file) << body;
        EXPECT_EQ(file.error().message, "The walls around the encoder cannot be raised") << body;
    }
}

TEST_F(EncoderFaults, OneThatTalksOnIsNotWaitedFor) {
    const auto file = encoded("cat <&3 >/dev/null; head -c 5000 /dev/zero >&4; exec sleep 1000");
    ASSERT_FALSE(file);
    EXPECT_EQ(file.error().message, "The picture cannot be encoded: the encoder ended early");
}

TEST_F(EncoderFaults, WithoutDescriptorsThereIsAReason) {
    const rlim_t used = test::descriptorsInUse();
    // Two for the request, two for the answer. With more the helper is started, or is not.
    for (rlim_t limit = used; limit < used + 4; ++limit) {
        const test::LimitedTo few(RLIMIT_NOFILE, limit);
        const auto file = io::encodeBehindWall("/bin/true", image_, kUTTypeWebP, {});
        ASSERT_FALSE(file) << limit;
        EXPECT_EQ(file.error().message, "The encoder: Too many open files") << limit;
    }
}

}  // namespace
}  // namespace skarnel
