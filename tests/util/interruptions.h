// Signals that interrupt whatever waits in the system.
#pragma once

#include <pthread.h>
#include <signal.h>
#include <sys/time.h>

#include <atomic>
#include <thread>

namespace skarnel::test {

/// While it lives, a signal every millisecond, taken by the thread that made it: calls that wait
/// end with EINTR. One at a time.
class Interruptions {
  public:
    Interruptions() {
        count() = 0;
        struct sigaction action {};
        action.sa_handler = [](int) { ++count(); };  // no SA_RESTART
        ::sigaction(SIGALRM, &action, &before_);
        const itimerval often{{0, 1000}, {0, 1000}};
        ::setitimer(ITIMER_REAL, &often, nullptr);
    }
    ~Interruptions() {
        const itimerval never{};
        ::setitimer(ITIMER_REAL, &never, nullptr);
        ::sigaction(SIGALRM, &before_, nullptr);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

    /// For another thread: waits until so many have come.
    static void await(int wanted) {
        while (count() < wanted) std::this_thread::yield();
    }

  private:
    static std::atomic<int>& count() {
        static std::atomic<int> seen{0};
        return seen;
    }
    struct sigaction before_ {};
};

/// A thread that the signals pass by.
template <typename Work>
std::thread uninterruptedThread(Work work) {
    sigset_t alarm;
    sigset_t before;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    ::pthread_sigmask(SIG_BLOCK, &alarm, &before);
    std::thread thread(std::move(work));
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

}  // namespace skarnel::test
