#include "cli/interrupt.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <string_view>

namespace skarnel::cli {
namespace {

constexpr std::array kInterrupts = {SIGINT, SIGTERM, SIGHUP};

// What a signal handler may touch.
volatile std::sig_atomic_t pendingSignal = 0;
volatile std::sig_atomic_t openScopes = 0;
volatile std::sig_atomic_t progressLine = 0;

/// The name of a folder, ended by a zero; empty where there is none.
std::array<char, PATH_MAX> folderToRemove{};

/// By system calls alone, as a signal handler must.
void removeFolder(const char* path) {
    const int folder = ::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    alignas(dirent64) std::array<char, 4096> entries;
    for (long count = 0;
         (count = ::syscall(SYS_getdents64, folder, entries.data(), entries.size())) > 0;) {
        for (long at = 0; at < count;) {
            const auto* entry = reinterpret_cast<const dirent64*>(entries.data() + at);
            ::unlinkat(folder, entry->d_name, 0);
            at += entry->d_reclen;
        }
    }
    ::close(folder);
    ::rmdir(path);
}

[[noreturn]] void endNow(int signal) {
    if (progressLine != 0) {
        constexpr std::string_view kWipeLine = "\r\x1b[K";
        // Nothing can be done if even this cannot be written.
        [[maybe_unused]] const ssize_t wiped =
            ::write(STDERR_FILENO, kWipeLine.data(), kWipeLine.size());
    }
    if (folderToRemove[0] != 0) removeFolder(folderToRemove.data());
    ::_exit(128 + signal);
}

void onSignal(int signal) {
    // The kernel picks any thread that does not block the signal, a toolkit's too. The first one
    // does the work, so that there nothing goes on beside the end.
    if (::gettid() != ::getpid()) {
        ::tgkill(::getpid(), ::getpid(), signal);
        return;
    }
    if (openScopes == 0) endNow(signal);
    pendingSignal = signal;
}

sigset_t interruptSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kInterrupts) sigaddset(&signals, signal);
    return signals;
}

}  // namespace

void installInterruptHandlers() {
    struct sigaction action = {};
    action.sa_handler = onSignal;  // without SA_RESTART, so that a waiting parent wakes up
    sigemptyset(&action.sa_mask);
    for (const int signal : kInterrupts) {
        struct sigaction before = {};
        // A program started with nohup keeps ignoring the hang-up.
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
        ::sigaction(signal, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

UninterruptedScope::UninterruptedScope() {
    openScopes = openScopes + 1;
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

UninterruptedScope::~UninterruptedScope() {
    std::atomic_signal_fence(std::memory_order_seq_cst);
    openScopes = openScopes - 1;
    if (openScopes == 0 && pendingSignal != 0) endNow(pendingSignal);
}

FolderGoneAtInterrupt::FolderGoneAtInterrupt() {
    const UninterruptedScope untilNamed;
    folder_.emplace();
    const std::string& path = folder_->path();
    if (path.size() < folderToRemove.size()) path.copy(folderToRemove.data(), path.size());
}

FolderGoneAtInterrupt::~FolderGoneAtInterrupt() {
    const UninterruptedScope untilGone;
    folder_.reset();
    folderToRemove.fill(0);
}

int interruptingSignal() {
    return pendingSignal;
}

void resetInterruptsInChild() {
    openScopes = 0;
    progressLine = 0;
    folderToRemove[0] = 0;  // the parent's too
    // What came since the fork, or to the parent before it, still waits.
    if (pendingSignal != 0) endNow(pendingSignal);
}

int pollOrSignal(pollfd* descriptors, std::size_t count) {
    // Signals are held back between the look and the wait, or one in between would be slept over.
    const sigset_t signals = interruptSignals();
    sigset_t before;
    ::sigprocmask(SIG_BLOCK, &signals, &before);
    int result = -1;
    if (pendingSignal == 0) {
        result = ::ppoll(descriptors, count, nullptr, &before);
    } else {
        errno = EINTR;
    }
    const int error = errno;
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return result;
}

void noteProgressLine(bool stands) {
    progressLine = stands ? 1 : 0;
}

}  // namespace skarnel::cli
