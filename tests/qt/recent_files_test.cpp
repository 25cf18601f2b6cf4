// The menu of recent files.
#include <QAction>
#include <QDir>
#include <QLabel>
#include <QMenu>

#include "application_fixture.h"

namespace skarnel {
namespace {

class RecentFilesTest : public ApplicationTest {
  protected:
    /// The menu as it opens, without its separator.
    QList<QAction*> opened() {
        emit app->actions().recent->aboutToShow();
        QList<QAction*> entries;
        for (QAction* each : app->actions().recent->actions())
            if (!each->isSeparator()) entries << each;
        return entries;
    }
    QStringList texts() {
        QStringList all;
        for (const QAction* each : opened()) all << each->text();
        return all;
    }
};

TEST_F(RecentFilesTest, TheLatestStandsFirstOnceAndTenAtMost) {
    start();
    EXPECT_EQ(texts(), QStringList{QStringLiteral("&Clear Menu")});
    EXPECT_FALSE(opened().front()->isEnabled());
    for (int i = 0; i < 12; ++i)
        ASSERT_TRUE(app->openPicture(picture(QStringLiteral("P%1.png").arg(i), 8, 6, Qt::red)));
    ASSERT_TRUE(app->openPicture(folder.filePath(QStringLiteral("P7.png"))));
    QStringList expected{QStringLiteral("P7.png")};
    for (const int i : {11, 10, 9, 8, 6, 5, 4, 3, 2}) expected << QStringLiteral("P%1.png").arg(i);
    expected << QStringLiteral("&Clear Menu");
    EXPECT_EQ(texts(), expected);
}

TEST_F(RecentFilesTest, AnEntryTakesTheRoadOfAPhotoAndComesToTheFront) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Old & wide.png"), 60, 10, Qt::red)));
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("New.png"), 20, 20, Qt::blue)));
    viewer().selectAll();
    const QList<QAction*> entries = opened();
    ASSERT_EQ(entries.size(), 3);
    EXPECT_EQ(entries[1]->text(), QStringLiteral("Old && wide.png"));
    entries[1]->trigger();
    EXPECT_EQ(app->controller().saveFilename, "Old & wide Reflection");
    EXPECT_EQ(viewer().shownImage().size(), QSize(60, 20));
    EXPECT_FALSE(viewer().sheet().hasEdits());
    EXPECT_EQ(texts().front(), QStringLiteral("Old && wide.png"));
}

TEST_F(RecentFilesTest, AMissingFileIsAnsweredAndStaysForWhenItComesBack) {
    start();
    const QString path = picture(QStringLiteral("Away.png"), 20, 20, Qt::blue);
    ASSERT_TRUE(app->openPicture(path));
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Here.png"), 30, 20, Qt::red)));
    ASSERT_TRUE(QFile::rename(path, path + QStringLiteral(".gone")));
    opened()[1]->trigger();
    EXPECT_EQ(app->controller().saveFilename, "Here Reflection");
    auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    ASSERT_NE(toast, nullptr);
    EXPECT_TRUE(toast->isVisible());
    EXPECT_EQ(toast->text(),
              QStringLiteral("“Away.png” cannot be read: No such file or directory."));
    ASSERT_TRUE(QFile::rename(path + QStringLiteral(".gone"), path));
    opened()[1]->trigger();
    EXPECT_EQ(app->controller().saveFilename, "Away Reflection");
    EXPECT_FALSE(toast->isVisible()) << "it was about what is over";
}

TEST_F(RecentFilesTest, NamesThatAreTheSameAreToldApartByTheirFolders) {
    start();
    for (const char* place : {"one", "two"}) {
        ASSERT_TRUE(QDir(folder.path()).mkdir(QLatin1String(place)));
        ASSERT_TRUE(app->openPicture(
            picture(QStringLiteral("%1/Same.png").arg(QLatin1String(place)), 20, 20, Qt::blue)));
    }
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Other.png"), 20, 20, Qt::red)));
    EXPECT_EQ(texts().mid(0, 3),
              (QStringList{QStringLiteral("Other.png"), QStringLiteral("Same.png — two"),
                           QStringLiteral("Same.png — one")}));
    EXPECT_TRUE(app->actions().recent->toolTipsVisible());
}

TEST_F(RecentFilesTest, ClearingEmptiesTheMenuForTheNextStartToo) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("A.png"), 20, 20, Qt::blue)));
    opened().back()->trigger();
    EXPECT_EQ(texts(), QStringList{QStringLiteral("&Clear Menu")});
    EXPECT_EQ(app->controller().saveFilename, "A Reflection");
    app->persist();
    app.reset();
    start();
    EXPECT_EQ(texts(), QStringList{QStringLiteral("&Clear Menu")});
}

}  // namespace
}  // namespace skarnel
