// Whoever runs the program without one of the decoder's walls is told so.
#include <gmock/gmock.h>

#include "cli/pictures.h"
#include "cli/process.h"
#include "decoder/kernel_without_seccomp.h"
#include "storage/temporary_folder.h"
#include "util/walls/seccomp_support.h"
#include "util/walls/without_proc.h"

namespace skarnel {
namespace {

using test::Finished;
using test::render;
using ::testing::HasSubstr;
using ::testing::Not;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

const std::string kSaid = "Pictures are decoded without this wall: seccomp\n";

void loseSeccomp() {
    if (!testing::takeSeccompAway()) ::_exit(98);
}

void loseProc() {
    if (!test::hideProc()) ::_exit(98);
}

class MissingWalls : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitized program has no helper to wall in";
        test::putPicture(folder_ / "one.png", 30, 20);
    }
    const test::TemporaryFolder folder_;
};

TEST_F(MissingWalls, StandInTheReportOfTheVersion) {
    const Finished without = render({"--version", "--json"}, {}, loseSeccomp);
    EXPECT_EQ(without.exitCode, 0);
    EXPECT_THAT(without.out, HasSubstr("\"helper program\":true"));
    EXPECT_THAT(without.out, HasSubstr("\"seccomp\":false"));
    const Finished here = render({"--version", "--json"});
    EXPECT_THAT(here.out, HasSubstr(kernelHasSeccomp() ? "\"seccomp\":true" : "\"seccomp\":false"));
}

TEST_F(MissingWalls, AreNamedInTheLogOnce) {
    const std::vector<std::string> arguments = {"--verbose", "--force", folder_ / "one.png", "-o",
                                                folder_ / "out.png"};
    const Finished without = render(arguments, {}, loseSeccomp);
    EXPECT_EQ(without.exitCode, 0) << without.err;
    const std::size_t at = without.err.find(kSaid);
    ASSERT_NE(at, std::string::npos) << without.err;
    EXPECT_EQ(without.err.find(kSaid, at + 1), std::string::npos) << without.err;
    if (kernelHasSeccomp()) {
        EXPECT_THAT(render(arguments).err, Not(HasSubstr(kSaid)));
    }
}

/// The helper is looked for beside the program, whose place /proc tells.
TEST_F(MissingWalls, WithoutProcAreAllNamedAndTheResultIsTheSame) {
    if (!test::canHideProc()) GTEST_SKIP() << "/proc cannot be hidden here";
    const auto arguments = [&](const std::string& result) {
        return std::vector<std::string>{"--verbose", folder_ / "one.png", "-o", folder_ / result};
    };
    const Finished here = render(arguments("here.png"));
    EXPECT_EQ(here.exitCode, 0) << here.err;
    EXPECT_THAT(here.err, Not(HasSubstr("this wall: helper program")));
    const Finished without = render(arguments("without.png"), {}, loseProc);
    EXPECT_EQ(without.exitCode, 0) << without.err;
    for (const char* wall :
         {"helper program", "no new privileges", "resource limits", "seccomp", "landlock"}) {
        EXPECT_THAT(without.err, HasSubstr(std::string("Pictures are decoded without this wall: ") +
                                           wall + "\n"));
    }
    EXPECT_EQ(test::fileText(folder_ / "without.png"), test::fileText(folder_ / "here.png"));
    EXPECT_NE(test::fileText(folder_ / "here.png"), "(none)");
    EXPECT_THAT(render({"--version", "--json"}, {}, loseProc).out,
                HasSubstr("\"helper program\":false"));
}

}  // namespace
}  // namespace skarnel
