#include "util/walls/page_opener.h"

#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace skarnel {
namespace {

/// Double fork, so that the browser is nobody's zombie; a session of its own, so that it outlives
/// the terminal that the window was started from.
void startOpener(const std::string& opener, const std::string& url) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::fork() == 0) {
            ::setsid();
            ::execlp(opener.c_str(), opener.c_str(), url.c_str(), static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::_exit(0);
    }
    int status = 0;
    while (child > 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
}

/// A request is one byte, the page's place in the list: there is nothing in it to misread.
[[noreturn]] void serve(int line, const std::string& opener,
                        const std::vector<std::string>& pages) {
    ::signal(SIGINT, SIG_IGN);  // Ctrl-C in a terminal is the window's to handle
    for (;;) {
        unsigned char request = 0;
        const ssize_t got = ::read(line, &request, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) ::_exit(0);
        if (request < pages.size()) startOpener(opener, pages[request]);
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
    while (::waitpid(first, &status, 0) < 0 && errno == EINTR) {
    }
    line_ = ends[0];
}

PageOpener::~PageOpener() {
    if (line_ >= 0) ::close(line_);
}

bool PageOpener::open(std::string_view page) {
    const auto found = std::find(pages_.begin(), pages_.end(), page);
    if (line_ < 0 || found == pages_.end()) return false;
    const auto request = static_cast<unsigned char>(found - pages_.begin());
    return ::send(line_, &request, 1, MSG_NOSIGNAL) == 1;
}

}  // namespace skarnel
