// The decoder's cell from outside: a probe in a decoder's place is denied everything.
#include "decoder/cell.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <iterator>
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

constexpr int kPatience = 20'000;  // milliseconds until a condition counts as failed

/// Becomes the probe, run as the decoder would be, with one descriptor too many.
[[noreturn]] void becomeProbe(const std::vector<std::string>& arguments, int answer) {
    while (::open("/dev/null", O_RDWR) < 3) {
    }
    // Both may be read and written, so that only the cell can forbid it.
    const int picture = ::memfd_create("picture", 0);
    if (::ftruncate(picture, 4096) != 0) ::_exit(98);
    const std::string end = "/proc/self/fd/" + std::to_string(answer);
    const int both = ::open(end.c_str(), O_RDWR);
    // By way of numbers that nothing has, since either may stand in a place that is needed.
    ::dup2(both, 20);
    ::dup2(picture, 21);
    ::dup2(21, 9);
    ::dup2(21, 3);
    ::dup2(20, 4);
    std::vector<std::string> all = {DECODER_PROBE};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> raw;
    for (std::string& argument : all) raw.push_back(argument.data());
    raw.push_back(nullptr);
    ::execv(raw[0], raw.data());
    ::_exit(99);
}

bool nothingElse() {
    return true;
}

/// Runs the probe after `prepare` in its process; its wait status, and what it used where asked
/// for.
int runProbe(const std::vector<std::string>& arguments, bool (*prepare)() = nothingElse,
             rusage* used = nullptr) {
    int answer[2];
    if (::pipe2(answer, O_CLOEXEC) != 0) return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        if (!prepare()) ::_exit(97);
        becomeProbe(arguments, answer[1]);
    }
    ::close(answer[1]);
    int status = 0;
    ::wait4(child, &status, 0, used);
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

/// Makes the kernel look like one from before it could close a range of descriptors.
bool takeCloseRangeAway() {
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_close_range, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(program), program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter, 0, 0) == 0 &&
           ::syscall(SYS_close_range, 900U, 900U, 0U) != 0;
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
                      "ask for limits", "set a timer", "put off a timer", "remove a timer",
                      "make a memory file", "change the folder", "set up kernel queues",
                      "use an inherited descriptor", "start a thread"),
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
    EXPECT_TRUE(succeeded(runProbe({"MANY", "free the memory of threads"})));
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
                            "set a timer",
                            "put off a timer",
                            "remove a timer",
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

/// Of its own and of the kernel for it, all threads together.
std::chrono::microseconds processorTime(const rusage& used) {
    return std::chrono::seconds(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           std::chrono::microseconds(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
}

TEST(Cell, EndsWhatTakesLongerToTheMillisecondsOfAllThreads) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    using std::chrono::milliseconds;
    for (const char* act : {"spin for four seconds", "spin in eight threads"}) {
        rusage used{};
        const int status = runProbe({"BRIEF", act}, nothingElse, &used);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << act << " " << status;
        // Whole seconds could not end it before 1,000. A processor looks at the time at each of its
        // ticks, of ten milliseconds at most.
        EXPECT_GE(processorTime(used), milliseconds(290)) << act;
        EXPECT_LT(processorTime(used), milliseconds(800)) << act;
    }
}

TEST(Cell, EndsWhatTakesLongerAfterWholeSecondsWhereThereMayBeNoTimer) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    const auto takeTimersAway = [] {
        const rlimit none{0, 0};
        return ::setrlimit(RLIMIT_SIGPENDING, &none) == 0;
    };
    rusage used{};
    const int status = runProbe({"BRIEF", "spin in eight threads"}, takeTimersAway, &used);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    // Two seconds, as the kernel's ticks count them; no timer ended it after 300 milliseconds.
    EXPECT_GE(processorTime(used), std::chrono::milliseconds(800));
}

TEST(Cell, ClosesDescriptorsOneByOneWhereTheKernelClosesNoRange) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs memory of its own";
    EXPECT_TRUE(succeeded(runProbe({"FREE", "use an inherited descriptor"}, takeCloseRangeAway)));
    for (const char* walls : {"OUTER", "MANY"}) {
        const int status = runProbe({walls, "use an inherited descriptor"}, takeCloseRangeAway);
        EXPECT_TRUE(wasDenied(status)) << walls << ", status " << status;
    }
    EXPECT_TRUE(succeeded(runProbe({"nothing"}, takeCloseRangeAway)));
}

TEST(Cell, DoesNotOutliveItsParent) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer's run-time needs system calls of its own";
    ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0), 0);  // its orphans come to this process
    int answer[2];
    ASSERT_EQ(::pipe2(answer, O_CLOEXEC), 0);
    int told[2];
    ASSERT_EQ(::pipe2(told, O_CLOEXEC), 0);
    const pid_t parent = ::fork();
    if (parent == 0) {
        const pid_t child = ::fork();
        if (child == 0) becomeProbe({"wait for ever"}, answer[1]);
        ::close(told[0]);
        ::close(answer[1]);
        (void)!::write(told[1], &child, sizeof child);
        for (;;) ::pause();
    }
    ::close(answer[1]);
    ::close(told[1]);
    pid_t probe = -1;
    EXPECT_EQ(::read(told[0], &probe, sizeof probe), static_cast<ssize_t>(sizeof probe));
    char ready = 0;
    EXPECT_EQ(::read(answer[0], &ready, 1), 1) << "the probe is in its cell";
    ::kill(parent, SIGKILL);
    ::waitpid(parent, nullptr, 0);
    // The end of its answer tells that it is gone; one that stays would be waited for forever.
    pollfd gone{answer[0], POLLIN, 0};
    EXPECT_EQ(::poll(&gone, 1, kPatience), 1) << "it goes on";
    if (gone.revents == 0) ::kill(probe, SIGTERM);
    int status = 0;
    EXPECT_EQ(::waitpid(probe, &status, 0), probe);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
    for (const int end : {answer[0], told[0]}) ::close(end);
}

void spin(std::chrono::milliseconds processorTime) {
    const auto spent = [] {
        timespec time{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    const auto end = spent() + processorTime;
    while (spent() < end) {
    }
}

bool hasMemory(std::size_t bytes) {
    void* memory =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return false;
    ::munmap(memory, bytes);
    return true;
}

TEST(ScanLimits, AScanThatTakesMoreThanASecondIsKilled) {
    const auto scan = [] {
        const ScanLimits limits;
        spin(std::chrono::seconds(3));
        ::_exit(0);
    };
    EXPECT_EXIT(scan(), ::testing::KilledBySignal(SIGKILL), "");
}

TEST(ScanLimits, AreGoneAfterwards) {
    if (kSanitized) GTEST_SKIP() << "the sanitizer has memory of its own";
    constexpr std::size_t kMuch = std::size_t{300} << 20U;
    const auto scan = [] {
        rlimit before{};
        ::getrlimit(RLIMIT_CPU, &before);
        {
            const ScanLimits limits;
            if (hasMemory(kMuch)) ::_exit(1);
        }
        rlimit after{};
        ::getrlimit(RLIMIT_CPU, &after);
        spin(std::chrono::milliseconds(1300));
        const bool isSame = before.rlim_cur == after.rlim_cur && before.rlim_max == after.rlim_max;
        ::_exit(hasMemory(kMuch) && isSame ? 0 : 2);
    };
    EXPECT_EXIT(scan(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace skarnel
