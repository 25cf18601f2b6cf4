// A limit on this process, so that the system refuses what it grants as a rule.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

namespace skarnel::test {

/// Gives the limit back that there was before. A file's limit (RLIMIT_FSIZE) is an error of its
/// writing meanwhile, not the end of the process.
class LimitedTo {
  public:
    LimitedTo(__rlimit_resource resource, rlim_t value) : resource_(resource) {
        EXPECT_EQ(::getrlimit(resource, &before_), 0);
        const rlimit limit{value, before_.rlim_max};
        EXPECT_EQ(::setrlimit(resource, &limit), 0);
        handler_ = ::signal(SIGXFSZ, SIG_IGN);
    }
    ~LimitedTo() {
        ::signal(SIGXFSZ, handler_);
        ::setrlimit(resource_, &before_);
    }
    LimitedTo(const LimitedTo&) = delete;
    LimitedTo& operator=(const LimitedTo&) = delete;

  private:
    __rlimit_resource resource_;
    rlimit before_{};
    sighandler_t handler_;
};

/// With this as RLIMIT_NOFILE there is no descriptor left.
inline rlim_t descriptorsInUse() {
    const int next = ::dup(STDOUT_FILENO);
    ::close(next);
    return static_cast<rlim_t>(next);
}

}  // namespace skarnel::test
