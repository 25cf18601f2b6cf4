// The window while another program keeps its files locked: it starts, works and ends.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QDir>
#include <atomic>
#include <cerrno>

#include "qt/application_fixture.h"
#include "qt/window_state.h"
#include "storage/settings_store.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

std::atomic<int> refusedLocks = 0;

}  // namespace
}  // namespace skarnel

/// In place of the C library's: counts how often somebody else had the lock.
extern "C" int flock(int descriptor, int operation) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_flock, descriptor, operation));
    if (result < 0 && errno == EWOULDBLOCK) ++skarnel::refusedLocks;
    return result;
}

namespace skarnel {
namespace {

/// A program that holds the lock of a file and is stopped.
class HeldLock {
  public:
    explicit HeldLock(const QString& file)
        : descriptor_(::open((file + QStringLiteral(".lock")).toUtf8().constData(),
                             O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        EXPECT_EQ(::flock(descriptor_, LOCK_EX | LOCK_NB), 0);
    }
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;
    ~HeldLock() { ::close(descriptor_); }

  private:
    int descriptor_;
};

class HeldLocksTest : public ApplicationTest {
  protected:
    /// As the program's end has it: the window is closed, and the toolkit tells of the end.
    void end() {
        emit window().closing();
        QMetaObject::invokeMethod(QApplication::instance(), "aboutToQuit", Qt::DirectConnection);
    }

    QString settings = folder.filePath(QStringLiteral("settings.json"));
    QString state = folder.filePath(QStringLiteral("state/window.json"));
    std::string settingsLine = "Couldn't save the settings in " + settings.toStdString() +
                               ": Another program keeps the settings locked\n";
    std::string stateLine = state.toStdString() + ": Another program keeps the settings locked\n";
};

TEST_F(HeldLocksTest, AtTheEndEachFileIsTriedOnceAndTheWindowsOwnFirst) {
    start();
    app->persist();
    app->actions().playCue->setChecked(false);
    app->defaults().setFloat(13, "alpha");
    {
        const HeldLock ofSettings(settings);
        const HeldLock ofState(state);
        const ScopedLogCapture log;
        end();
        EXPECT_EQ(log.text(), stateLine + settingsLine);
        // The toolkit may tell of an end that somebody stops: what changes then is stored.
        app->actions().checkerboard->setChecked(true);
        end();
        EXPECT_EQ(log.text(), stateLine + settingsLine + stateLine + settingsLine);
    }
    app->persist();
    EXPECT_EQ(SettingsStore(settings.toStdString()).floatForKey("alpha"), 13.0F);
    EXPECT_TRUE(WindowState(state).checkerboard());
    EXPECT_TRUE(WindowState(state).cueMuted());
}

TEST_F(HeldLocksTest, HeldSettingsKeepTheWindowFromNothingButStoringThem) {
    const HeldLock held(settings);
    const ScopedLogCapture log;
    refusedLocks = 0;
    start();
    app->actions().playCue->setChecked(false);
    end();
    const QString told = QString::fromStdString(log.text());
    const QString line = QString::fromStdString(settingsLine);
    EXPECT_TRUE(told.startsWith(line));
    // The lock is asked for every two milliseconds at the most: for half a second at the first
    // try, and for a tenth at each later one, however slow the machine is.
    const auto tries = static_cast<int>(told.count(line));
    EXPECT_GE(tries, 2);
    EXPECT_LE(refusedLocks, 251 + 51 * (tries - 1));
    EXPECT_FALSE(QFile::exists(settings));
    EXPECT_TRUE(WindowState(state).cueMuted());
}

}  // namespace
}  // namespace skarnel
