#include "qt/end_signals.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <utility>

namespace skarnel {
namespace {

constexpr std::array kSignals{SIGTERM, SIGHUP, SIGINT};
constexpr std::size_t kReadEnd = 0;
constexpr std::size_t kWriteEnd = 1;

// A handler has nothing but what is global.
std::array<int, 2> pipeEnds{-1, -1};

/// A full pipe has woken the loop already.
void wakeLoop(int /*signal*/) {
    const int before = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[kWriteEnd], &byte, 1);
    errno = before;
}

bool isIgnored(int signal) {
    struct sigaction now {};
    return ::sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN;
}

void setHandler(int signal, void (*handler)(int), int flags) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    ::sigaction(signal, &action, nullptr);
}

}  // namespace

EndSignals::EndSignals(QObject* parent) : QObject(parent) {
    // Without a pipe the signals do what they always did.
    if (::pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
    notifier_ = new QSocketNotifier(pipeEnds[kReadEnd], QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &EndSignals::take);
    for (const int signal : kSignals)
        if (!isIgnored(signal)) setHandler(signal, wakeLoop, SA_RESETHAND | SA_RESTART);
}

EndSignals::~EndSignals() {
    if (notifier_ == nullptr) return;
    for (const int signal : kSignals)
        if (!isIgnored(signal)) setHandler(signal, SIG_DFL, 0);
    notifier_->setEnabled(false);
    for (int& end : pipeEnds) ::close(std::exchange(end, -1));
}

void EndSignals::take() {
    std::array<char, 16> bytes;
    while (::read(pipeEnds[kReadEnd], bytes.data(), bytes.size()) > 0) {
    }
    emit asked();
}

}  // namespace skarnel
