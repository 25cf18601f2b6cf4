// The names of the user's looks as they are typed, and where the keyboard is after that.
#include <QLineEdit>

#include "companions_fixture.h"

namespace skarnel {
namespace {

class LookNamesTest : public CompanionsTest {};

// The thumbnails are made anew by the saving itself, in the middle of the typing.
TEST_F(LookNamesTest, ANameIsTypedAcrossTheThumbnails) {
    start();
    QApplication::setActiveWindow(&window());
    for (const char* name : {"Sunset", "by the sea"}) {
        strip().saveCurrent();
        auto* editor = strip().list().viewport()->findChild<QLineEdit*>();
        ASSERT_NE(editor, nullptr);
        const auto made = [&] { return !strip().isWorking(); };
        const QString typed = QString::fromLatin1(name);
        if (typed == QStringLiteral("Sunset")) {  // before and after, the other one only after
            QTest::keyClicks(editor, typed.first(3));
            ASSERT_TRUE(QTest::qWaitFor(made, 60'000));
            QTest::keyClicks(editor, typed.sliced(3));
        } else {
            ASSERT_TRUE(QTest::qWaitFor(made, 60'000));
            QTest::keyClicks(editor, typed);
        }
        strip().finishTyping();
        settle();
        EXPECT_EQ(strip().list().item(strip().list().count() - 1)->text(), typed);
    }
}

TEST_F(LookNamesTest, TheKeyboardStaysAtTheLookThatWasNamedOrWhereOneWasRemoved) {
    start();
    QApplication::setActiveWindow(&window());
    QListWidget& list = strip().list();
    for (const char* name : {"One", "Two", "Three", "Four"}) {
        strip().saveCurrent();  // all with the numbers of one of the program's own
        auto* editor = list.viewport()->findChild<QLineEdit*>();
        ASSERT_NE(editor, nullptr);
        QTest::keyClicks(editor, QString::fromLatin1(name));
        strip().finishTyping();
        settle();
        EXPECT_EQ(list.currentItem()->text(), QString::fromLatin1(name));
    }
    list.setFocus();
    list.setCurrentRow(13);
    QTest::keyClick(&list, Qt::Key_Delete);
    settle();
    EXPECT_EQ(list.currentItem()->text(), QStringLiteral("Three"));
    QTest::keyClick(&list, Qt::Key_Delete);
    settle();
    EXPECT_EQ(list.currentItem()->text(), QStringLiteral("Four"));
    QTest::keyClick(&list, Qt::Key_Delete);
    settle();
    EXPECT_EQ(list.currentItem()->text(), QStringLiteral("One"));
    app->model().undo();
    settle();
    EXPECT_EQ(list.currentItem()->text(), QStringLiteral("One"));
    EXPECT_EQ(list.count(), 14);
}

}  // namespace
}  // namespace skarnel
