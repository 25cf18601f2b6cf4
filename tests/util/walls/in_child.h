// Runs a check in a child process, since a raised wall cannot be taken down again.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace skarnel::testing {

/// The check's return value, 0..255, as the child's exit status; -1 when the child died otherwise.
inline int exitStatusOfChild(const std::function<int()>& check) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(check());
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace skarnel::testing
