// A system whose /proc shows nothing, for the calling process and what it starts.
#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace skarnel::test {

/// Puts an empty folder over /proc in a view of the file system that only this process and its
/// children have. False where nothing may be mounted. The process has to have one thread.
inline bool hideProc() {
    return (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", "/proc", "tmpfs", MS_RDONLY, "size=4k") == 0 &&
           ::access("/proc/self", F_OK) != 0;
}

/// Whether a child of this process could.
inline bool canHideProc() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(hideProc() ? 0 : 1);
    int status = -1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace skarnel::test
