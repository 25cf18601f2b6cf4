// Runs a piece of a test without root's powers, which no permission stops.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace skarnel::test {

inline constexpr unsigned kNobody = 65534;

/// True when `check` gave true in a child process of an ordinary user.
template <typename Check>
bool holdsForAnOrdinaryUser(Check check) {
    const pid_t child = ::fork();
    if (child == 0) {
        const bool ready = ::geteuid() != 0 || (::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
        ::_exit(ready && check() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

/// Hands a path to that user when we are root; otherwise it is ours already.
inline void giveToAnOrdinaryUser(const char* path) {
    if (::geteuid() == 0 && ::chown(path, kNobody, kNobody) != 0) std::abort();
}

}  // namespace skarnel::test
