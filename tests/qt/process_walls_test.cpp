#include "qt/process_walls.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QDesktopServices>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

#include "imaging/io/image_io.h"
#include "platform/page_module.h"
#include "qt/guide_pages.h"
#include "qt/languages.h"
#include "qt/single_instance.h"
#include "qt/test_environment.h"
#include "util/resources/resource_path.h"
#include "util/walls/helper_program.h"
#include "util/walls/landlock.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;

fs::path folder;
ProcessWalls* walls = nullptr;

/// The desktop's opener, found in PATH: notes what it is given.
void installOpener() {
    char pattern[] = "/tmp/skarnel-window-walls-XXXXXX";
    folder = ::mkdtemp(pattern);
    std::ofstream(folder / "xdg-open") << "#!/bin/sh\nprintf '%s' \"$1\" >" << folder / "new"
                                       << " && /bin/mv " << folder / "new"
                                       << " " << folder / "note"
                                       << "\n";
    ::chmod((folder / "xdg-open").c_str(), 0755);
    // The page renderer's program may lie anywhere.
    fs::copy_file("/usr/bin/true", folder / "renderer");
    ::setenv("QTWEBENGINEPROCESS_PATH", (folder / "renderer").c_str(), 1);
    ::setenv("PATH", folder.c_str(), 1);
}

std::string noted() {
    std::ifstream note(folder / "note");
    return {std::istreambuf_iterator<char>(note), {}};
}

int errorOfStarting(const char* program) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(program, program, static_cast<char*>(nullptr));
        ::_exit(errno);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(ProcessWalls, TheWindowStartsNothingButItsHelpersAndItsPagesStillOpen) {
    EXPECT_EQ(errorOfStarting("/usr/bin/true"), EACCES);
    EXPECT_EQ(errorOfStarting("/bin/sh"), EACCES);
    EXPECT_EQ(errorOfStarting((folder / "renderer").c_str()), 0);
    const auto pageRenderer = findHelperProgram(kPageRendererName);
    ASSERT_TRUE(pageRenderer);
    EXPECT_EQ(errorOfStarting(pageRenderer->c_str()), 2);  // it runs, and wants a line

    const auto photo = findResource("sample-photo.jpg");
    ASSERT_TRUE(photo);
    const auto decoded = decodeImageFile(*photo);
    ASSERT_TRUE(decoded) << decoded.error().message;
    EXPECT_EQ(decoded->image.width(), 1600);

    const QUrl page(QStringLiteral("https://" SKARNEL_HELP_HOST "/products/skarnel/"));
    EXPECT_TRUE(QDesktopServices::openUrl(page));
    EXPECT_TRUE(QTest::qWaitFor([] { return fs::exists(folder / "note"); }, 30'000));
    EXPECT_EQ(noted(), "https://" SKARNEL_HELP_HOST "/products/skarnel/");

    SingleInstance instance;
    const auto door = QString::fromStdString(folder / "door");
    ASSERT_TRUE(instance.listen(door));
    bool handed = false;
    const std::unique_ptr<QThread> second(
        QThread::create([&] { handed = SingleInstance::handOver(door, {}); }));
    second->start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return second->isFinished(); }, 10'000));
    EXPECT_TRUE(handed);

    fs::remove(folder / "note");
    QDesktopServices::openUrl(QUrl(QStringLiteral("https://elsewhere.example/")));
    QTest::qWait(100);
    EXPECT_FALSE(fs::exists(folder / "note"));

    // The guide as Help > User's Guide asks for it, in any language.
    const std::vector<QUrl> guides = guidePages();
    ASSERT_EQ(guides.size(), kCatalogues.size() + 1);
    for (const QUrl& guide : guides) {
        fs::remove(folder / "note");
        QDesktopServices::openUrl(guide);
        ASSERT_TRUE(QTest::qWaitFor([] { return fs::exists(folder / "note"); }, 30'000));
        EXPECT_EQ(noted(), guide.toEncoded().toStdString());
    }

    const QUrl help = guides.front();
    fs::remove(folder / "xdg-open");
    QSignalSpy refused(walls, &ProcessWalls::pageRefused);
    QDesktopServices::openUrl(help);
    ASSERT_EQ(refused.count(), 1);
    EXPECT_EQ(refused[0][0].toUrl(), help);
}

}  // namespace
}  // namespace skarnel

int main(int argc, char** argv) {
    skarnel::setTestEnvironment();
    ::testing::InitGoogleTest(&argc, argv);
    if (skarnel::landlockVersion() == 0) return 77;
    skarnel::installOpener();
    skarnel::ProcessWalls raised;  // before the toolkit starts threads, as the program does it
    QApplication toolkit(argc, argv);
    raised.routePages();
    skarnel::walls = &raised;
    const int code = RUN_ALL_TESTS();
    std::filesystem::remove_all(skarnel::folder);
    return code;
}
