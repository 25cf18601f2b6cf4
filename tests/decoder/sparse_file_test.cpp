// Files that say they have gigabytes, most of them holes: no more of them is looked at than the
// picture that their head promises can have.
#include <gtest/gtest.h>

#include "decoder/opened_file.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

class SparseFile : public ::testing::TestWithParam<std::string_view> {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    }
    /// Noise, so that no format makes next to nothing of it.
    Bytes picture() const { return *encodeImage(randomValidPicture(300, 200, 5), GetParam()); }
};

TEST_P(SparseFile, WithAWholePictureInFrontIsReadNoFurther) {
    const Outcome outcome = openWithHoles(picture(), io::kMaxFileBytes);
    EXPECT_TRUE(outcome.opened);
    expectLittleWork(outcome);
}

TEST_P(SparseFile, WithHalfAPictureInFrontCostsLittle) {
    const Bytes whole = picture();
    expectLittleWork(openWithHoles(ByteView(whole).first(whole.size() / 2), io::kMaxFileBytes));
}

TEST_P(SparseFile, WithAHeadAloneCostsLittle) {
    const Outcome outcome = openWithHoles(ByteView(picture()).first(30), io::kMaxFileBytes);
    // To a bitmap a hole is a black stretch.
    EXPECT_EQ(outcome.opened, GetParam() == kUTTypeBMP);
    expectLittleWork(outcome);
}

INSTANTIATE_TEST_SUITE_P(Formats, SparseFile,
                         ::testing::Values(kUTTypeJPEG, kUTTypePNG, kUTTypeTIFF, kUTTypeBMP,
                                           kUTTypeWebP, kUTTypeJPEG2000),
                         [](const auto& row) {
                             return std::string(
                                 imageTypeWithIdentifier(row.param)->preferredExtension);
                         });

}  // namespace
}  // namespace skarnel
