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
void onlyFatalMessages(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(message));
}

}  // namespace

void prepareRenderer(const std::function<void(std::string_view)>& log) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        QLoggingCategory::setFilterRules("qt.webenginecontext.*=false");
    QByteArray switches = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS");
    switches += (switches.isEmpty() ? "" : " ") + QByteArray(kSwitches);
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", switches);
    if (geteuid() == 0) {
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    } else if (!canMakeUserNamespaces()) {
        log("The page renderer runs without its own sandbox: the system forbids user namespaces");
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    }
}

std::unique_ptr<QApplication> makeApplicationIfMissing() {
    if (QCoreApplication::instance() != nullptr) return nullptr;
    qInstallMessageHandler(onlyFatalMessages);
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
