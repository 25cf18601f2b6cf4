// Less motion on request, from a desktop that is played by the test on a bus of its own.
#include "qt/motion.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStyle>
#include <QTest>

namespace skarnel {
namespace {

const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kDesktop = QStringLiteral("org.gnome.desktop.interface");
constexpr int kPatience = 10'000;  // milliseconds

/// Answers Read as the desktop's portal does: a variant in a variant.
class Desktop final : public QDBusVirtualObject {
  public:
    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.member() != QLatin1String("Read")) return false;
        const QVariant value = message.arguments().at(0) == kAppearance ? QVariant(reducedMotion)
                                                                        : QVariant(animations);
        const QDBusVariant inner(value);
        bus.send(
            message.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(inner)))));
        ++asked;
        return true;
    }
    uint reducedMotion = 0;
    bool animations = true;
    int asked = 0;
};

class MotionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        daemon_.start(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--nofork"),
                       QStringLiteral("--print-address")});
        ASSERT_TRUE(daemon_.waitForStarted(kPatience)) << "needs a bus daemon, package dbus";
        ASSERT_TRUE(daemon_.waitForReadyRead(kPatience));
        const QString address = QString::fromLocal8Bit(daemon_.readLine()).trimmed();
        desktopBus_ = QDBusConnection::connectToBus(address, QStringLiteral("desktop"));
        ASSERT_TRUE(desktopBus_.registerVirtualObject(kPath, &desktop));
        ASSERT_TRUE(desktopBus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
        bus = QDBusConnection::connectToBus(address, QStringLiteral("program"));
        ASSERT_TRUE(bus.isConnected());
    }
    void TearDown() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("desktop"));
        QDBusConnection::disconnectFromBus(QStringLiteral("program"));
        daemon_.kill();
        daemon_.waitForFinished(kPatience);
    }

    void say(const QString& group, const QString& key, const QVariant& value) {
        QDBusMessage signal =
            QDBusMessage::createSignal(kPath, kInterface, QStringLiteral("SettingChanged"));
        signal << group << key << QVariant::fromValue(QDBusVariant(value));
        ASSERT_TRUE(desktopBus_.send(signal));
    }
    bool becomes(const Motion& motion, bool reduced) {
        return QTest::qWaitFor([&] { return motion.isReduced() == reduced; }, kPatience);
    }
    static int duration() {
        return QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration);
    }

    Desktop desktop;
    QDBusConnection bus{QString()};

  private:
    QProcess daemon_;
    QDBusConnection desktopBus_{QString()};
};

TEST_F(MotionTest, IsReducedFromTheStartWhereTheDesktopSaysSo) {
    desktop.reducedMotion = 1;
    Motion motion;
    EXPECT_FALSE(motion.isReduced());
    motion.follow(bus);
    ASSERT_TRUE(becomes(motion, true));
    EXPECT_EQ(duration(), 0);
    EXPECT_FALSE(QApplication::isEffectEnabled(Qt::UI_General));
    say(kAppearance, QStringLiteral("reduced-motion"), 0U);
    ASSERT_TRUE(becomes(motion, false));
}

TEST_F(MotionTest, FollowsTheDesktopWhileTheProgramRuns) {
    QApplication::setEffectEnabled(Qt::UI_General, true);
    const int before = duration();
    Motion motion;
    motion.follow(bus);
    ASSERT_TRUE(QTest::qWaitFor([&] { return desktop.asked == 2; }, kPatience));
    EXPECT_FALSE(motion.isReduced());
    say(kDesktop, QStringLiteral("enable-animations"), false);
    ASSERT_TRUE(becomes(motion, true));
    EXPECT_EQ(duration(), 0);
    EXPECT_FALSE(QApplication::isEffectEnabled(Qt::UI_General));
    // Both sources have to want motion.
    say(kAppearance, QStringLiteral("reduced-motion"), 1U);
    say(kDesktop, QStringLiteral("enable-animations"), true);
    say(kAppearance, QStringLiteral("contrast"), 1U);
    say(kAppearance, QStringLiteral("reduced-motion"), 0U);
    ASSERT_TRUE(becomes(motion, false));
    EXPECT_EQ(duration(), before);
    EXPECT_TRUE(QApplication::isEffectEnabled(Qt::UI_General));
    QApplication::setEffectEnabled(Qt::UI_General, false);
}

TEST_F(MotionTest, WithoutADesktopThereIsMotion) {
    Motion motion;
    motion.follow(QDBusConnection(QStringLiteral("nowhere")));
    EXPECT_FALSE(motion.isReduced());
}

}  // namespace
}  // namespace skarnel
