// From a change of a setting to the new picture in the viewer: real controller, real window, a
// photo of 12 megapixels, a viewer of 1600 x 1000 device pixels.
//
//   QT_QPA_PLATFORM=offscreen skarnel-bench-preview [CHANGES [SETTING | burst | opened]]
//
// Beside the time on the clock stands the processor time of the thread, which other programs on the
// machine disturb less.
//
// Each case first checks that the change changes the picture. A dragged setting is timed from the
// slider's move to the end of the repaint; a burst is a row of moves that arrive together, as they
// do when the hand is faster than the render, and must cost one render. "Opened" is the first
// change after the photo was opened anew, as soon as a hand could make it. The last line is of all
// changes together: a change whatever is changed.
#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string_view>
#include <vector>

#include "app/standard_text_files.h"
#include "qt/application.h"
#include "qt/float_slider.h"
#include "qt/page/text_layout.h"
#include "qt/settings_panel.h"
#include "qt/viewer.h"
#include "textimaging/text_system.h"

namespace {

using namespace skarnel;

constexpr int kViewerWidth = 1600;
constexpr int kViewerHeight = 1000;
constexpr double kMedianWanted = 4.0;  // milliseconds
constexpr double kLimit = 8.0;
constexpr int kQuickHand = 200;  // milliseconds from a picture on the screen to the first drag

/// Smooth colours with grain, so that nothing on the way can take a short cut.
QString makePhoto(const QTemporaryDir& folder) {
    QImage photo(4000, 3000, QImage::Format_RGB32);
    unsigned grain = 12345;
    for (int y = 0; y < photo.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(photo.scanLine(y));
        for (int x = 0; x < photo.width(); ++x) {
            grain = grain * 1664525U + 1013904223U;
            const int noise = static_cast<int>(grain >> 27);
            row[x] = qRgb((x / 16 + noise) & 255, (y / 12 + noise) & 255, ((x + y) / 28) & 255);
        }
    }
    const QString path = folder.filePath(QStringLiteral("photo.jpg"));
    return photo.save(path, nullptr, 92) ? path : QString();
}

/// Milliseconds.
struct Times {
    double wall;
    double processor;
};

double processorMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return 1e3 * static_cast<double>(now.tv_sec) + 1e-6 * static_cast<double>(now.tv_nsec);
}

class Bench {
  public:
    explicit Bench(Application& application) : application_(application) {
        QObject::connect(&viewer(), &Viewer::painted, [this] { ++paints_; });
    }

    Viewer& viewer() { return application_.window().viewer(); }
    int paints() const { return paints_; }

    /// From the moves to the end of the repaint that shows the last of them.
    Times change(std::string_view key, const std::vector<int>& positions) {
        FloatSlider& slider = application_.window().settings().slider(key);
        const int before = paints_;
        const double processor = processorMilliseconds();
        QElapsedTimer time;
        time.start();
        for (const int position : positions) slider.setValue(position);
        while (paints_ == before) QApplication::processEvents();
        all_.push_back(
            {static_cast<double>(time.nsecsElapsed()) / 1e6, processorMilliseconds() - processor});
        return all_.back();
    }

    /// Of every change until now.
    const std::vector<Times>& all() const { return all_; }

  private:
    Application& application_;
    int paints_ = 0;
    std::vector<Times> all_;
};

/// The value that `share` of them do not pass.
double quantile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

bool report(const char* name, const std::vector<Times>& times) {
    std::vector<double> wall;
    std::vector<double> processor;
    for (const Times& time : times) {
        wall.push_back(time.wall);
        processor.push_back(time.processor);
    }
    const double median = quantile(wall, 0.5);
    const double most = quantile(wall, 0.99);
    const bool good = most <= kLimit;
    std::printf("%-18s %8.2f %8.2f %8.2f %8.2f %8.2f   %s\n", name, median, most,
                quantile(wall, 1.0), quantile(processor, 0.5), quantile(processor, 0.99),
                good ? (median <= kMedianWanted ? "as wanted" : "within the limit") : "TOO SLOW");
    return good;
}

/// The slider's walk there and back, one step at a time.
int walk(const SettingRange& range, int step) {
    const int most = travelPositions(range);
    const int phase = step % (2 * most);
    return phase <= most ? phase : 2 * most - phase;
}

bool runCase(Bench& bench, const SettingRange& range, int changes) {
    // The first change counts: it is the one that a hand feels.
    std::vector<Times> times{bench.change(range.key, {walk(range, 3)})};
    const QImage first = bench.viewer().shownImage();
    times.push_back(bench.change(range.key, {walk(range, 23)}));
    if (first == bench.viewer().shownImage()) {
        std::printf("%s changes nothing\n", range.key.data());
        return false;
    }
    for (int i = 2; i < changes; ++i)
        times.push_back(bench.change(range.key, {walk(range, i + 22)}));
    return report(range.key.data(), times);
}

/// What the window does meanwhile, it does.
void pause(int milliseconds) {
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < milliseconds) QApplication::processEvents(QEventLoop::AllEvents, 10);
}

bool runOpened(Bench& bench, Application& application, const QString& photo, int changes) {
    const SettingRange& range = *settingRange("imagePerspective");
    std::vector<Times> times;
    for (int i = 0; i < changes; ++i) {
        application.openPicture(photo);
        pause(kQuickHand);
        times.push_back(bench.change(range.key, {walk(range, 7 * i + 3)}));
    }
    return report("opened", times);
}

bool runBurst(Bench& bench, int changes) {
    const SettingRange& range = *settingRange("perspectiveHeight");
    std::vector<Times> times;
    for (int i = 0; i < changes; ++i) {
        std::vector<int> positions;
        for (int k = 0; k < 10; ++k) positions.push_back(walk(range, 11 * i + k + 1));
        times.push_back(bench.change(range.key, positions));
    }
    return report("burst of ten", std::move(times));
}

}  // namespace

int main(int argc, char** argv) {
    QApplication toolkit(argc, argv);
    const int changes = argc > 1 ? std::max(10, std::atoi(argv[1])) : 200;
    const std::string_view only = argc > 2 ? argv[2] : "";
    const QTemporaryDir folder;
    const QString photo = makePhoto(folder);
    TextSystem textSystem{TextLayout{naturalTextSize, paragraphHeights}};
    StandardTextFiles textFiles;
    Application application({folder.filePath(QStringLiteral("settings.json")).toStdString(),
                             folder.filePath(QStringLiteral("window.json")),
                             textSystem,
                             textFiles,
                             {}});
    application.start({});
    MainWindow& window = application.window();
    const QSize around = window.size() - window.viewer().size();
    window.resize(QSize(kViewerWidth, kViewerHeight) + around);
    QApplication::processEvents();
    pause(kQuickHand);
    if (!application.openPicture(photo)) return 1;
    pause(kQuickHand);
    Bench bench(application);
    const CGSize visible = bench.viewer().viewportSize();
    std::printf("viewer %.0f x %.0f, photo 4000 x 3000, %d changes each; milliseconds\n",
                visible.width, visible.height, changes);
    std::printf("%-18s %8s %8s %8s %8s %8s\n", "setting", "median", "99 %", "worst", "cpu",
                "cpu 99 %");
    bool good = true;
    for (const SettingRange& range : kSettingRanges) {
        if (!only.empty() && only != range.key) continue;
        good = runCase(bench, range, changes) && good;
        // Each case starts from the defaults.
        application.controller().reset(nullptr);
        QApplication::processEvents();
    }
    if (only.empty() || only == "burst") good = runBurst(bench, changes / 4) && good;
    application.controller().reset(nullptr);
    QApplication::processEvents();
    if (only.empty() || only == "opened")
        good = runOpened(bench, application, photo, changes / 10) && good;
    if (only.empty()) good = report("all", bench.all()) && good;
    return good ? 0 : 1;
}
