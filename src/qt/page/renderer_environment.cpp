#include "qt/page/renderer_environment.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QLoggingCategory>
#include <QQuickWindow>
#include <cerrno>
#include <cstdio>

namespace skarnel {
namespace {

// In the order of the fonts' and colours' exactness, then of running anywhere.
constexpr const char* kSwitches =
    "--disable-lcd-text --disable-font-subpixel-positioning --force-color-profile=srgb "
    "--disable-checker-imaging --disable-gpu --disable-dev-shm-usage "
    "--disable-background-networking";

// The sandbox needs user namespaces; where they are forbidden the renderer would end the process.
bool canMakeUserNamespaces() {
    const pid_t child = fork();
    if (child == 0) _exit(unshare(CLONE_NEWUSER) == 0 ? 0 : 1);
    int status = 1;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The toolkit's remarks on this machine's graphics are of no use to who runs a command line.
void onlyErrors(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtFatalMsg || type == QtCriticalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

// What the engine says at every start, be it well or not. Its warnings and errors stay.
constexpr const char* kSilentRemarks =
    "qt.webenginecontext.debug=false\n"
    "qt.webenginecontext.info=false";

}  // namespace

void prepareRenderer(const std::function<void(std::string_view)>& log) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        QLoggingCategory::setFilterRules(kSilentRemarks);
    QByteArray switches = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS");
    switches += (switches.isEmpty() ? "" : " ") + QByteArray(kSwitches);
    // By a switch, since the engine remarks on the environment variable for it.
    if (geteuid() == 0) {
        switches += " --no-sandbox";
    } else if (!canMakeUserNamespaces()) {
        log("The page renderer runs without its own sandbox: the system forbids user namespaces");
        switches += " --no-sandbox";
    }
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", switches);
}

std::unique_ptr<QApplication> makeApplicationIfMissing() {
    if (QCoreApplication::instance() != nullptr) return nullptr;
    qInstallMessageHandler(onlyErrors);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    // Borrowed by the application object for its life.
    static int argumentCount = 1;
    static char name[] = "skarnel";
    static char* arguments[] = {name, nullptr};
    auto application = std::make_unique<QApplication>(argumentCount, arguments);
    application->setQuitOnLastWindowClosed(false);
    return application;
}

}  // namespace skarnel
