// The decoder's cell from outside: a probe in a decoder's place is denied everything.
#include "decoder/cell.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

#include "util/walls/landlock.h"

namespace skarnel {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

/// Runs the probe as the decoder would be run, with one descriptor too many; its wait status.
int runProbe(const std::vector<std::string>& arguments) {
    int answer[2];
    if (::pipe2(answer, O_CLOEXEC) != 0) return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        while (::open("/dev/null", O_RDWR) < 3) {
        }
        // Both may be read and written, so that only the cell can forbid it.
        const int picture = ::memfd_create("picture", 0);
        if (::ftruncate(picture, 4096) != 0) ::_exit(98);
        const std::string end = "/proc/self/fd/" + std::to_string(answer[1]);
        const int both = ::open(end.c_str(), O_RDWR);
        ::dup2(picture, 9);
        ::dup2(both, 20);
        ::dup2(picture, 3);
        ::dup2(20, 4);
        std::vector<std::string> all = {DECODER_PROBE};
        all.insert(all.end(), arguments.begin(), arguments.end());
        std::vector<char*> raw;
        for (std::string& argument : all) raw.push_back(argument.data());
        raw.push_back(nullptr);
        ::execv(raw[0], raw.data());
        ::_exit(99);
    }
    ::close(answer[1]);
    int status = 0;
    ::waitpid(child, &status, 0);
    ::close(answer[0]);
    return status;
}

bool succeeded(int status) {
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool wasDenied(int status) {
    return (WIFSIGNALED(status) && WTERMSIG(status) == SIGSYS) ||
           (WIFEXITED(status) && WEXITSTATUS(status) == 10);
}

class ForbiddenAct : public ::testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    }
};

TEST_P(ForbiddenAct, IsDeniedInTheCell) {
    const int status = runProbe({GetParam()});
    EXPECT_TRUE(wasDenied(status)) << "status " << status;
}

TEST_P(ForbiddenAct, IsDeniedInTheCellOfACodecWithThreads) {
    const int status = runProbe({"MANY", GetParam()});
    if (std::string(GetParam()) == "start a thread") {
        EXPECT_TRUE(succeeded(status)) << "status " << status;
    } else {
        EXPECT_TRUE(wasDenied(status)) << "status " << status;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Acts, ForbiddenAct,
    ::testing::Values("open a file", "open a file for writing", "list a folder",
                      "ask for a file's status", "make a folder", "remove a file",
                      "open a network socket", "open a local socket", "execute a program", "fork",
                      "signal its parent", "trace", "read a process's memory",
                      "write to standard output", "write to the picture",
                      "read the answer's descriptor", "hand over pages", "map the picture",
                      "have executable memory", "make memory executable", "duplicate a descriptor",
                      "ask for limits", "make a memory file", "change the folder",
                      "set up kernel queues", "use an inherited descriptor", "start a thread"),
    [](const auto& row) {
        std::string name = row.param;
        for (char& c : name) {
            if (c == ' ' || c == '\'') c = '_';
        }
        return name;
    });

TEST(Cell, AllowsWhatADecoderNeeds) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    EXPECT_TRUE(succeeded(runProbe({"nothing"})));
}

TEST(Cell, IsWhatDeniesTheActs) {
    // Without the cell the same acts succeed, so that a denial above means something.
    for (const char* act : {"open a file",
                            "list a folder",
                            "ask for a file's status",
                            "open a local socket",
                            "execute a program",
                            "fork",
                            "signal its parent",
                            "hand over pages",
                            "have executable memory",
                            "duplicate a descriptor",
                            "ask for limits",
                            "make a memory file",
                            "change the folder",
                            "use an inherited descriptor",
                            "write to standard output",
                            "open a file for writing",
                            "make a folder",
                            "remove a file",
                            "open a network socket",
                            "trace",
                            "read a process's memory",
                            "write to the picture",
                            "read the answer's descriptor",
                            "map the picture",
                            "make memory executable",
                            "start a thread",
                            "take two gigabytes",
                            "open a file in a free place",
                            "be traced",
                            "outlive its parent"}) {
        // The search for leaks at a process's end gives up where the process is traced.
        if (kSanitized && std::string_view(act) == "trace") continue;
        EXPECT_TRUE(succeeded(runProbe({"FREE", act}))) << act;
    }
}

TEST(Cell, HasWallsThatDoNotNeedSeccomp) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs memory of its own";
    for (const char* act :
         {"take two gigabytes", "duplicate a descriptor", "use an inherited descriptor",
          "gain privileges", "be traced", "outlive its parent"}) {
        EXPECT_TRUE(wasDenied(runProbe({"OUTER", act}))) << act;
    }
    if (landlockVersion() > 0) {
        EXPECT_TRUE(wasDenied(runProbe({"OUTER", "open a file in a free place"})));
    }
    const int written = runProbe({"OUTER", "write to the picture"});
    EXPECT_TRUE(WIFSIGNALED(written) && WTERMSIG(written) == SIGXFSZ) << written;
    const int spun = runProbe({"OUTER", "spin for four seconds"});
    EXPECT_TRUE(WIFSIGNALED(spun) && (WTERMSIG(spun) == SIGKILL || WTERMSIG(spun) == SIGXCPU))
        << spun;
}

}  // namespace
}  // namespace skarnel
