// Both real programs on settings that cannot be read: they start, do their work and end well, and
// the window keeps what it could not read. And the window on numbers that are no hand's.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "memory/process_size.h"

namespace skarnel {
namespace {

constexpr int kPatience = 60'000;  // milliseconds until a condition counts as failed
constexpr int kMegabyte = 1'000'000;

QByteArray randomBytes(int count) {
    std::mt19937 random(11);  // fixed
    QByteArray bytes;
    for (int i = 0; i < count; ++i) bytes.append(static_cast<char>(random()));
    return bytes;
}

struct Damage {
    const char* name;
    std::function<bool(const QString& path)> put;
};

std::function<bool(const QString&)> bytes(const QByteArray& text) {
    return [text](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    };
}

std::vector<Damage> damages() {
    return {
        {"cut", bytes(R"({"alpha": 12.5, "grad)")},
        {"random", bytes(randomBytes(3000))},
        {"types", bytes(R"({"alpha": "x", "gradient": [1], "offset": {"a": 1}, "start": null})")},
        {"not a number", bytes(R"({"alpha": NaN, "gradient": 1e999})")},
        {"ten megabytes", bytes(R"({"alpha": 1})" + QByteArray(10 * kMegabyte, ' '))},
        {"deep", bytes(QByteArray(kMegabyte * 9 / 10, '['))},
        {"zeros", bytes(QByteArray(4096, '\0'))},
        {"folder", [](const QString& path) { return QDir().mkpath(path); }},
        {"loop", [](const QString& path) { return QFile::link(QFileInfo(path).fileName(), path); }},
        {"pipe",
         [](const QString& path) {
             return ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
         }},
    };
}

/// One home with a damaged file in it, and the window that runs there.
class Home {
  public:
    explicit Home(const Damage& damage) {
        surroundings_ = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME",
                                 "XDG_RUNTIME_DIR", "HOME", "TMPDIR"}) {
            const QString own = folder_.filePath(QString::fromLatin1(name));
            EXPECT_TRUE(QDir().mkpath(own));
            surroundings_.insert(QString::fromLatin1(name), own);
        }
        QFile::setPermissions(surroundings_.value(QStringLiteral("XDG_RUNTIME_DIR")),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        surroundings_.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        surroundings_.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        EXPECT_TRUE(QDir().mkpath(QFileInfo(settings()).path()));
        EXPECT_TRUE(damage.put(settings()));
    }
    ~Home() {
        if (window_.state() == QProcess::NotRunning) return;
        window_.kill();
        window_.waitForFinished();
    }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    QString settings() const {
        return folder_.filePath(QStringLiteral("XDG_CONFIG_HOME/skarnel/settings.json"));
    }
    void expectARenderingByTheDefaults() {
        const QString result = folder_.filePath(QStringLiteral("result.png"));
        QProcess program;
        program.setProcessEnvironment(surroundings_);
        program.start(QStringLiteral(SKARNEL_RENDER),
                      {QStringLiteral("--user-settings"), QStringLiteral("--preview"),
                       QStringLiteral("60x60"), QStringLiteral(SKARNEL_SAMPLE_PHOTO),
                       QStringLiteral("-o"), result});
        EXPECT_TRUE(program.waitForFinished(kPatience));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
        EXPECT_TRUE(QFile::exists(result));
        EXPECT_FALSE(isKept()) << "reading changes nothing";
    }
    void startWindow() {
        window_.setProcessEnvironment(surroundings_);
        // Whoever runs this may ignore it, as a shell's background does.
        window_.setChildProcessModifier([] { ::signal(SIGTERM, SIG_DFL); });
        window_.start(QStringLiteral(SKARNEL_PROGRAM), QStringList());
        EXPECT_TRUE(window_.waitForStarted());
    }
    void expectItWorksAndEndsWell() {
        ASSERT_NO_FATAL_FAILURE(expectItWorks());
        ASSERT_NO_FATAL_FAILURE(endIt());
        EXPECT_TRUE(isKept());
        EXPECT_TRUE(QString::fromUtf8(window_.readAllStandardError())
                        .contains(QStringLiteral("settings.json: What could not be read is kept")));
        QFile stored(settings());
        ASSERT_TRUE(stored.open(QIODevice::ReadOnly));
        EXPECT_TRUE(QJsonDocument::fromJson(stored.readAll()).isObject());
    }

    void expectItWorks() const {
        // Written a second after the start, by a window that handles its events.
        const QString state =
            folder_.filePath(QStringLiteral("XDG_STATE_HOME/skarnel/window.json"));
        QElapsedTimer timer;
        timer.start();
        while (!QFile::exists(state) && timer.elapsed() < kPatience) QThread::msleep(20);
        ASSERT_TRUE(QFile::exists(state));
    }
    /// What the window has held at most.
    std::size_t mostBytes() const {
        return testing::mostBytesOf(std::to_string(window_.processId()));
    }
    void endIt() {
        window_.terminate();
        ASSERT_TRUE(window_.waitForFinished(kPatience));
        EXPECT_EQ(window_.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(window_.exitCode(), 0);
    }

  private:
    bool isKept() const {
        struct stat status = {};  // of a loop of links, too
        return ::lstat(QFile::encodeName(settings() + QStringLiteral(".damaged")).constData(),
                       &status) == 0;
    }

    QTemporaryDir folder_;
    QProcessEnvironment surroundings_;
    QProcess window_;
};

TEST(DamagedSettingsFile, BothProgramsStartAndEndWellAndACopyIsKept) {
    std::vector<std::unique_ptr<Home>> homes;
    for (const Damage& damage : damages()) {
        SCOPED_TRACE(damage.name);
        homes.push_back(std::make_unique<Home>(damage));
        homes.back()->expectARenderingByTheDefaults();
        homes.back()->startWindow();
    }
    std::size_t number = 0;
    for (const Damage& damage : damages()) {
        SCOPED_TRACE(damage.name);
        homes[number++]->expectItWorksAndEndsWell();
    }
}

// A recipe carries any number into the settings. The first of these asks for a result of hundreds
// of megapixels, the last for more than any machine holds.
TEST(LargeStoredNumbers, AStartTakesLittleMemory) {
    constexpr std::size_t kEnough = 300 * std::size_t{kMegabyte};
    for (const char* numbers :
         {R"({"offset": 80000})", R"({"offset": 80000, "imagePerspective": 30})",
          R"({"offset": 1000, "perspectiveHeight": 1000, "perspectiveWidth": 1000})",
          R"({"offset": 1e6})", R"({"offset": 3e38})"}) {
        SCOPED_TRACE(numbers);
        Home home({numbers, bytes(numbers)});
        home.startWindow();
        ASSERT_NO_FATAL_FAILURE(home.expectItWorks());
        if (testing::kMemoryIsMeasurable) {
            EXPECT_GT(home.mostBytes(), 0U);
            EXPECT_LT(home.mostBytes(), kEnough);
        }
        ASSERT_NO_FATAL_FAILURE(home.endIt());
    }
}

}  // namespace
}  // namespace skarnel
