// Where helper programs are looked for.
#include "util/walls/helper_program.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace skarnel {
namespace {

TEST(HelperProgram, IsFoundBesideThisProgramAndNowhereElse) {
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(findHelperProgram(self.filename().string()), self.string());
    EXPECT_EQ(findHelperProgram("sh"), std::nullopt);
}

}  // namespace
}  // namespace skarnel
