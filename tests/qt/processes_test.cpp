// The real program beside other programs on an X server: a second start, a kill, a drop, a paste.
#include <gtest/gtest.h>
#include <signal.h>

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QDrag>
#include <QFileInfo>
#include <QImage>
#include <QMimeData>
#include <QMouseEvent>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <functional>
#include <random>

#include "qt/page/renderers.h"
#include "qt/window_state.h"

namespace skarnel {
namespace {

constexpr int kPatience = 20'000;  // milliseconds until a condition counts as failed

bool wait(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, kPatience);
}

/// What a program prints; events go on meanwhile, since it may ask this process for something.
QString outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(wait([&] { return process.state() == QProcess::NotRunning; })) << "hangs";
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QString xdotool(const QStringList& arguments) {
    return outputOf(QStringLiteral("xdotool"), arguments);
}

class ProcessesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (QGuiApplication::platformName() != QLatin1String("xcb"))
            GTEST_SKIP() << "needs an X server";
        surroundings = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME",
                                 "XDG_RUNTIME_DIR", "HOME", "TMPDIR"}) {
            const QString own = folder.filePath(QString::fromLatin1(name));
            ASSERT_TRUE(QDir().mkpath(own));
            surroundings.insert(QString::fromLatin1(name), own);
        }
        QFile::setPermissions(surroundings.value(QStringLiteral("XDG_RUNTIME_DIR")),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void TearDown() override {
        for (const auto& process : started) {
            process->kill();
            process->waitForFinished();
        }
    }

    QProcess& start(const QStringList& pictures = {}) {
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(surroundings);
        process->setProcessChannelMode(QProcess::ForwardedChannels);
        // Whoever runs this may ignore some, as nohup and a shell's background do.
        process->setChildProcessModifier([] {
            for (const int each : {SIGTERM, SIGHUP, SIGINT}) ::signal(each, SIG_DFL);
        });
        process->start(QStringLiteral(SKARNEL_PROGRAM), pictures);
        EXPECT_TRUE(process->waitForStarted());
        started.push_back(std::move(process));
        return *started.back();
    }

    /// The program's main window while it is on the screen under such a title; empty otherwise.
    static QString shownWindow(const QString& title = QString()) {
        return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                        QStringLiteral("--name"), title + QStringLiteral(" — Skarnel$")})
            .section(QLatin1Char('\n'), -1);
    }

    QString awaitWindow(const QString& title = QString()) {
        QString window;
        EXPECT_TRUE(wait([&] { return !(window = shownWindow(title)).isEmpty(); }))
            << "no window of " << title.toStdString();
        return window;
    }

    /// Keys go to the window that has the focus; nobody else gives it here.
    static void press(const QString& window, const QString& keys) {
        xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
        xdotool({QStringLiteral("key"), keys});
    }

    static void finish(QProcess& process, const QString& window) {
        press(window, QStringLiteral("ctrl+q"));
        EXPECT_TRUE(wait([&] { return process.state() == QProcess::NotRunning; }));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0);
    }

    QString picture(const QString& name, QColor color = Qt::red) {
        QImage image(120, 90, QImage::Format_RGBA8888);
        image.fill(color);
        const QString path = folder.filePath(name);
        EXPECT_TRUE(image.save(path));
        return path;
    }

    QString statePath() const {
        return surroundings.value(QStringLiteral("XDG_STATE_HOME")) +
               QStringLiteral("/skarnel/window.json");
    }

    QTemporaryDir folder;
    QProcessEnvironment surroundings;
    std::vector<std::unique_ptr<QProcess>> started;
};

bool screenShows(const QColor& color) {
    const QImage seen = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    for (int y = 0; y < seen.height(); y += 3)
        for (int x = 0; x < seen.width(); x += 3)
            if (seen.pixelColor(x, y) == color) return true;
    return false;
}

TEST_F(ProcessesTest, ASecondStartShowsTheHiddenWindowAgainAndHandsItsPictureOver) {
    QProcess& first = start();
    const QString window = awaitWindow(QStringLiteral("TavelinLogo"));
    press(window, QStringLiteral("ctrl+w"));
    ASSERT_TRUE(wait([&] { return shownWindow().isEmpty(); }));
    EXPECT_EQ(first.state(), QProcess::Running);

    QProcess& second = start({picture(QStringLiteral("Beach.png"))});
    ASSERT_TRUE(wait([&] { return second.state() == QProcess::NotRunning; }));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_EQ(awaitWindow(QStringLiteral("Beach Reflection")), window);
    EXPECT_TRUE(wait([] { return screenShows(Qt::red); }));
    EXPECT_EQ(first.state(), QProcess::Running);

    // A third start without a picture brings it to the front and leaves what it shows.
    press(window, QStringLiteral("ctrl+w"));
    ASSERT_TRUE(wait([&] { return shownWindow().isEmpty(); }));
    QProcess& third = start();
    ASSERT_TRUE(wait([&] { return third.state() == QProcess::NotRunning; }));
    EXPECT_EQ(awaitWindow(QStringLiteral("Beach Reflection")), window);
    finish(first, window);
    EXPECT_EQ(WindowState(statePath()).recentFiles(),
              QStringList{folder.filePath(QStringLiteral("Beach.png"))});
}

TEST_F(ProcessesTest, OfProgramsThatStartAtTheSameTimeOneHasTheWindowAndAllPictures) {
    const int rounds = qEnvironmentVariableIsSet("SKARNEL_LONG") ? 40 : 1;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        QStringList pictures;
        std::vector<QProcess*> programs;
        for (int i = 0; i < 4; ++i)
            pictures << picture(QStringLiteral("R%1-%2.png").arg(round).arg(i));
        for (const QString& each : pictures) programs.push_back(&start({each}));
        const auto running = [&] {
            return std::count_if(programs.begin(), programs.end(), [](const QProcess* program) {
                return program->state() == QProcess::Running;
            });
        };
        ASSERT_TRUE(wait([&] { return running() == 1; })) << running();
        // The one that stays has been told of all the others' pictures.
        EXPECT_TRUE(wait([&] {
            QStringList known = WindowState(statePath()).recentFiles().mid(0, pictures.size());
            known.sort();
            return known == pictures;
        }));
        EXPECT_EQ(running(), 1);
        for (QProcess* program : programs) {
            if (program->state() == QProcess::Running)
                finish(*program, awaitWindow());
            else
                EXPECT_EQ(program->exitCode(), 0);
        }
    }
}

TEST_F(ProcessesTest, AKilledProgramLeavesWhatTheWindowRemembersWhole) {
    std::mt19937 random(3);
    std::uniform_int_distribution<int> pause(0, 1600);  // milliseconds; it writes after about 1000
    const int rounds = qEnvironmentVariableIsSet("SKARNEL_LONG") ? 200 : 2;
    QStringList opened;
    for (int round = 0; round < rounds; ++round) {
        opened.prepend(picture(QStringLiteral("P%1.png").arg(round)));
        QProcess& program = start({opened.front()});
        awaitWindow(QStringLiteral("P%1 Reflection").arg(round));
        QTest::qWait(pause(random));
        ASSERT_EQ(::kill(static_cast<pid_t>(program.processId()), SIGKILL), 0);
        ASSERT_TRUE(wait([&] { return program.state() == QProcess::NotRunning; }));
        const WindowState left(statePath());
        const QStringList known = left.recentFiles();
        EXPECT_TRUE(known.isEmpty() || opened.contains(known.front())) << "round " << round;
        EXPECT_EQ(known.isEmpty(), left.geometry().isEmpty()) << "round " << round;
    }
    const QString last = picture(QStringLiteral("Last.png"));
    QProcess& program = start({last});
    awaitWindow(QStringLiteral("Last Reflection"));
    ASSERT_TRUE(wait([&] { return WindowState(statePath()).recentFiles().value(0) == last; }));
    ASSERT_EQ(::kill(static_cast<pid_t>(program.processId()), SIGKILL), 0);
    ASSERT_TRUE(wait([&] { return program.state() == QProcess::NotRunning; }));
    EXPECT_FALSE(WindowState(statePath()).geometry().isEmpty());
    QProcess& next = start();
    const QString window = awaitWindow(QStringLiteral("TavelinLogo"));
    finish(next, window);
    EXPECT_EQ(WindowState(statePath()).recentFiles().value(0), last);
    EXPECT_EQ(QFileInfo(statePath()).dir().entryList(QDir::Files | QDir::Hidden),
              (QStringList{QStringLiteral("window.json"), QStringLiteral("window.json.lock")}));
}

// Behind the window's walls, which only the real program raises.
TEST_F(ProcessesTest, TextBecomesAPictureWhateverBecomesOfItsRendererWhichEndsWithTheWindow) {
    QProcess& program = start();
    awaitWindow(QStringLiteral("TavelinLogo"));
    const auto pid = static_cast<int>(program.processId());
    EXPECT_TRUE(test_page::ourPageProcesses(pid).empty()) << "nobody asked for a page yet";
    QProcess& second = start({QStringLiteral(SKARNEL_TEXT_RECIPE)});
    ASSERT_TRUE(wait([&] { return second.state() == QProcess::NotRunning; }));
    const QString window = awaitWindow(QStringLiteral("Text"));
    std::vector<int> renderers = test_page::ourPageProcesses(pid);
    ASSERT_EQ(renderers.size(), 1U);
    ASSERT_EQ(::kill(renderers.front(), SIGKILL), 0);
    ASSERT_TRUE(wait([&] { return test_page::ourPageProcesses(pid).empty(); }));
    EXPECT_EQ(program.state(), QProcess::Running);
    press(window, QStringLiteral("ctrl+Return"));
    ASSERT_TRUE(wait([&] { return !(renderers = test_page::ourRenderers(pid)).empty(); }));
    const std::vector<int> pages = test_page::ourPageProcesses(pid);
    ASSERT_EQ(::kill(pid, SIGKILL), 0);
    for (const int process : pages)
        EXPECT_TRUE(wait([&] { return !test_page::isProgram(process, "skarnel-page-renderer"); }));
    for (const int process : renderers)
        EXPECT_TRUE(wait([&] { return !test_page::isEngineProcess(process); }));
}

TEST_F(ProcessesTest, ClosingAPanelEndsNothingAndClosingTheMainWindowEndsWell) {
    QProcess& program = start();
    const QString window = awaitWindow(QStringLiteral("TavelinLogo"));
    press(window, QStringLiteral("ctrl+shift+b"));
    const auto panel = [] {
        return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                        QStringLiteral("--name"), QStringLiteral("^Colours$")});
    };
    ASSERT_TRUE(wait([&] { return !panel().isEmpty(); }));
    press(panel(), QStringLiteral("Escape"));
    ASSERT_TRUE(wait([&] { return panel().isEmpty(); }));
    EXPECT_EQ(shownWindow(), window);
    // It comes back, and hides and returns with its window.
    press(window, QStringLiteral("ctrl+shift+b"));
    ASSERT_TRUE(wait([&] { return !panel().isEmpty(); }));
    press(window, QStringLiteral("ctrl+w"));
    ASSERT_TRUE(wait([&] { return shownWindow().isEmpty() && panel().isEmpty(); }));
    EXPECT_EQ(program.state(), QProcess::Running);
    start();
    ASSERT_TRUE(wait([&] { return shownWindow() == window && !panel().isEmpty(); }));
    finish(program, window);
}

TEST_F(ProcessesTest, WithoutADisplayItSaysSoAndNamesTheOtherProgram) {
    surroundings.remove(QStringLiteral("QT_QPA_PLATFORM"));
    surroundings.remove(QStringLiteral("WAYLAND_DISPLAY"));
    // None at all, and one that is not there.
    for (const char* display : {"", ":4711"}) {
        SCOPED_TRACE(display);
        surroundings.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(display));
        QProcess program;
        program.setProcessEnvironment(surroundings);
        program.start(QStringLiteral(SKARNEL_PROGRAM), {QStringLiteral("a.png")});
        ASSERT_TRUE(wait([&] { return program.state() == QProcess::NotRunning; }));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), 3);
        EXPECT_TRUE(program.readAllStandardError().contains("skarnel-render"));
    }
}

TEST_F(ProcessesTest, AnOptionThatItDoesNotKnowCommandsNoTerminal) {
    surroundings.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    QProcess program;
    program.setProcessEnvironment(surroundings);
    program.start(QStringLiteral(SKARNEL_PROGRAM), {QStringLiteral("--a\x1b]0;b\u202Ec")});
    ASSERT_TRUE(wait([&] { return program.state() == QProcess::NotRunning; }));
    EXPECT_EQ(program.exitCode(), 2);
    const QByteArray told = program.readAllStandardError();
    EXPECT_TRUE(told.contains("--a\\x1b]0;b\\xe2\\x80\\xaec\n")) << told.toStdString();
}

QImage screenNow() {
    return QGuiApplication::primaryScreen()->grabWindow(0).toImage();
}

TEST_F(ProcessesTest, ASignalToEndEndsItAsClosingTheWindowDoes) {
    const struct {
        int signal;
        bool underASheet;
    } rows[] = {{SIGTERM, false}, {SIGHUP, true}, {SIGINT, false}};
    bool checkerboard = false;
    for (const auto& row : rows) {
        QProcess& program = start();
        const QString window = awaitWindow(QStringLiteral("TavelinLogo"));
        const QImage plain = screenNow();
        press(window, QStringLiteral("ctrl+k"));
        ASSERT_TRUE(wait([&] { return screenNow() != plain; }));
        checkerboard = !checkerboard;
        if (row.underASheet) {
            press(window, QStringLiteral("ctrl+s"));
            ASSERT_TRUE(wait([] {
                return !xdotool({QStringLiteral("search"), QStringLiteral("--name"),
                                 QStringLiteral("^Save Result$")})
                            .isEmpty();
            }));
        }
        ASSERT_EQ(::kill(static_cast<pid_t>(program.processId()), row.signal), 0);
        ASSERT_TRUE(wait([&] { return program.state() == QProcess::NotRunning; })) << row.signal;
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit) << row.signal;
        EXPECT_EQ(program.exitCode(), 0) << row.signal;
        EXPECT_EQ(WindowState(statePath()).checkerboard(), checkerboard) << row.signal;
        const QDir door(surroundings.value(QStringLiteral("XDG_RUNTIME_DIR")));
        EXPECT_TRUE(door.entryList({QStringLiteral("skarnel-*[0-9a-f]")}, QDir::System).isEmpty());
    }
}

/// A file manager in small: a drag of a file begins where the mouse is pressed.
class DragSource final : public QWidget {
  public:
    explicit DragSource(const QUrl& file) : file_(file) {
        setWindowFlag(Qt::BypassWindowManagerHint);
        setGeometry(1700, 1000, 150, 150);
        show();
    }
    Qt::DropAction taken = Qt::IgnoreAction;
    bool ended = false;

  protected:
    void mousePressEvent(QMouseEvent* /*event*/) override {
        QTimer::singleShot(0, this, &DragSource::drag);
    }

  private:
    void drag() {
        auto* urls = new QMimeData;
        urls->setUrls({file_});
        auto* drag = new QDrag(this);
        drag->setMimeData(urls);
        // Over the target the pointer moves until it accepts; then the button is let go.
        QTimer moves;
        int step = 0;
        const auto hand = [](const QStringList& arguments) {
            QProcess::startDetached(QStringLiteral("xdotool"), arguments);
        };
        QObject::connect(&moves, &QTimer::timeout, drag, [&] {
            hand({QStringLiteral("mousemove"), QString::number(300 + 5 * (step++ % 20)),
                  QStringLiteral("300")});
        });
        QObject::connect(drag, &QDrag::actionChanged, drag, [&](Qt::DropAction action) {
            if (action == Qt::CopyAction) hand({QStringLiteral("mouseup"), QStringLiteral("1")});
        });
        QTimer::singleShot(kPatience, drag, &QDrag::cancel);
        moves.start(50);
        taken = drag->exec(Qt::CopyAction);
        ended = true;
    }

    QUrl file_;
};

TEST_F(ProcessesTest, AFileDraggedFromAnotherProgramIsOpened) {
    QProcess& program = start();
    const QString window = awaitWindow(QStringLiteral("TavelinLogo"));
    DragSource source(QUrl::fromLocalFile(picture(QStringLiteral("Dropped.png"), Qt::green)));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&source));
    xdotool({QStringLiteral("mousemove"), QStringLiteral("1760"), QStringLiteral("1060")});
    xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
    EXPECT_TRUE(wait([&] { return source.ended; }));
    EXPECT_EQ(source.taken, Qt::CopyAction);
    EXPECT_EQ(awaitWindow(QStringLiteral("Dropped Reflection")), window);
    EXPECT_TRUE(wait([] { return screenShows(Qt::green); }));
    finish(program, window);
}

TEST_F(ProcessesTest, APictureCopiedInAnotherProgramIsPasted) {
    QProcess& program = start();
    const QString window = awaitWindow(QStringLiteral("TavelinLogo"));
    QImage copied(80, 60, QImage::Format_RGBA8888);
    copied.fill(QColor(255, 0, 255));
    QApplication::clipboard()->setImage(copied);
    press(window, QStringLiteral("ctrl+v"));
    EXPECT_EQ(awaitWindow(QStringLiteral("Pasted Picture Reflection")), window);
    EXPECT_TRUE(wait([] { return screenShows(QColor(255, 0, 255)); }));
    finish(program, window);
}

}  // namespace
}  // namespace skarnel
