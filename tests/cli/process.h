// Runs skarnel-render as a user's shell does, and catches all that comes of it.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace skarnel::test {

struct Finished {
    int exitCode = -1;  // 128 + the signal's number when it was killed
    std::string out;
    std::string err;
};

/// A running skarnel-render whose streams are pipes.
class Process {
  public:
    /// `prepare` runs in the child before the program starts: folders, limits, descriptors.
    explicit Process(const std::vector<std::string>& arguments,
                     const std::function<void()>& prepare = {}) {
        std::array<std::array<int, 2>, 3> pipes{};
        for (auto& pipe : pipes) {
            if (::pipe2(pipe.data(), O_CLOEXEC) != 0) std::abort();
        }
        child_ = ::fork();
        if (child_ == 0) {
            ::dup2(pipes[0][0], 0);
            ::dup2(pipes[1][1], 1);
            ::dup2(pipes[2][1], 2);
            // What the programs say is compared, so it is English unless a test asks otherwise.
            ::setenv("LC_ALL", "C", 1);
            ::unsetenv("LANGUAGE");
            if (prepare) prepare();
            std::vector<std::string> copy = {SKARNEL_RENDER};
            copy.insert(copy.end(), arguments.begin(), arguments.end());
            std::vector<char*> pointers;
            for (std::string& argument : copy) pointers.push_back(argument.data());
            pointers.push_back(nullptr);
            ::execv(pointers[0], pointers.data());
            ::_exit(127);
        }
        ::close(pipes[0][0]);
        ::close(pipes[1][1]);
        ::close(pipes[2][1]);
        in_ = pipes[0][1];
        streams_ = {pipes[1][0], pipes[2][0]};
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        if (child_ > 0) ::kill(child_, SIGKILL);
        finish();
    }

    pid_t id() const { return child_; }
    void signal(int number) const { ::kill(child_, number); }

    /// Writes to its standard input and closes it.
    void feed(const std::string& text) {
        std::signal(SIGPIPE, SIG_IGN);
        std::size_t at = 0;
        while (at < text.size()) {
            const ssize_t count = ::write(in_, text.data() + at, text.size() - at);
            if (count <= 0) break;
            at += static_cast<std::size_t>(count);
        }
        ::close(in_);
        in_ = -1;
    }

    /// Reads what comes until `done` says so or all has come; true when `done` did.
    bool readUntil(const std::function<bool(const Finished&)>& done) {
        while (!done(finished_)) {
            if (!readSome()) return done(finished_);
        }
        return true;
    }

    /// Waits for the end. A program that says nothing and goes on for minutes is killed.
    Finished finish() {
        if (in_ >= 0) ::close(in_);
        in_ = -1;
        while (readSome()) {
        }
        int status = 0;
        if (child_ > 0 && ::waitpid(child_, &status, 0) == child_) {
            finished_.exitCode = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        }
        child_ = -1;
        return finished_;
    }

  private:
    // Milliseconds; a page renderer bears with itself for one minute, and with its second start for
    // another.
    static constexpr int kLongestSilence = 180'000;

    bool readSome() {
        std::array<pollfd, 2> waiting = {pollfd{streams_[0], POLLIN, 0},
                                         pollfd{streams_[1], POLLIN, 0}};
        if (streams_[0] < 0 && streams_[1] < 0) return false;
        const int ready = ::poll(waiting.data(), waiting.size(), kLongestSilence);
        if (ready < 0 && errno == EINTR) return true;
        if (ready <= 0) {
            // Not left to itself: what it says later would be lost, and the test's blame with it.
            ::kill(child_, SIGKILL);
            finished_.err += "(the test has waited long enough)";
            return false;
        }
        for (std::size_t i = 0; i < 2; ++i) {
            if (waiting[i].revents == 0) continue;
            std::array<char, 65536> buffer;
            const ssize_t count = ::read(streams_[i], buffer.data(), buffer.size());
            if (count > 0) {
                (i == 0 ? finished_.out : finished_.err)
                    .append(buffer.data(), static_cast<std::size_t>(count));
            } else if (count == 0 || errno != EINTR) {
                ::close(streams_[i]);
                streams_[i] = -1;
            }
        }
        return true;
    }

    pid_t child_ = -1;
    int in_ = -1;
    std::array<int, 2> streams_{-1, -1};
    Finished finished_;
};

inline Finished render(const std::vector<std::string>& arguments, const std::string& input = {},
                       const std::function<void()>& prepare = {}) {
    Process process(arguments, prepare);
    process.feed(input);
    return process.finish();
}

}  // namespace skarnel::test
