#include "decoder/cell.h"

#include <malloc.h>
#include <pthread.h>
#include <sched.h>
#include <seccomp.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <memory>
#include <optional>

#include "util/walls/landlock.h"
#include "util/walls/seccomp_support.h"

namespace skarnel {
namespace {

struct ReleaseFilter {
    void operator()(void* filter) const { seccomp_release(filter); }
};
using Filter = std::unique_ptr<void, ReleaseFilter>;

void limitTo(__rlimit_resource resource, std::uint64_t value) {
    rlimit limit{};
    if (::getrlimit(resource, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max = std::min<rlim_t>(limit.rlim_max, value);
    ::setrlimit(resource, &limit);
}

/// Of threads that are made from now on. The C library takes the limit of the main thread's stack
/// for them, which a user may have raised over all that may be written to; a codec whose thread
/// cannot be made waits for it for ever.
void boundThreadStacks() {
    constexpr std::size_t kStackBytes = std::size_t{2} << 20U;
    pthread_attr_t attributes;
    if (::pthread_attr_init(&attributes) != 0) return;
    ::pthread_attr_setstacksize(&attributes, kStackBytes);
    ::pthread_setattr_default_np(&attributes);
    ::pthread_attr_destroy(&attributes);
}

/// The C library gives each thread a heap of its own. For the ninth it looks how many processors
/// there are, and before it returns part of one to the kernel how that counts memory: in files,
/// which ends a process in the cell.
void shareTheHeap() {
    ::mallopt(M_ARENA_MAX, 1);
}

/// Ends the process; none where there are too many queued signals, as one of which it counts.
std::optional<timer_t> timerThatEnds(std::chrono::milliseconds limit, int flags) {
    sigevent end{};
    end.sigev_notify = SIGEV_SIGNAL;
    end.sigev_signo = SIGKILL;
    timer_t timer{};
    if (::timer_create(CLOCK_PROCESS_CPUTIME_ID, &end, &timer) != 0) return std::nullopt;
    const auto whole = std::chrono::floor<std::chrono::seconds>(limit);
    itimerspec at{};
    at.it_value.tv_sec = whole.count();
    at.it_value.tv_nsec = std::chrono::nanoseconds(limit - whole).count();
    ::timer_settime(timer, flags, &at, nullptr);
    return timer;
}

/// Whole seconds are coarse, so a timer ends the process before; they hold without it. They are
/// counted by the clock's ticks, which may run ahead of what was used, so there is one to spare.
void limitProcessorTime(std::chrono::milliseconds limit) {
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(limit) + std::chrono::seconds(1);
    limitTo(RLIMIT_CPU, static_cast<std::uint64_t>(seconds.count()));
    (void)timerThatEnds(limit, TIMER_ABSTIME);
}

void limitResources(const CellLimits& limits) {
    if (limits.threads == CellLimits::Threads::Many) {
        boundThreadStacks();
        shareTheHeap();
    }
    limitTo(RLIMIT_AS, limits.memoryBytes);
    limitTo(RLIMIT_DATA, limits.dataBytes);
    limitTo(RLIMIT_FSIZE, 0);
    limitProcessorTime(limits.processorTime);
    limitTo(RLIMIT_CORE, 0);
    // Threads count as the user's processes, of which there are others.
    if (limits.threads == CellLimits::Threads::One) limitTo(RLIMIT_NPROC, 0);
    limitTo(RLIMIT_MEMLOCK, 0);
}

/// One by one where the kernel cannot close a range.
void closeFrom(unsigned first, unsigned last) {
    if (::syscall(SYS_close_range, first, last, 0U) == 0) return;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    const auto end = static_cast<unsigned>(std::min<rlim_t>(limit.rlim_cur, last));
    for (unsigned i = first; i <= end; ++i) ::close(static_cast<int>(i));
}

/// All but the standard three and the two that are needed.
void closeOthers(int picture, int answer) {
    const unsigned first = static_cast<unsigned>(std::min(picture, answer));
    const unsigned second = static_cast<unsigned>(std::max(picture, answer));
    if (first > 3) closeFrom(3U, first - 1);
    if (second > first + 1) closeFrom(first + 1, second - 1);
    closeFrom(second + 1, ~0U);
}

int allow(scmp_filter_ctx filter, int call) {
    return seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 0);
}

int allowOn(scmp_filter_ctx filter, int call, int descriptor) {
    return seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 1,
                            SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(descriptor)));
}

/// Memory may be had, never such that can be executed or that a descriptor stands for.
int allowMemory(scmp_filter_ctx filter) {
    const scmp_arg_cmp isData = SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0);
    int failed = seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(mprotect), 1, isData);
    failed |= seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(mmap), 2, isData,
                               SCMP_A3(SCMP_CMP_MASKED_EQ, MAP_ANONYMOUS, MAP_ANONYMOUS));
    for (const int call : {SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise), SCMP_SYS(brk)}) {
        failed |= allow(filter, call);
    }
    return failed;
}

int allowTheRest(scmp_filter_ctx filter) {
    int failed = 0;
    // What the run-time library does by itself: locks, clocks, the end of the process.
    for (const int call : {SCMP_SYS(futex), SCMP_SYS(clock_gettime), SCMP_SYS(gettimeofday),
                           SCMP_SYS(time), SCMP_SYS(getrandom), SCMP_SYS(rt_sigreturn),
                           SCMP_SYS(restart_syscall), SCMP_SYS(exit), SCMP_SYS(exit_group)}) {
        failed |= allow(filter, call);
    }
    // Sorting asks how much memory the machine has, and does without an answer.
    failed |= seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(sysinfo), 0);
    return failed;
}

/// Threads of this process, and what the C library does to begin and end one.
int allowThreads(scmp_filter_ctx filter) {
    int failed = seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(clone), 1,
                                  SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD));
    // Its flags lie in memory, where no filter can look; the library falls back to clone.
    failed |= seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0);
    // Codecs name their threads for debuggers.
    failed |= seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(prctl), 1,
                               SCMP_A0(SCMP_CMP_EQ, PR_SET_NAME));
    for (const int call :
         {SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(rt_sigaction),
          SCMP_SYS(rt_sigprocmask), SCMP_SYS(sched_getaffinity), SCMP_SYS(sched_yield)}) {
        failed |= allow(filter, call);
    }
    return failed;
}

bool raiseSeccomp(int picture, int answer, CellLimits::Threads threads) {
    const Filter filter(seccomp_init(SCMP_ACT_KILL_PROCESS));
    if (!filter) return false;
    int failed = allowMemory(filter.get()) | allowTheRest(filter.get());
    if (threads == CellLimits::Threads::Many) failed |= allowThreads(filter.get());
    for (const int call : {SCMP_SYS(read), SCMP_SYS(lseek), SCMP_SYS(pread64)}) {
        failed |= allowOn(filter.get(), call, picture);
    }
    failed |= allowOn(filter.get(), SCMP_SYS(write), answer);
    return failed == 0 && seccomp_load(filter.get()) == 0;
}

}  // namespace

// The soft limits alone: the hard ones could not be raised again.
ScanLimits::ScanLimits() {
    constexpr rlim_t kMostData = rlim_t{256} << 20U;
    constexpr std::chrono::seconds kMostTime{1};
    ::getrlimit(RLIMIT_DATA, &data_);
    ::getrlimit(RLIMIT_CPU, &time_);
    const rlimit data{std::min(data_.rlim_cur, kMostData), data_.rlim_max};
    ::setrlimit(RLIMIT_DATA, &data);
    // Where there is no timer: of the whole process, whose start takes a fraction of a second.
    const rlimit time{std::min<rlim_t>(time_.rlim_cur, 2 * kMostTime.count()), time_.rlim_max};
    ::setrlimit(RLIMIT_CPU, &time);
    timer_ = timerThatEnds(kMostTime, 0);
}

ScanLimits::~ScanLimits() {
    if (timer_) ::timer_delete(*timer_);
    ::setrlimit(RLIMIT_DATA, &data_);
    ::setrlimit(RLIMIT_CPU, &time_);
}

Result<void> raiseOuterWalls(int picture, int answer, const CellLimits& limits) {
    // The C library reads the time zone's file at the first broken-down time, which the colour
    // library asks for; there will be no files then.
    ::tzset();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    closeOthers(picture, answer);
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        return {ErrorCode::Failed, "New privileges cannot be given up"};
    }
    // Missing on old kernels; the system calls are taken away in any case where that can be.
    (void)restrictFileAccess(FileAccess::Execute | FileAccess::Read | FileAccess::Change, {});
    limitResources(limits);
    // After Landlock, whose rule set is a descriptor for a moment.
    limitTo(RLIMIT_NOFILE, static_cast<std::uint64_t>(std::max(picture, answer)) + 1);
    return {};
}

Result<void> lockIn(int picture, int answer, const CellLimits& limits) {
    if (auto raised = raiseOuterWalls(picture, answer, limits); !raised) return raised;
    if (!kernelHasSeccomp()) return {};
    if (!raiseSeccomp(picture, answer, limits.threads)) {
        return {ErrorCode::Failed, "The system calls cannot be restricted"};
    }
    return {};
}

}  // namespace skarnel
