#include "util/walls/page_opener.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace skarnel {
namespace {

constexpr timeval kAnswerTime{2, 0};  // for the start of a program, not for what it does

enum Answer : unsigned char { kRefused, kStarted };

void waitFor(pid_t child, int& status) {
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
}

ssize_t readByte(int line, unsigned char& byte) {
    ssize_t got = 0;
    do got = ::read(line, &byte, 1);
    while (got < 0 && errno == EINTR);
    return got;
}

/// Double fork, so that the browser is nobody's zombie; a session of its own, so that it outlives
/// the terminal that the window was started from. The pipe closes when the opener has started, and
/// a byte comes through it when there is none.
Answer startOpener(const std::string& opener, const std::string& url) {
    int failure[2];
    if (::pipe2(failure, O_CLOEXEC) != 0) return kRefused;
    const pid_t child = ::fork();
    if (child == 0) {
        const pid_t grandchild = ::fork();
        if (grandchild == 0) {
            ::setsid();
            ::execlp(opener.c_str(), opener.c_str(), url.c_str(), static_cast<char*>(nullptr));
            const unsigned char refused = kRefused;
            ::_exit(::write(failure[1], &refused, 1) == 1 ? 127 : 126);
        }
        ::_exit(grandchild < 0 ? 1 : 0);
    }
    ::close(failure[1]);
    int status = 0;
    if (child > 0) waitFor(child, status);
    unsigned char byte = 0;
    const bool started = child > 0 && status == 0 && readByte(failure[0], byte) == 0;
    ::close(failure[0]);
    return started ? kStarted : kRefused;
}

/// A request is one byte, the page's place in the list, and so is the answer: there is nothing in
/// them to misread.
[[noreturn]] void serve(int line, const std::string& opener,
                        const std::vector<std::string>& pages) {
    ::signal(SIGINT, SIG_IGN);  // Ctrl-C in a terminal is the window's to handle
    for (;;) {
        unsigned char request = 0;
        if (readByte(line, request) <= 0) ::_exit(0);
        const unsigned char answer =
            request < pages.size() ? startOpener(opener, pages[request]) : kRefused;
        ::send(line, &answer, 1, MSG_NOSIGNAL);
    }
}

}  // namespace

PageOpener::PageOpener(std::vector<std::string> pages, std::string opener)
    : pages_(std::move(pages)) {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return;
    const pid_t first = ::fork();
    if (first == 0) {
        // The server is made by a second fork and taken over by the system, so that the window
        // has no child to wait for.
        if (::fork() != 0) ::_exit(0);
        ::close(ends[0]);
        serve(ends[1], opener, pages_);
    }
    ::close(ends[1]);
    if (first < 0) {
        ::close(ends[0]);
        return;
    }
    int status = 0;
    waitFor(first, status);
    ::setsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &kAnswerTime, sizeof kAnswerTime);
    line_ = ends[0];
}

PageOpener::~PageOpener() {
    if (line_ >= 0) ::close(line_);
}

bool PageOpener::open(std::string_view page) {
    const auto found = std::find(pages_.begin(), pages_.end(), page);
    if (line_ < 0 || found == pages_.end()) return false;
    const auto request = static_cast<unsigned char>(found - pages_.begin());
    unsigned char answer = kRefused;
    while (::recv(line_, &answer, 1, MSG_DONTWAIT) == 1) {  // what came too late for its request
    }
    if (::send(line_, &request, 1, MSG_NOSIGNAL) != 1) return false;
    const ssize_t got = readByte(line_, answer);
    return got == 1 ? answer == kStarted : got < 0 && errno == EAGAIN;
}

}  // namespace skarnel
