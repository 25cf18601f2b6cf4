// Ctrl-C and its kin: at once where nothing is half done, after the file where one is.
#pragma once

#include <poll.h>

#include <cstddef>
#include <optional>
#include <string>

#include "storage/private_folder.h"

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

/// A private folder that leaves nothing behind when a signal ends the program, at whatever moment.
/// It has no folders in it. One at a time, in the process that made it.
class FolderGoneAtInterrupt {
  public:
    FolderGoneAtInterrupt();
    ~FolderGoneAtInterrupt();
    FolderGoneAtInterrupt(const FolderGoneAtInterrupt&) = delete;
    FolderGoneAtInterrupt& operator=(const FolderGoneAtInterrupt&) = delete;
    /// Empty when it could not be made.
    const std::string& path() const { return folder_->path(); }

  private:
    std::optional<PrivateFolder> folder_;
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
