#include "util/string/script_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include "util/string/javascript_engine.h"

namespace skarnel {
namespace {

using Clock = std::chrono::steady_clock;

/// A script on a busy machine gets this many times its limit on the clock.
constexpr int kClockFactor = 20;

void limitResource(int resource, rlim_t value) {
    const rlimit limit{value, value};
    setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

/// With no descriptor to be had, nothing can be opened: no file, no socket, no device.
void wallOff() {
    limitResource(RLIMIT_NOFILE, 0);
    limitResource(RLIMIT_FSIZE, 0);
    limitResource(RLIMIT_CORE, 0);
}

/// The process ends when it has used up its time on the processor. Time on the clock would fail
/// honest scripts on a busy machine, and a script cannot wait for anything.
void limitTime(std::chrono::milliseconds time) {
    const auto micros = std::chrono::microseconds(time).count();
    const itimerval timer{
        {0, 0},
        {static_cast<time_t>(micros / 1'000'000), static_cast<suseconds_t>(micros % 1'000'000)}};
    setitimer(ITIMER_PROF, &timer, nullptr);
}

/// Handlers and blocked signals of the host program are not for this process.
void resetSignals() {
    for (const int number : {SIGTERM, SIGINT, SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGPIPE, SIGPROF})
        std::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void writeAll(int descriptor, const std::vector<std::uint8_t>& bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        written += static_cast<std::size_t>(count);
    }
}

[[noreturn]] void runInChild(const NSString& source, const ScriptLimits& limits, int output) {
    resetSignals();
    dup2(output, 0);
    close_range(1, ~0U, 0);
    wallOff();
    limitTime(limits.time);
    writeAll(0, evaluateJavaScript(source, limits.memoryBytes));
    _exit(0);
}

/// Reads until the other side closes. False when the deadline or the bound passes first.
bool readAll(int descriptor, Clock::time_point deadline, std::size_t maxBytes,
             std::vector<std::uint8_t>& bytes) {
    std::array<std::uint8_t, 65536> block;
    while (true) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) return false;
        pollfd wait{descriptor, POLLIN, 0};
        const int ready = poll(&wait, 1, static_cast<int>(left));
        if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
        const ssize_t count = read(descriptor, block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count == 0;
        bytes.insert(bytes.end(), block.begin(), block.begin() + count);
        if (bytes.size() > maxBytes) return false;
    }
}

class ForkedScript final : public Script {
  public:
    ForkedScript(NSString source, ScriptLimits limits)
        : source_(std::move(source)), limits_(limits) {}

    std::optional<ScriptDescriptor> execute() override {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
        // Should the process hang without using its time up.
        const Clock::time_point deadline = Clock::now() + kClockFactor * limits_.time;
        const pid_t child = fork();
        if (child == 0) runInChild(source_, limits_, ends[1]);
        close(ends[1]);
        std::vector<std::uint8_t> bytes;
        // The result and its small frames.
        const std::size_t most = (kResultFactor + 1) * limits_.memoryBytes;
        const bool whole = child > 0 && readAll(ends[0], deadline, most, bytes);
        close(ends[0]);
        if (child > 0) {
            if (!whole) kill(child, SIGKILL);
            while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
            }
        }
        return whole ? readScriptResult(bytes) : std::nullopt;
    }

  private:
    NSString source_;
    ScriptLimits limits_;
};

}  // namespace

ScriptDescriptor ScriptDescriptor::list(std::vector<ScriptDescriptor> items) {
    ScriptDescriptor descriptor(kDescriptorList);
    descriptor.items_ = std::move(items);
    return descriptor;
}

std::optional<ScriptDescriptor> ScriptDescriptor::descriptorAtIndex(std::size_t index) const {
    if (index < 1 || index > items_.size()) return std::nullopt;
    return items_[index - 1];
}

JavaScriptRunner::JavaScriptRunner(ScriptLimits limits) : limits_(limits) {
    limits_.time = std::clamp<std::chrono::milliseconds>(limits.time, std::chrono::milliseconds(1),
                                                         std::chrono::hours(1));
}

std::unique_ptr<Script> JavaScriptRunner::scriptWithSource(const NSString& source) {
    return std::make_unique<ForkedScript>(source, limits_);
}

}  // namespace skarnel
