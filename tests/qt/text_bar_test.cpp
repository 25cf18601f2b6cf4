#include "qt/text_bar.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QFontComboBox>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

#include "qt/styled_document.h"
#include "qt/text_editor.h"
#include "slider_hands.h"

namespace skarnel {
namespace {

class TextBarTest : public ::testing::Test {
  protected:
    TextBarTest() {
        editor.setWholeFont(QStringLiteral("Times"), 48);
        editor.replaceSelection(u"text");
        editor.selectAll();
        bar.show();
    }

    QComboBox& sizes() {
        for (QComboBox* box : bar.findChildren<QComboBox*>())
            if (qobject_cast<QFontComboBox*>(box) == nullptr) return *box;
        ADD_FAILURE() << "no list of sizes";
        std::abort();
    }

    void typeSize(const char* text) {
        QLineEdit& line = *sizes().lineEdit();
        line.setFocus();
        line.selectAll();
        QTest::keyClicks(&line, QString::fromLatin1(text));
        QTest::keyClick(&line, Qt::Key_Return);
    }

    double size() { return editor.text().styleAt(0).size; }

    TextEditor editor;
    TextBar bar{editor};
};

TEST_F(TextBarTest, ATypedSizeIsTakenAlsoWithAFractionAndInTheUsersDigits) {
    typeSize("13.5");
    EXPECT_EQ(size(), 13.5);
    typeSize("14");
    EXPECT_EQ(size(), 14);
    bar.setLocale(QLocale(QLocale::German));
    typeSize("20,25");
    EXPECT_EQ(size(), 20.25);
    typeSize("3");  // also the beginning of another size on the list
    EXPECT_EQ(size(), 3);
}

TEST_F(TextBarTest, ASizeThatIsNoneGoesBack) {
    for (const char* text : {"0", "0.5", "abc", "-", ""}) {
        typeSize(text);
        EXPECT_EQ(size(), 48) << text;
        EXPECT_EQ(sizes().currentText(), QStringLiteral("48")) << text;
    }
}

/// The button that stands for the action.
QToolButton* buttonOf(const TextBar& bar, const QAction* action) {
    for (auto* button : bar.findChildren<QToolButton*>())
        if (button->defaultAction() == action) return button;
    return nullptr;
}

TEST_F(TextBarTest, AStyleIsTheSameFromItsButtonAndFromItsCommand) {
    const auto has = [&](std::size_t style) {
        const TextStyle now = editor.text().styleAt(0);
        return std::array{now.weight >= kTextWeightBold, now.slant != TextSlant::Upright,
                          now.underline == TextUnderline::Single}[style];
    };
    for (std::size_t i = 0; i < bar.styleActions().size(); ++i) {
        SCOPED_TRACE(i);
        QAction* action = bar.styleActions()[i];
        QToolButton* button = buttonOf(bar, action);
        ASSERT_NE(button, nullptr);
        EXPECT_FALSE(button->accessibleName().isEmpty());
        EXPECT_FALSE(has(i));
        action->trigger();
        EXPECT_TRUE(has(i));
        EXPECT_TRUE(button->isChecked());
        button->click();
        EXPECT_FALSE(has(i));
        EXPECT_FALSE(action->isChecked());
    }
}

TEST_F(TextBarTest, OneAlignmentIsCheckedAndIsThatOfTheParagraph) {
    const auto checked = [&] {
        std::vector<bool> each;
        for (const QAction* action : bar.alignmentActions()) each.push_back(action->isChecked());
        return each;
    };
    const TextAlignment alignments[] = {TextAlignment::Left, TextAlignment::Center,
                                        TextAlignment::Right};
    for (const std::size_t i : {2U, 1U, 0U}) {
        bar.alignmentActions()[i]->trigger();
        EXPECT_EQ(editor.text().alignments().at(0), alignments[i]);
        EXPECT_EQ(checked(), (std::vector<bool>{i == 0, i == 1, i == 2}));
        buttonOf(bar, bar.alignmentActions()[i])->click();
        EXPECT_EQ(checked(), (std::vector<bool>{i == 0, i == 1, i == 2}));
    }
}

TEST_F(TextBarTest, ShowsTheSizeAtTheCaret) {
    TextStyle style;
    style.size = 31.5;
    editor.setText(StyledText(u"a", style));
    editor.selectAll();
    EXPECT_EQ(sizes().currentText(), QStringLiteral("31.5"));
}

TEST_F(TextBarTest, TheWheelChangesTheStyleOnlyInAListThatHasTheFocus) {
    QApplication::setActiveWindow(&bar);
    const TextStyle before = editor.text().styleAt(0);
    for (QComboBox* box : bar.findChildren<QComboBox*>()) {
        box->clearFocus();
        turnWheel(*box, -120);
        turnWheel(*box->lineEdit(), -120);
        EXPECT_NE(box->focusPolicy(), Qt::WheelFocus);
        EXPECT_FALSE(box->hasFocus());
    }
    EXPECT_TRUE(editor.text().styleAt(0) == before);
    sizes().setFocus();
    ASSERT_TRUE(sizes().hasFocus());
    turnWheel(sizes(), -120);
    EXPECT_NE(size(), 48);
}

TEST_F(TextBarTest, TheNextTypefaceByKeyIsTheNextToTheOneShown) {
    auto& families = *bar.findChild<QFontComboBox*>();
    if (families.count() < 5) GTEST_SKIP() << "needs some typefaces";
    QApplication::setActiveWindow(&bar);
    families.setFocus();
    const auto family = [&] { return editor.text().styleAt(0).family; };
    const auto listed = [&](int index) { return families.itemText(index).toStdString(); };
    // The last one that was chosen plays no part.
    QTest::keyClick(&families, Qt::Key_Down);
    for (const int shown : {0, 2, families.count() - 2}) {
        SCOPED_TRACE(listed(shown));
        editor.setWholeFont(families.itemText(shown), 48);
        editor.selectAll();
        EXPECT_EQ(families.currentText().toStdString(), listed(shown));
        QTest::keyClick(&families, Qt::Key_Down);
        EXPECT_EQ(family(), listed(shown + 1));
        QTest::keyClick(&families, Qt::Key_Up);
        EXPECT_EQ(family(), listed(shown));
    }
    // One that is not on the list has its place there all the same.
    editor.setWholeFont(families.itemText(1) + QStringLiteral("!"), 48);
    editor.selectAll();
    EXPECT_EQ(families.currentText().toStdString(), listed(1) + "!");
    QTest::keyClick(&families, Qt::Key_Down);
    EXPECT_EQ(family(), listed(2));
}

TEST_F(TextBarTest, TheNextSizeByKeyIsTheNextOnTheList) {
    const struct {
        const char* typed;
        double next;
    } rows[] = {{"48", 64}, {"31.5", 36}, {"3", 9}, {"144", 288}, {"288", 288}};
    QApplication::setActiveWindow(&bar);
    for (const auto& row : rows) {
        typeSize(row.typed);
        QTest::keyClick(&sizes(), Qt::Key_Down);
        EXPECT_EQ(size(), row.next) << row.typed;
    }
}

}  // namespace
}  // namespace skarnel
