// A folder with a text in it, and a signal at any moment of its life.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <random>
#include <thread>

#include "cli/interrupt.h"
#include "storage/temporary_folder.h"

namespace skarnel::cli {
namespace {

using std::chrono::microseconds;

/// Makes, fills and removes such folders until a signal ends it.
[[noreturn]] void keepMakingFolders() {
    for (;;) {
        const FolderGoneAtInterrupt folder;
        if (folder.path().empty()) ::_exit(1);
        for (int i = 0; i < 30; ++i)
            test::putFile(folder.path() + "/text" + std::to_string(i), "secret");
    }
}

/// How such a program ends, with a thread that runs `beside` it: its exit code, or 128 + the number
/// of the signal that ended it, as before it had its handlers.
template <typename Beside, typename Signal>
int endedBy(const std::string& temporary, Beside beside, Signal signal) {
    std::signal(SIGINT, SIG_DFL);  // whoever started this test may have had it ignored
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(60);  // a signal that got lost ends the test
        ::setenv("TMPDIR", temporary.c_str(), 1);
        installInterruptHandlers();
        std::thread(beside).detach();
        keepMakingFolders();
    }
    signal(child);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

TEST(FolderGoneAtInterrupt, LeavesNothingAtAnyMoment) {
    std::mt19937 random(5);
    for (int round = 0; round < 60; ++round) {
        const test::TemporaryFolder temporary;
        const auto wait = microseconds(3000 + random() % 2000);
        const int code = endedBy(
            temporary.path(), [] {},
            [&](pid_t child) {
                std::this_thread::sleep_for(wait);
                ::kill(child, SIGINT);
            });
        EXPECT_EQ(code, 130);
        EXPECT_TRUE(temporary.names().empty()) << temporary.names().front();
    }
}

// The kernel may hand the signal to any thread while the first one is writing.
TEST(FolderGoneAtInterrupt, LeavesNothingWhenAnotherThreadGetsTheSignal) {
    std::mt19937 random(6);
    for (int round = 0; round < 60; ++round) {
        const test::TemporaryFolder temporary;
        const auto wait = microseconds(random() % 2'000);
        const int code = endedBy(
            temporary.path(),
            [=] {
                std::this_thread::sleep_for(wait);
                ::raise(SIGINT);
            },
            [](pid_t) {});
        EXPECT_EQ(code, 130);
        EXPECT_TRUE(temporary.names().empty()) << temporary.names().front();
    }
}

}  // namespace
}  // namespace skarnel::cli
