// The user's guide against the window: the names and the keys that it gives are there.
#include <QAbstractButton>
#include <QAction>
#include <QDesktopServices>
#include <QDirIterator>
#include <QLabel>
#include <QRegularExpression>
#include <QSet>
#include <QTextBrowser>
#include <algorithm>
#include <vector>

#include "application_fixture.h"
#include "qt/companions.h"
#include "qt/guide_pages.h"
#include "qt/languages.h"
#include "qt/main_actions.h"

namespace skarnel {
namespace {

class GuideTest : public ApplicationTest {
  protected:
    QString textOf(const QString& name) {
        return QString::fromUtf8(bytesOf(QStringLiteral(SKARNEL_GUIDE "/") + name));
    }
};

QString plain(QString text) {
    // What stands behind a tab is a key.
    text = text.section(QLatin1Char('\t'), 0, 0);
    return text.remove(QRegularExpression(QStringLiteral("[&…]"))).trimmed();
}

TEST_F(GuideTest, EveryNameOfAControlIsThatOfOne) {
    start();
    QSet<QString> names;
    for (const auto* action : window().findChildren<QAction*>()) names << plain(action->text());
    for (const auto* button : window().findChildren<QAbstractButton*>())
        names << plain(button->text());
    int met = 0;
    QDirIterator pages(QStringLiteral(SKARNEL_GUIDE), {QStringLiteral("*.md")});
    while (pages.hasNext()) {
        const QString text = textOf(QFileInfo(pages.next()).fileName());
        auto bold = QRegularExpression(QStringLiteral("\\*\\*([^*]+)\\*\\*")).globalMatch(text);
        while (bold.hasNext()) {
            const QString name = bold.next().captured(1).section(QStringLiteral(" > "), -1);
            if (name.front().isLower()) continue;  // a part of the window, not its label
            EXPECT_TRUE(names.contains(name))
                << pages.fileName().toStdString() << ": " << name.toStdString();
            ++met;
        }
    }
    EXPECT_GE(met, 8);
}

TEST_F(GuideTest, EveryCommandsKeyIsInItsTable) {
    start();
    const QString table = textOf(QStringLiteral("index.md"));
    int met = 0;
    for (const auto* action : window().findChildren<QAction*>()) {
        const QString key = action->shortcut().toString(QKeySequence::PortableText);
        if (key.isEmpty()) continue;
        const auto& tools = app->actions().tools;
        const bool isMiddleTool =
            std::find(tools.begin() + 1, tools.end() - 1, action) != tools.end() - 1;
        if (isMiddleTool) continue;  // from the first to the last
        EXPECT_TRUE(table.contains(key)) << key.toStdString();
        ++met;
    }
    EXPECT_GE(met, 20);
}

TEST_F(GuideTest, ItIsOpenedFromTheMenuAndARefusalSaysWhereItIs) {
    start();
    QAction& action = app->companions().guideAction();
    ASSERT_TRUE(action.isEnabled());
    QTextBrowser browser;  // in place of the desktop's
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &browser, "setSource");
    action.trigger();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    const QString page = browser.source().toLocalFile();
    EXPECT_TRUE(page.endsWith(QStringLiteral("/help/index.html")));
    EXPECT_TRUE(QFileInfo(page).isFile());

    auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    ASSERT_NE(toast, nullptr);
    app->tellRefusedPage(browser.source());
    const QChar mayBreakHere(0x200B);  // in words that are wider than the picture
    EXPECT_EQ(toast->text().remove(mayBreakHere),
              QStringLiteral("The page cannot be opened: ") + page);
}

TEST_F(GuideTest, ItIsOpenedInTheWindowsLanguage) {
    QTextBrowser browser;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &browser, "setSource");
    for (const char* language : {"de", "zh_CN"}) {
        app.reset();
        guideCatalogue = QLatin1String(language);
        start();
        app->companions().guideAction().trigger();
        EXPECT_TRUE(browser.source().path().endsWith(
            QStringLiteral("/help/%1/index.html").arg(guideCatalogue)))
            << browser.source().path().toStdString();
    }
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

TEST(GuidePages, EveryLanguageOfTheWindowHasItsOwn) {
    std::vector<QUrl> pages{guidePage({}).value_or(QUrl())};
    for (const char* catalogue : kCatalogues) {
        const auto page = guidePage(QLatin1String(catalogue));
        ASSERT_TRUE(page) << catalogue;
        EXPECT_TRUE(QFileInfo(page->toLocalFile()).isFile()) << catalogue;
        EXPECT_EQ(std::count(pages.begin(), pages.end(), *page), 0) << catalogue;
        pages.push_back(*page);
    }
    EXPECT_EQ(guidePages(), pages);
}

TEST(GuidePages, ALanguageWithoutOneGetsTheEnglish) {
    ASSERT_TRUE(guidePage({}));
    EXPECT_EQ(guidePage(QStringLiteral("tlh")), guidePage({}));
}

}  // namespace
}  // namespace skarnel
