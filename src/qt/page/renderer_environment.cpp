#include "qt/page/renderer_environment.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QLoggingCategory>
#include <QQuickWindow>
#include <cerrno>

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

// What the engine says at every start, be it well or not. Its warnings and errors stay.
constexpr const char* kSilentRemarks =
    "qt.webenginecontext.debug=false\n"
    "qt.webenginecontext.info=false";

// Pages look alike on every desktop and screen, and need neither.
void leaveTheDesktop() {
    for (const char* name :
         {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE",
          "QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_AUTO_SCREEN_SCALE_FACTOR",
          "QT_ENABLE_HIGHDPI_SCALING", "QT_FONT_DPI", "QT_USE_PHYSICAL_DPI"})
        qunsetenv(name);
    qputenv("QT_QPA_PLATFORM", "offscreen");
}

}  // namespace

void prepareRenderer(const std::function<void(std::string_view)>& log) {
    leaveTheDesktop();
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

}  // namespace skarnel
