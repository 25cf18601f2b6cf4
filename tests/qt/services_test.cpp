// Notifications, timers, names, the window's state, the single instance, the format view.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QComboBox>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include "qt/save_options_view.h"
#include "qt/single_instance.h"
#include "qt/toolkit_services.h"
#include "qt/window_state.h"

namespace skarnel {
namespace {

constexpr std::string_view kName = "name";

TEST(NotificationCenter, DeliversInOrderToThoseWhoObserveTheSender) {
    QtNotificationCenter center;
    const NSObject observer;
    const NSObject sender;
    const NSObject another;
    std::string log;
    center.addObserver(
        observer, [&](const auto&) { log += "any "; }, kName, nullptr);
    center.addObserver(
        observer, [&](const auto&) { log += "one "; }, kName, &sender);
    center.addObserver(
        observer, [&](const auto&) { log += "never "; }, "other", nullptr);
    center.postNotification({kName, &sender});
    center.postNotification({kName, &another});
    EXPECT_EQ(log, "any one any ");
}

TEST(NotificationCenter, AHandlerMayTakeBackWhatWouldComeNext) {
    QtNotificationCenter center;
    const NSObject first;
    const NSObject second;
    int calls = 0;
    center.addObserver(
        first,
        [&](const auto&) {
            ++calls;
            center.removeObserver(first, kName, nullptr);
            center.removeObserver(second, kName, nullptr);
        },
        kName, nullptr);
    center.addObserver(
        second, [&](const auto&) { calls += 100; }, kName, nullptr);
    center.postNotification({kName, nullptr});
    center.postNotification({kName, nullptr});
    EXPECT_EQ(calls, 1);
}

TEST(RunLoop, ATimerFiresOnceAndACancelledOneNever) {
    QtRunLoop loop;
    int fired = 0;
    loop.scheduledTimerWithTimeInterval(
        0.001, [&](NSTimer&) { ++fired; }, false);
    NSTimer* cancelled = loop.scheduledTimerWithTimeInterval(
        0.001, [&](NSTimer&) { fired += 100; }, false);
    cancelled->invalidate();
    while (fired == 0) EXPECT_TRUE(loop.runMode(NSDefaultRunLoopMode, 1.0));
    EXPECT_TRUE(loop.runMode(NSDefaultRunLoopMode, 0.02));
    EXPECT_EQ(fired, 1);
}

TEST(RunLoop, ARepeatingTimerMayEndItself) {
    QtRunLoop loop;
    int fired = 0;
    loop.scheduledTimerWithTimeInterval(
        0.001,
        [&](NSTimer& timer) {
            if (++fired == 3) timer.invalidate();
        },
        true);
    while (fired < 3) loop.runMode(NSDefaultRunLoopMode, 1.0);
    loop.runMode(NSDefaultRunLoopMode, 0.02);
    EXPECT_EQ(fired, 3);
}

TEST(TemporaryFiles, TheDirectoryIsTheUsersAloneAndOneOfSomebodyElseIsNotUsed) {
    const QTemporaryDir parent;
    const std::string base = parent.path().toStdString();
    const auto own = privateTemporaryDirectory(base);
    ASSERT_TRUE(own);
    struct stat status {};
    ASSERT_EQ(stat(own->c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
    EXPECT_EQ(privateTemporaryDirectory(base), own);
    ASSERT_EQ(chmod(own->c_str(), 0755), 0);
    const auto fresh = privateTemporaryDirectory(base);
    ASSERT_TRUE(fresh);
    EXPECT_NE(fresh, own);
    EXPECT_EQ(privateTemporaryDirectory(base + "/missing"), std::nullopt);
}

TEST(TemporaryFiles, NamesAreFresh) {
    EXPECT_NE(freshTemporaryName(), freshTemporaryName());
}

TEST(WindowState, ComesBackAsItWasAndDamageCountsAsNothing) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("deep/window.json"));
    {
        WindowState state(path);
        EXPECT_FALSE(state.cueMuted());
        EXPECT_TRUE(state.textShown());
        state.setCueMuted(true);
        state.setGeometry("bytes");
        state.addRecentFile(QStringLiteral("/a/b.png"));
        EXPECT_TRUE(state.save());
    }
    WindowState again(path);
    EXPECT_TRUE(again.cueMuted());
    EXPECT_EQ(again.geometry(), QByteArray("bytes"));
    EXPECT_EQ(again.recentFiles(), QStringList{QStringLiteral("/a/b.png")});
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"cueMuted\": tr");
    file.close();
    EXPECT_FALSE(WindowState(path).cueMuted());
}

TEST(WindowState, RecentFilesAreTheLatestFirstOnceAndTen) {
    WindowState state{QString()};
    for (int i = 0; i < 14; ++i) state.addRecentFile(QStringLiteral("/p/%1.png").arg(i));
    state.addRecentFile(QStringLiteral("/p/9.png"));
    const QStringList files = state.recentFiles();
    EXPECT_EQ(files.size(), 10);
    EXPECT_EQ(files.front(), QStringLiteral("/p/9.png"));
    EXPECT_EQ(files.count(QStringLiteral("/p/9.png")), 1);
    state.clearRecentFiles();
    EXPECT_TRUE(state.recentFiles().isEmpty());
}

TEST(SingleInstance, ASecondStartHandsItsPicturesToTheFirst) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    EXPECT_FALSE(SingleInstance::handOver(door, {}));
    SingleInstance first;
    ASSERT_TRUE(first.listen(door));
    QStringList received;
    int calls = 0;
    QObject::connect(&first, &SingleInstance::called, [&](const QStringList& pictures) {
        received = pictures;
        ++calls;
    });
    // The second start is another process; here another thread stands for it.
    bool handed = false;
    const std::unique_ptr<QThread> second(QThread::create(
        [&] { handed = SingleInstance::handOver(door, {QStringLiteral("/p/a b.png")}); }));
    second->start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return second->isFinished(); }, 10'000));
    EXPECT_TRUE(handed);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(received, QStringList{QStringLiteral("/p/a b.png")});
}

TEST(SingleInstance, AProgramAtWorkIsHandedThePicturesAndKeepsItsDoor) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    SingleInstance first;
    ASSERT_TRUE(first.listen(door));
    std::vector<QStringList> calls;
    QObject::connect(&first, &SingleInstance::called,
                     [&](const QStringList& pictures) { calls.push_back(pictures); });
    // No event is handled meanwhile, as by a program that renders.
    EXPECT_TRUE(SingleInstance::handOver(door, {QStringLiteral("/p/a.png")}));
    SingleInstance second;
    EXPECT_FALSE(second.listen(door));
    EXPECT_TRUE(calls.empty());
    EXPECT_TRUE(SingleInstance::handOver(door, {QStringLiteral("/p/b.png")}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return calls.size() == 2; }, 10'000));
    EXPECT_EQ(calls, (std::vector<QStringList>{{QStringLiteral("/p/a.png")},
                                               {QStringLiteral("/p/b.png")}}));
}

TEST(SingleInstance, APictureThatIsRefusedIsNotHandedOver) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    QLocalServer stranger;
    ASSERT_TRUE(stranger.listen(door));
    bool handed = true;
    const std::unique_ptr<QThread> second(QThread::create(
        [&] { handed = SingleInstance::handOver(door, {QStringLiteral("/p/a.png")}); }));
    QObject::connect(&stranger, &QLocalServer::newConnection,
                     [&] { stranger.nextPendingConnection()->abort(); });
    second->start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return second->isFinished(); }, 10'000));
    EXPECT_FALSE(handed);
}

TEST(SingleInstance, TheDoorIsTheUsersAlone) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    const mode_t before = ::umask(0);
    SingleInstance instance;
    ASSERT_TRUE(instance.listen(door));
    EXPECT_EQ(::umask(before), 0U);
    struct stat status {};
    ASSERT_EQ(::stat(door.toLocal8Bit().constData(), &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    EXPECT_EQ(status.st_mode & 077, 0U);
}

TEST(SingleInstance, ADoorLeftByAProgramThatDiedIsReplaced) {
    const QTemporaryDir folder;
    const QString door = folder.filePath(QStringLiteral("door"));
    QFile left(door);
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    left.close();
    SingleInstance next;
    EXPECT_TRUE(next.listen(door));
}

TEST(SaveOptionsView, StartsFromTheSourceAndKeepsItsResolution) {
    const ImageProperties source{
        {"DPIWidth", 300.0}, {"DPIHeight", 300.0}, {"{TIFF}.Compression", std::int64_t{8}}};
    SaveOptionsView view(source, "public.tiff");
    EXPECT_EQ(view.type(), "public.tiff");
    EXPECT_EQ(view.properties(), source);
    view.setType("public.jpeg");
    const ImageProperties chosen = view.properties();
    EXPECT_EQ(std::get<double>(chosen.at("DPIWidth")), 300.0);
    EXPECT_EQ(std::get<double>(chosen.at("LossyCompressionQuality")), 0.9);
}

TEST(SaveOptionsView, TheExtensionFollowsTheFormatAndTheFormatATypedExtension) {
    SaveOptionsView view({}, "public.tiff");
    view.setType("public.png");
    EXPECT_EQ(view.renamed(QStringLiteral("Beach Reflection.tiff")),
              QStringLiteral("Beach Reflection.png"));
    EXPECT_EQ(view.renamed(QStringLiteral("Beach.2010 Reflection")),
              QStringLiteral("Beach.2010 Reflection.png"));
    view.setType("public.tiff");
    EXPECT_EQ(view.renamed(QStringLiteral("short.tif")), QStringLiteral("short.tif"));
    view.followName(QStringLiteral("x.JPG"));
    EXPECT_EQ(view.type(), "public.jpeg");
    view.followName(QStringLiteral("x.unknown"));
    EXPECT_EQ(view.type(), "public.jpeg");
}

}  // namespace
}  // namespace skarnel
