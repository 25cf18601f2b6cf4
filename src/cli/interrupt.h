// Ctrl-C and its kin: at once where nothing is half done, after the file where one is.
#pragma once

#include <poll.h>

#include <cstddef>
#include <string>

namespace skarnel::cli {

/// From now on SIGINT, SIGTERM and SIGHUP end the program with 128 + their number: at once, or
/// when the last UninterruptedScope ends. SIGPIPE and SIGXFSZ become errors of the write itself.
void installInterruptHandlers();

/// While one lives, a signal is only noted.
class UninterruptedScope {
  public:
    UninterruptedScope();
    ~UninterruptedScope();  // ends the program if a signal came and no other scope lives
    UninterruptedScope(const UninterruptedScope&) = delete;
    UninterruptedScope& operator=(const UninterruptedScope&) = delete;
};

/// While one lives, a signal that ends the program at once removes a folder and the files in it,
/// which has no folders in it. One at a time, in the process that made it; an empty path stands for
/// no folder.
class RemovedAtInterrupt {
  public:
    explicit RemovedAtInterrupt(const std::string& path);
    ~RemovedAtInterrupt();
    RemovedAtInterrupt(const RemovedAtInterrupt&) = delete;
    RemovedAtInterrupt& operator=(const RemovedAtInterrupt&) = delete;
};

/// The signal that came during a scope, or 0.
int interruptingSignal();

/// In a child process of a scope's owner: the scope is the parent's, signals count at once.
void resetInterruptsInChild();

/// Waits like poll without a limit of time, and returns -1 with EINTR when a signal came, also one
/// that came just before. Within an UninterruptedScope.
int pollOrSignal(pollfd* descriptors, std::size_t count);

/// Whether a progress line stands on the terminal, to be wiped before the program ends.
void noteProgressLine(bool stands);

}  // namespace skarnel::cli
