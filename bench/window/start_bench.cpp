// From the start of the process to the first picture on the screen.
//
//   QT_QPA_PLATFORM=offscreen skarnel-bench-start [STARTS]
//
// Each start is a process of its own: this program again, which then is the window's program with
// stores of its own and ends after the first picture was painted. The first start, which may have
// to read files from the disk, is not counted.
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "app/standard_text_files.h"
#include "qt/application.h"
#include "qt/page/text_layout.h"
#include "qt/process_walls.h"
#include "qt/viewer.h"
#include "textimaging/text_system.h"

namespace {

using namespace skarnel;

constexpr const char kChild[] = "--one-start";
constexpr double kLimit = 250;  // milliseconds

double nowMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return 1e3 * static_cast<double>(now.tv_sec) + 1e-6 * static_cast<double>(now.tv_nsec);
}

/// The window's program up to its first painted picture; writes how long that took since `begun`.
int oneStart(int argc, char** argv, double begun) {
    ProcessWalls walls;
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication toolkit(argc, argv);
    walls.routePages();
    useLiberationFonts();
    const QTemporaryDir folder;
    TextSystem textSystem{TextLayout{naturalTextSize, paragraphHeights}};
    StandardTextFiles textFiles;
    Application application({folder.filePath(QStringLiteral("settings.json")).toStdString(),
                             folder.filePath(QStringLiteral("window.json")),
                             textSystem,
                             textFiles,
                             {}});
    Viewer& viewer = application.window().viewer();
    const auto finish = [&] {
        if (viewer.shownImage().isNull()) return;
        std::printf("%.3f\n", nowMilliseconds() - begun);
        std::fflush(stdout);
        QTimer::singleShot(0, &toolkit, &QApplication::quit);
        QObject::disconnect(&viewer, &Viewer::painted, nullptr, nullptr);
    };
    QObject::connect(&viewer, &Viewer::painted, &application, finish);
    application.start({});
    return QApplication::exec();
}

/// Milliseconds from the fork to the first picture; negative when the child failed.
double timeOneStart(const char* program) {
    int ends[2];
    if (::pipe(ends) != 0) return -1;
    char begun[32];
    std::snprintf(begun, sizeof begun, "%.3f", nowMilliseconds());
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        ::execl(program, program, kChild, begun, static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(ends[1]);
    char text[64] = {};
    const ssize_t count = ::read(ends[0], text, sizeof text - 1);
    ::close(ends[0]);
    int status = 0;
    if (child > 0) ::waitpid(child, &status, 0);
    return count > 0 ? std::atof(text) : -1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], kChild) == 0)
        return oneStart(argc, argv, std::atof(argv[2]));
    const int starts = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10;
    std::vector<double> times;
    for (int i = 0; i <= starts; ++i) {
        const double time = timeOneStart("/proc/self/exe");
        if (time < 0) {
            std::fputs("a start failed\n", stderr);
            return 1;
        }
        if (i > 0) times.push_back(time);
    }
    std::sort(times.begin(), times.end());
    const double median = times[times.size() / 2];
    std::printf("first picture after %.0f ms (median of %d starts; %.0f to %.0f)   %s\n", median,
                starts, times.front(), times.back(), median <= kLimit ? "as wanted" : "TOO SLOW");
    return median <= kLimit ? 0 : 1;
}
