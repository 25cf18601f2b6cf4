// Notifications, timers, names, the format view.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QComboBox>
#include <QTemporaryDir>
#include <QTest>

#include "qt/save_options_view.h"
#include "qt/toolkit_services.h"

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
