// The window while the disk hangs on which a picture was saved last.
#include <dirent.h>
#include <dlfcn.h>

#include <QDir>
#include <QThread>
#include <atomic>
#include <string>

#include "qt/application_fixture.h"
#include "qt/window_state.h"

namespace skarnel {
namespace {

/// The folder on that disk, and who lists it.
struct HangingDisk {
    std::string folder;
    std::atomic<bool> hangs = false;
    std::atomic<bool> isListed = false;
    std::atomic<bool> isListedByTheWindow = false;
};

HangingDisk& disk() {
    static auto* disk = new HangingDisk;  // the thread may be at work longer than any test
    return *disk;
}

void list(const char* folder) {
    if (!disk().hangs || folder != disk().folder) return;
    disk().isListed = true;
    if (QThread::currentThread() == QCoreApplication::instance()->thread()) {
        disk().isListedByTheWindow = true;  // standing still would only end the test later
        return;
    }
    while (disk().hangs) QThread::msleep(1);
}

}  // namespace
}  // namespace skarnel

/// In place of the C library's.
extern "C" DIR* opendir(const char* path) {
    static const auto real = reinterpret_cast<DIR* (*)(const char*)>(::dlsym(RTLD_NEXT, "opendir"));
    skarnel::list(path);
    return real(path);
}

namespace skarnel {
namespace {

class HangingDiskTest : public ApplicationTest {
  protected:
    void TearDown() override { disk().hangs = false; }
};

TEST_F(HangingDiskTest, UnderTheLastSaveDoesNotHoldUpTheWindow) {
    const QString saved = folder.filePath(QStringLiteral("saved"));
    ASSERT_TRUE(QDir().mkpath(saved));
    const QString left = saved + QStringLiteral("/.skarnel-0123456789abcdef.part");
    ASSERT_TRUE(QFile(left).open(QIODevice::WriteOnly));
    {
        WindowState state(folder.filePath(QStringLiteral("state/window.json")));
        state.setSaveFolder(saved);
        ASSERT_TRUE(state.save());
    }
    disk().folder = QFile::encodeName(saved).toStdString();
    disk().hangs = true;
    start();
    ASSERT_TRUE(QTest::qWaitFor([] { return disk().isListed.load(); }, kPatience));
    EXPECT_FALSE(disk().isListedByTheWindow);
    EXPECT_TRUE(QFile::exists(left));
    app.reset();  // the window may end meanwhile
    disk().hangs = false;
    EXPECT_TRUE(QTest::qWaitFor([&] { return !QFile::exists(left); }, kPatience));
}

}  // namespace
}  // namespace skarnel
