// The real program where its surroundings fail it: the display goes away, the clipboard's owner
// dies, there are no fonts, there is no /proc.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <functional>

#include "util/walls/without_proc.h"

namespace skarnel {
namespace {

constexpr int kPatience = 20'000;  // milliseconds until a condition counts as failed

constexpr const char* kRecipe =
    R"({"skarnel":"recipe","version":1,"settings":{"perspectiveWidth":5,"perspectiveHeight":40,)"
    R"("offset":10,"start":0,"gradient":9,"alpha":150,"imagePerspective":50,)"
    R"("applyBackgroundColor":false},"background":"#000000"})";

bool wait(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    for (timer.start(); !condition() && timer.elapsed() < kPatience;) QThread::msleep(20);
    return condition();
}

/// An X server of the test's own.
class Display {
  public:
    Display() {
        // Without -noreset it begins anew when its last client goes, and refuses the next
        // meanwhile.
        server_.start(
            QStringLiteral("Xvfb"),
            {QStringLiteral("-noreset"), QStringLiteral("-displayfd"), QStringLiteral("1"),
             QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("1400x1000x24")});
        wait([&] {
            return server_.canReadLine() ||
                   (server_.waitForReadyRead(100) && server_.canReadLine());
        });
        name_ = QLatin1Char(':') + QString::fromLatin1(server_.readLine()).trimmed();
    }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    ~Display() { end(); }

    /// Not at once but in order, so that it takes its lock file with it; its clients see the same.
    void end() {
        server_.terminate();
        if (!server_.waitForFinished(kPatience)) server_.kill();
        server_.waitForFinished();
    }
    const QString& name() const { return name_; }

  private:
    QProcess server_;
    QString name_;
};

class SurroundingsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* tool : {"Xvfb", "xdotool", "openbox"})
            ASSERT_FALSE(QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty())
                << tool << " is not installed; tools/install-packages test";
        surroundings = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME",
                                 "XDG_RUNTIME_DIR", "HOME", "TMPDIR"}) {
            const QString own = folder.filePath(QString::fromLatin1(name));
            ASSERT_TRUE(QDir().mkpath(own));
            surroundings.insert(QString::fromLatin1(name), own);
        }
        QFile::setPermissions(surroundings.value(QStringLiteral("XDG_RUNTIME_DIR")),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        surroundings.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        surroundings.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        // In the C locale the tool cannot read the dash of a window's title.
        surroundings.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    }
    void TearDown() override {
        program.kill();
        program.waitForFinished();
    }

    void startOn(const Display& display, const QStringList& arguments = {}) {
        surroundings.insert(QStringLiteral("DISPLAY"), display.name());
        program.setProcessEnvironment(surroundings);
        program.setProcessChannelMode(QProcess::ForwardedChannels);
        program.start(QStringLiteral(SKARNEL_PROGRAM), arguments);
        ASSERT_TRUE(program.waitForStarted());
        ASSERT_TRUE(wait([&] { return !(window = shownWindow()).isEmpty(); })) << "no window";
    }

    QString xdotool(const QStringList& arguments) const {
        QProcess tool;
        tool.setProcessEnvironment(surroundings);
        tool.start(QStringLiteral("xdotool"), arguments);
        EXPECT_TRUE(tool.waitForFinished(kPatience));
        return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
    }
    QString shown(const QString& title) const {
        return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                        QStringLiteral("--name"), title})
            .section(QLatin1Char('\n'), -1);
    }
    QString shownWindow() const { return shown(QStringLiteral(" — Skarnel$")); }
    void press(const QString& key) const { press(key, window); }
    void press(const QString& key, const QString& where) const {
        xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), where});
        xdotool({QStringLiteral("key"), key});
    }
    bool ends() {
        return wait(
            [&] { return program.waitForFinished(10) || program.state() == QProcess::NotRunning; });
    }

    double stored(const char* key) const {
        QFile file(surroundings.value(QStringLiteral("XDG_CONFIG_HOME")) +
                   QStringLiteral("/skarnel/settings.json"));
        if (!file.open(QIODevice::ReadOnly)) return -1;
        const QJsonObject settings = QJsonDocument::fromJson(file.readAll()).object();
        return settings.value(QLatin1String(key)).toDouble(-1);
    }

    QTemporaryDir folder;
    QProcessEnvironment surroundings;
    QProcess program;
    QString window;
};

TEST_F(SurroundingsTest, AHiddenWindowComesBackWhereAWindowManagerHadIt) {
    Display display;
    surroundings.insert(QStringLiteral("DISPLAY"), display.name());
    QProcess manager;
    manager.setProcessEnvironment(surroundings);
    // While it starts it loses a window that wants to be shown.
    const QString started = folder.filePath(QStringLiteral("started"));
    manager.start(QStringLiteral("openbox"),
                  {QStringLiteral("--startup"), QStringLiteral("touch '%1'").arg(started)});
    ASSERT_TRUE(wait([&] { return QFile::exists(started); }));
    ASSERT_NO_FATAL_FAILURE(startOn(display));
    const auto place = [&] {
        return xdotool({QStringLiteral("getwindowgeometry"), window})
            .section(QLatin1Char('\n'), 1, 1);
    };
    // The manager moves a window in steps: where it came to rest.
    const auto restingPlace = [&] {
        QString last;
        int same = 0;
        wait([&] {
            const QString now = place();
            same = now == last ? same + 1 : 0;
            last = now;
            return same == 10;
        });
        return last;
    };
    // Nowhere that the manager would choose by itself.
    const QString before = restingPlace();
    xdotool({QStringLiteral("windowmove"), window, QStringLiteral("31"), QStringLiteral("57")});
    ASSERT_TRUE(wait([&] { return place() != before; }));
    const QString moved = restingPlace();
    press(QStringLiteral("ctrl+w"));
    ASSERT_TRUE(wait([&] { return shownWindow().isEmpty(); }));
    QProcess second;
    second.setProcessEnvironment(surroundings);
    second.start(QStringLiteral(SKARNEL_PROGRAM), QStringList());
    ASSERT_TRUE(second.waitForFinished(kPatience));
    ASSERT_TRUE(wait([&] { return shownWindow() == window; }));
    EXPECT_TRUE(wait([&] { return place() == moved; })) << place().toStdString();
    manager.kill();
    manager.waitForFinished();
}

TEST_F(SurroundingsTest, ALostDisplayEndsTheProgramAndKeepsWhatWasJustSet) {
    Display display;
    ASSERT_NO_FATAL_FAILURE(startOn(display));
    ASSERT_TRUE(wait([&] { return stored("alpha") == 200; })) << "the defaults are not stored";
    QFile recipe(folder.filePath(QStringLiteral("look.skarnel")));
    ASSERT_TRUE(recipe.open(QIODevice::WriteOnly));
    recipe.write(kRecipe);
    recipe.close();
    // A second start hands the recipe over and ends; the first has it then and stores it when it
    // has been idle for a second, which it has no time for.
    QProcess second;
    second.setProcessEnvironment(surroundings);
    second.start(QStringLiteral(SKARNEL_PROGRAM), {recipe.fileName()});
    ASSERT_TRUE(second.waitForFinished(kPatience));
    ASSERT_EQ(second.exitCode(), 0);
    display.end();
    ASSERT_TRUE(ends());
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 1);
    EXPECT_EQ(stored("alpha"), 150);
    EXPECT_EQ(stored("offset"), 10);
}

/// The display goes while the file is written: whatever is there then is the whole result.
TEST_F(SurroundingsTest, ADisplayLostDuringASaveLeavesAWholeFileOrNone) {
    const QString picture = folder.filePath(QStringLiteral("Beach.jpg"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(SKARNEL_SAMPLE_PHOTO), picture));
    const auto results = [&] {
        QStringList paths;
        QDirIterator each(folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (each.hasNext()) {
            const QString path = each.next();
            // The window's own state is written in the same way.
            if (path.contains(QLatin1String("/XDG_"))) continue;
            if (path.contains(QLatin1String("Beach Reflection")) ||
                path.endsWith(QLatin1String(".part")))
                paths << path;
        }
        return paths;
    };
    const auto save = [&] {
        press(QStringLiteral("ctrl+s"));
        QString sheet;
        ASSERT_TRUE(
            wait([&] { return !(sheet = shown(QStringLiteral("^Save Result$"))).isEmpty(); }));
        press(QStringLiteral("Return"), sheet);
    };
    const auto bytesOf = [](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    Display display;
    ASSERT_NO_FATAL_FAILURE(startOn(display, {picture}));
    ASSERT_NO_FATAL_FAILURE(save());
    ASSERT_TRUE(wait([&] {
        return results().size() == 1 && !results().front().endsWith(QLatin1String(".part"));
    }));
    const QString path = results().front();
    const QByteArray whole = bytesOf(path);
    ASSERT_FALSE(whole.isEmpty());
    ASSERT_TRUE(QFile::remove(path));

    ASSERT_NO_FATAL_FAILURE(save());
    QElapsedTimer timer;
    for (timer.start(); results().isEmpty() && timer.elapsed() < kPatience;) {
    }
    display.end();
    ASSERT_TRUE(ends());
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 1);
    EXPECT_EQ(results(), QStringList{path});
    EXPECT_EQ(bytesOf(path), whole);
}

/// The toolkit waits five seconds for an answer that does not come.
TEST_F(SurroundingsTest, AnOwnerOfTheClipboardThatDiesInAPasteEndsNothing) {
    const Display display;
    ASSERT_NO_FATAL_FAILURE(startOn(display));
    QProcess owner;
    const auto own = [&](const QString& end) {
        owner.setProcessEnvironment(surroundings);
        owner.start(QStringLiteral(SKARNEL_DYING_OWNER), {end});
        ASSERT_TRUE(wait([&] {
            return owner.canReadLine() || (owner.waitForReadyRead(100) && owner.canReadLine());
        }));
        press(QStringLiteral("ctrl+v"));
    };
    const auto owns = [&] {
        return !owner.waitForFinished(10) && owner.state() == QProcess::Running;
    };
    const bool isLong = qEnvironmentVariableIsSet("SKARNEL_LONG");
    for (const QString& end : isLong
                                  ? QStringList{QStringLiteral("data"), QStringLiteral("formats")}
                                  : QStringList{QStringLiteral("data")}) {
        ASSERT_NO_FATAL_FAILURE(own(end));
        ASSERT_TRUE(wait([&] { return !owns(); })) << "it was not asked";
        EXPECT_EQ(shown(QStringLiteral("TavelinLogo — Skarnel$")), window);
    }
    ASSERT_NO_FATAL_FAILURE(own(QStringLiteral("nothing")));
    EXPECT_TRUE(wait(
        [&] { return shown(QStringLiteral("Pasted Picture Reflection — Skarnel$")) == window; }));
    owner.kill();
    owner.waitForFinished();
    press(QStringLiteral("ctrl+q"));
    ASSERT_TRUE(ends());
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
}

TEST_F(SurroundingsTest, TheNextStartRemovesWhatAKilledOneLeft) {
    // The first start of all writes, and a write tidies up by itself.
    const Display display;
    ASSERT_NO_FATAL_FAILURE(startOn(display));
    press(QStringLiteral("ctrl+q"));
    ASSERT_TRUE(ends());
    const QString name = QStringLiteral("/skarnel/.skarnel-0123456789abcdef.part");
    QStringList left;
    for (const char* home : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"}) {
        left << surroundings.value(QString::fromLatin1(home)) + name;
        ASSERT_TRUE(QFile(left.back()).open(QIODevice::WriteOnly));
    }
    ASSERT_NO_FATAL_FAILURE(startOn(display));
    for (const QString& path : left)
        EXPECT_TRUE(wait([&] { return !QFile::exists(path); })) << path.toStdString();
}

TEST_F(SurroundingsTest, WithoutAnyFontTheWindowOpensAndCloses) {
    QFile fonts(folder.filePath(QStringLiteral("fonts.conf")));
    ASSERT_TRUE(fonts.open(QIODevice::WriteOnly));
    fonts.write("<?xml version=\"1.0\"?><fontconfig></fontconfig>");
    fonts.close();
    surroundings.insert(QStringLiteral("FONTCONFIG_FILE"), fonts.fileName());
    const Display display;
    ASSERT_NO_FATAL_FAILURE(startOn(display));
    press(QStringLiteral("ctrl+q"));
    ASSERT_TRUE(ends());
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
}

TEST_F(SurroundingsTest, WithoutProcAPictureOpensAndTheWindowCloses) {
    if (!test::canHideProc()) GTEST_SKIP() << "/proc cannot be hidden here";
    const QString log = folder.filePath(QStringLiteral("log"));
    program.setChildProcessModifier([path = QFile::encodeName(log)] {
        const int file = ::open(path.constData(), O_WRONLY | O_CREAT, 0600);
        if (!test::hideProc() || ::dup2(file, STDERR_FILENO) < 0) ::_exit(98);
    });
    const QString picture = folder.filePath(QStringLiteral("Beach.jpg"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(SKARNEL_SAMPLE_PHOTO), picture));
    const Display display;
    ASSERT_NO_FATAL_FAILURE(startOn(display, {picture}));
    EXPECT_TRUE(wait([&] { return shown(QStringLiteral("^Beach.* — Skarnel$")) == window; }));
    press(QStringLiteral("ctrl+q"));
    ASSERT_TRUE(ends());
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    QFile said(log);
    ASSERT_TRUE(said.open(QIODevice::ReadOnly));
    const QByteArray text = said.readAll();
    EXPECT_TRUE(text.contains("Pictures are decoded without this wall: helper program\n"))
        << text.toStdString();
}

}  // namespace
}  // namespace skarnel

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
