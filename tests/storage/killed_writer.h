// A writing process that is killed at random moments, and what it tells until then.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <new>
#include <random>
#include <thread>

#include "storage/temporary_folder.h"

namespace skarnel::test {

/// A counter that parent and child both see.
class SharedCounter {
  public:
    SharedCounter()
        : memory_(::mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE,
                         MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
          count_(new (memory_) std::atomic<int>(0)) {}
    SharedCounter(const SharedCounter&) = delete;
    SharedCounter& operator=(const SharedCounter&) = delete;
    ~SharedCounter() { ::munmap(memory_, sizeof(std::atomic<int>)); }
    std::atomic<int>& operator*() { return *count_; }

  private:
    void* memory_;
    std::atomic<int>* count_;
};

/// How many kills a test makes.
inline int rounds() {
    return isLongRun() ? 2000 : 300;
}

/// Runs `work` in a child and kills it after a random time of at most 12 ms.
inline void killAtRandom(std::mt19937& random, const std::function<void()>& work) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        work();
        ::_exit(0);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 12'000));
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
}

}  // namespace skarnel::test
