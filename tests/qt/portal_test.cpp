// Files by the desktop's dialogs, from a desktop that is played by the test on a bus of its own.
#include <QAction>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QDialogButtonBox>
#include <QDir>
#include <QProcess>
#include <QPushButton>
#include <QTimer>
#include <QUrl>

#include "application_fixture.h"
#include "qt/portal_file_dialog.h"
#include "qt/save_options_view.h"

namespace skarnel {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kRequest = QStringLiteral("org.freedesktop.portal.Request");
constexpr uint kChosen = 0;
constexpr uint kCancelled = 1;

/// Notes each question and gives the prepared answer, unless it is to keep silent.
class Desktop final : public QDBusVirtualObject {
  public:
    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.member() == QLatin1String("Close")) {
            ++closed;
            return bus.send(message.createReply());
        }
        asked << message.member();
        title = message.arguments().at(1).toString();
        options = qdbus_cast<QVariantMap>(message.arguments().at(2));
        QString sender = message.service().mid(1);
        sender.replace(QLatin1Char('.'), QLatin1Char('_'));
        const QString request = QStringLiteral("%1/request/%2/%3")
                                    .arg(kPath, sender, options.value("handle_token").toString());
        bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        if (isSilent) return true;
        QDBusMessage answer =
            QDBusMessage::createSignal(request, kRequest, QStringLiteral("Response"));
        answer << response << QVariantMap{{QStringLiteral("uris"), uris}};
        return bus.send(answer);
    }
    uint response = kChosen;
    QStringList uris;
    bool isSilent = false;
    QStringList asked;
    QString title;
    QVariantMap options;
    int closed = 0;
};

class PortalTest : public ApplicationTest {
  protected:
    void SetUp() override {
        daemon_.start(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--nofork"),
                       QStringLiteral("--print-address")});
        ASSERT_TRUE(daemon_.waitForStarted(kPatience)) << "needs a bus daemon, package dbus";
        ASSERT_TRUE(daemon_.waitForReadyRead(kPatience));
        const QString address = QString::fromLocal8Bit(daemon_.readLine()).trimmed();
        desktopBus_ = QDBusConnection::connectToBus(address, QStringLiteral("file desktop"));
        ASSERT_TRUE(desktopBus_.registerVirtualObject(kPath, &desktop, QDBusConnection::SubPath));
        ASSERT_TRUE(desktopBus_.registerService(kService));
        start();
        const QDBusConnection bus =
            QDBusConnection::connectToBus(address, QStringLiteral("file program"));
        ASSERT_TRUE(bus.isConnected());
        app->toolkit().setFilePortal(bus);
    }
    void TearDown() override {
        app.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("file desktop"));
        QDBusConnection::disconnectFromBus(QStringLiteral("file program"));
        daemon_.kill();
        daemon_.waitForFinished(kPatience);
    }

    bool wait(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, kPatience);
    }
    QString target(const QString& name) const { return folder.filePath(name); }
    void willPick(const QString& name) {
        desktop.uris = QStringList{QUrl::fromLocalFile(target(name)).toString()};
    }
    void leave() { desktopBus_.unregisterService(kService); }

    QDialog* sheet() { return window().findChild<QDialog*>(QStringLiteral("savePanel")); }
    void press(QDialogButtonBox::StandardButton button) {
        sheet()->findChild<QDialogButtonBox*>()->button(button)->click();
    }

    /// A panel as the controller begins one; its ends are noted.
    void begin() {
        panel = app->toolkit().savePanel();
        panel->beginSheet(
            std::nullopt, "Beach.tiff", app->resultWindow(),
            [this](NSSavePanel& ended, int code, void* context) {
                EXPECT_EQ(&ended, panel.get());
                EXPECT_EQ(context, this);
                codes.push_back(code);
            },
            this);
    }

    Desktop desktop;
    std::shared_ptr<NSSavePanel> panel;
    std::vector<int> codes;

  private:
    QProcess daemon_;
    QDBusConnection desktopBus_{QString()};
};

TEST_F(PortalTest, SavesInTheChosenFormatWhereTheUserPicked) {
    app->actions().save->trigger();
    ASSERT_NE(sheet(), nullptr);
    auto* options = sheet()->findChild<SaveOptionsView*>();
    ASSERT_NE(options, nullptr);
    EXPECT_TRUE(options->isVisible());
    EXPECT_TRUE(desktop.asked.isEmpty());
    options->setType(kUTTypePNG);
    willPick(QStringLiteral("Summer 100%.png"));
    press(QDialogButtonBox::Save);
    ASSERT_TRUE(wait([&] { return QFile::exists(target(QStringLiteral("Summer 100%.png"))); }));
    EXPECT_EQ(desktop.asked, QStringList{QStringLiteral("SaveFile")});
    EXPECT_EQ(desktop.options.value(QStringLiteral("current_name")).toString(),
              QStringLiteral("TavelinLogo.png"));
    EXPECT_EQ(desktop.title, QStringLiteral("Save Result"));
    EXPECT_TRUE(desktop.options.contains(QStringLiteral("current_filter")));
    EXPECT_TRUE(bytesOf(target(QStringLiteral("Summer 100%.png"))).startsWith("\x89PNG"));
}

TEST_F(PortalTest, TheFormatFollowsTheNameThatWasPickedAndNoOtherFileIsWritten) {
    app->actions().save->trigger();
    ASSERT_NE(sheet(), nullptr);
    willPick(QStringLiteral("Beach.jpg"));
    press(QDialogButtonBox::Save);
    ASSERT_TRUE(wait([&] { return QFile::exists(target(QStringLiteral("Beach.jpg"))); }));
    EXPECT_TRUE(bytesOf(target(QStringLiteral("Beach.jpg"))).startsWith("\xFF\xD8\xFF"));
    // A name without an extension is kept as it is: nothing else was granted.
    ASSERT_TRUE(wait([&] { return sheet() == nullptr; }));
    app->actions().save->trigger();
    ASSERT_NE(sheet(), nullptr);
    willPick(QStringLiteral("plain"));
    press(QDialogButtonBox::Save);
    ASSERT_TRUE(wait([&] { return QFile::exists(target(QStringLiteral("plain"))); }));
    EXPECT_EQ(QDir(folder.path()).entryList({QStringLiteral("plain*")}, QDir::Files),
              QStringList{QStringLiteral("plain")});
}

TEST_F(PortalTest, ThePanelEndsOnceWhicheverHalfIsCancelled) {
    begin();
    press(QDialogButtonBox::Cancel);
    EXPECT_EQ(codes, std::vector{NSCancelButton});
    EXPECT_TRUE(desktop.asked.isEmpty());
    ASSERT_TRUE(wait([&] { return sheet() == nullptr; }));

    desktop.response = kCancelled;
    begin();
    press(QDialogButtonBox::Save);
    ASSERT_TRUE(wait([&] { return codes.size() == 2; }));
    EXPECT_EQ(codes.back(), NSCancelButton);
    EXPECT_EQ(panel->filename(), "");
    ASSERT_TRUE(wait([&] { return sheet() == nullptr; }));

    desktop.response = kChosen;
    willPick(QStringLiteral("a.png"));
    begin();
    press(QDialogButtonBox::Save);
    ASSERT_TRUE(wait([&] { return codes.size() == 3; }));
    EXPECT_EQ(codes.back(), NSOKButton);
    EXPECT_EQ(panel->filename(), target(QStringLiteral("a.png")).toStdString());
    QApplication::processEvents();
    EXPECT_EQ(codes.size(), 3U);
}

TEST_F(PortalTest, TheWindowWaitsWhileTheDesktopAsksAndTakesTheQuestionBack) {
    desktop.isSilent = true;
    begin();
    press(QDialogButtonBox::Save);
    ASSERT_TRUE(wait([&] { return desktop.asked.size() == 1; }));
    auto* place = qobject_cast<PortalFileDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(place, nullptr);
    EXPECT_TRUE(codes.empty());
    place->reject();
    EXPECT_EQ(codes, std::vector{NSCancelButton});
    EXPECT_TRUE(wait([&] { return desktop.closed == 1; }));
}

TEST_F(PortalTest, ADesktopThatGoesAwayOrIsNotThereEndsThePanel) {
    desktop.isSilent = true;
    begin();
    press(QDialogButtonBox::Save);
    ASSERT_TRUE(wait([&] { return desktop.asked.size() == 1; }));
    leave();
    ASSERT_TRUE(wait([&] { return codes.size() == 1; }));
    EXPECT_EQ(codes.back(), NSCancelButton);
    ASSERT_TRUE(wait([&] { return sheet() == nullptr; }));
    begin();
    press(QDialogButtonBox::Save);
    ASSERT_TRUE(wait([&] { return codes.size() == 2; }));
    EXPECT_EQ(codes.back(), NSCancelButton);
}

TEST_F(PortalTest, PicturesAreOpenedThroughTheDesktopToo) {
    const QString red = picture(QStringLiteral("Red.png"), 30, 20, Qt::red);
    willPick(QStringLiteral("Red.png"));
    app->actions().open->trigger();
    EXPECT_EQ(desktop.asked, QStringList{QStringLiteral("OpenFile")});
    EXPECT_EQ(app->state().recentFiles(), QStringList{red});
    desktop.response = kCancelled;
    app->actions().open->trigger();
    EXPECT_EQ(desktop.asked.size(), 2);
    EXPECT_EQ(app->state().recentFiles(), QStringList{red});
}

TEST_F(PortalTest, RecipesComeAndGoThroughTheDesktopToo) {
    const auto action = [this](const QString& text) {
        for (QAction* each : window().findChildren<QAction*>())
            if (each->text().remove(QLatin1Char('&')) == text) return each;
        return static_cast<QAction*>(nullptr);
    };
    QAction* save = action(QStringLiteral("Save Recipe…"));
    QAction* open = action(QStringLiteral("Open Recipe…"));
    ASSERT_TRUE(save != nullptr && open != nullptr);
    app->model().changeNumber(QStringLiteral("Height"), "perspectiveHeight", 30);
    willPick(QStringLiteral("Look"));
    save->trigger();
    EXPECT_EQ(desktop.asked, QStringList{QStringLiteral("SaveFile")});
    EXPECT_EQ(desktop.options.value(QStringLiteral("current_name")).toString(),
              QStringLiteral("TavelinLogo.skarnel"));
    EXPECT_TRUE(QFile::exists(target(QStringLiteral("Look"))));
    app->model().changeNumber(QStringLiteral("Height"), "perspectiveHeight", 60);
    open->trigger();
    EXPECT_EQ(desktop.asked.back(), QStringLiteral("OpenFile"));
    EXPECT_EQ(app->model().number("perspectiveHeight"), 30.0F);
}

}  // namespace
}  // namespace skarnel
