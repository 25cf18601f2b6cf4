// The program `skarnel-page-renderer`: draws pages for the program that started it, and ends with
// it.
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QApplication>
#include <QLoggingCategory>
#include <QWebEngineProfile>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <optional>

#include "qt/page/page_messages.h"
#include "qt/page/page_patience.h"
#include "qt/page/page_server.h"
#include "qt/page/renderer_alarm.h"
#include "qt/page/renderer_environment.h"
#include "qt/page/text_layout.h"

namespace {

// The toolkit's remarks on this machine's graphics are of no use to who waits for a picture.
void onlyErrors(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtFatalMsg || type == QtCriticalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

bool hasLine() {
    int kind = 0;
    socklen_t size = sizeof kind;
    return ::getsockopt(skarnel::kPageLineDescriptor, SOL_SOCKET, SO_TYPE, &kind, &size) == 0 &&
           kind == SOCK_SEQPACKET;
}

bool readMilliseconds(const char* text, int& number) {
    const char* end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, number);
    return error == std::errc() && stop == end && number > 0;
}

/// The two arguments, which the starter gives.
std::optional<skarnel::RendererPatience> patienceOf(int argc, char** argv) {
    skarnel::RendererPatience patience;
    if (argc != 3 || !readMilliseconds(argv[1], patience.start) ||
        !readMilliseconds(argv[2], patience.load))
        return std::nullopt;
    return patience;
}

void say(std::string_view line) {
    (void)skarnel::sendPageMessage(
        skarnel::kPageLineDescriptor,
        skarnel::pageMessage(skarnel::PageMessageKind::Said,
                             QByteArray(line.data(), static_cast<qsizetype>(line.size()))));
}

/// Ends with the program that waits, is the first to go when memory is short, and leaves no image
/// of what was typed.
void bindToItsStarter() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::fcntl(skarnel::kPageLineDescriptor, F_SETFD, FD_CLOEXEC);
    const rlimit none = {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    if (std::FILE* order = std::fopen("/proc/self/oom_score_adj", "we")) {
        std::fputs("500", order);
        std::fclose(order);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const auto patience = patienceOf(argc, argv);
    if (!patience || !hasLine()) {
        std::fputs("skarnel-page-renderer: it is started by Skarnel\n", stderr);
        return 2;
    }
    bindToItsStarter();
    skarnel::endUnlessCalledWithin(patience->start);
    qInstallMessageHandler(onlyErrors);
    skarnel::prepareRenderer(say);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    int nameOnly = 1;
    argv[nameOnly] = nullptr;
    QApplication application(nameOnly, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    skarnel::useLiberationFonts();
    // Off the record and without a cache: nothing of a page outlives it.
    QWebEngineProfile profile;
    profile.setHttpCacheType(QWebEngineProfile::NoCache);
    profile.setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
    profile.setSpellCheckEnabled(false);
    const skarnel::PageServer server(profile, patience->load);
    skarnel::endUnlessCalledWithin(0);
    return QApplication::exec();
}
