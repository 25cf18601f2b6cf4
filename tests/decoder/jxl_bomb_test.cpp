// JPEG XL files of a few bytes that state few pixels and hide many, which only their library finds:
// refused behind the wall, quickly and without much memory.
#include <gtest/gtest.h>

#include "decoder/opened_file.h"
#include "imaging/io/jxl_files.h"
#include "imaging/io/late_codec.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

class JpegXLBomb : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
        if (!imageTypeWithIdentifier(kUTTypeJPEGXL)->canRead || !io::loadJpegXL()) {
            GTEST_SKIP() << "no library for JPEG XL";
        }
    }
};

TEST_F(JpegXLBomb, OfHiddenLayersIsRefusedAtLittleCost) {
    for (const Bytes& file : {
             JxlBuilder(30, 20).layer({8000, 8000, true}).layer({30, 20}).build(),
             JxlBuilder(30, 20).layer({1000, 1000, true}, 100).layer({30, 20}).build(),
             JxlBuilder(30, 20).layer({500, 500, true}, 5000).layer({30, 20}).build(),
         }) {
        EXPECT_LT(file.size(), 100'000U);
        const Outcome outcome = openWithHoles(file, file.size());
        EXPECT_FALSE(outcome.opened) << file.size();
        expectLittleWork(outcome);
    }
}

TEST_F(JpegXLBomb, OfVisibleLayersIsRefusedAtLittleCost) {
    for (const Bytes& file : {
             JxlBuilder(30, 20).layer({30000, 30000}).build(),
             JxlBuilder(1000, 1000).layer({1000, 1000}, 1000).build(),
             JxlBuilder(1000, 1000).layer({1, 1}, 5000).build(),
         }) {
        const Outcome outcome = openWithHoles(file, file.size());
        EXPECT_FALSE(outcome.opened) << file.size();
        expectLittleWork(outcome);
    }
}

TEST_F(JpegXLBomb, IsNoneWhereTheLayersAreSmall) {
    for (const Bytes& file : {
             JxlBuilder(1500, 1100).layer({1500, 1100}).build(),
             JxlBuilder(30, 20).layer({60, 70, true}, 4).layer({30, 20}).build(),
             JxlBuilder(300, 200).layer({300, 200}, 40).layer({10, 5}).build(),
         }) {
        const Outcome outcome = openWithHoles(file, file.size());
        EXPECT_TRUE(outcome.opened) << file.size();
        expectLittleWork(outcome);
    }
}

}  // namespace
}  // namespace skarnel
