#include "qt/text_editor.h"

#include <gtest/gtest.h>

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>

#include "qt/styled_document.h"

namespace skarnel {
namespace {

/// A paragraph without a line is not painted.
bool everyParagraphHasALine(const TextEditor& editor) {
    editor.document()->documentLayout()->documentSize();
    for (QTextBlock block = editor.document()->begin(); block.isValid(); block = block.next())
        if (block.layout()->lineCount() == 0) return false;
    return true;
}

struct Asked {
    std::vector<NSRange> ranges;
    std::vector<std::u16string> replacements;
};

class TextEditorTest : public ::testing::Test {
  protected:
    TextEditorTest() {
        editor.setMayEdit([this](const auto& ranges, const auto& replacements) {
            asked.push_back({ranges, replacements});
            return answer;
        });
        editor.show();
        editor.setFocus();
    }
    TextEditor editor;
    std::vector<Asked> asked;
    bool answer = true;
};

TEST_F(TextEditorTest, ThePlaceholderIsWhiteTimesAt48AndNobodyIsAsked) {
    editor.setWholeFont(QStringLiteral("Times"), 48);
    editor.replaceSelection(u"Enter text for imaging here");
    EXPECT_EQ(editor.text().length(), 27U);
    editor.colorRange(Qt::white, {0, editor.text().length()});
    TextStyle style;
    style.family = "Times";
    style.size = 48;
    style.color = {255, 255, 255, 255};
    EXPECT_EQ(editor.text(), StyledText(u"Enter text for imaging here", style));
    EXPECT_TRUE(asked.empty());
    EXPECT_TRUE(everyParagraphHasALine(editor));
}

TEST_F(TextEditorTest, TypingGoesOnInTheStyleBefore) {
    editor.setWholeFont(QStringLiteral("Times"), 48);
    editor.replaceSelection(u"a");
    editor.colorRange(Qt::white, {0, 1});
    QTest::keyClicks(&editor, QStringLiteral("b"));
    EXPECT_EQ(editor.text().runs().size(), 1U);
    EXPECT_EQ(editor.text().characters(), u"ab");
}

TEST_F(TextEditorTest, ASingleCarriageReturnIsKeptAndItsStyleToo) {
    editor.setWholeFont(QStringLiteral("Times"), 48);
    editor.replaceSelection(u"old");
    editor.colorRange(Qt::white, {0, 3});
    editor.replaceAll(u"\r");
    EXPECT_EQ(editor.text().characters(), u"\r");
    EXPECT_TRUE(everyParagraphHasALine(editor));
    QTest::keyClicks(&editor, QStringLiteral("n"));
    const StyledText text = editor.text();
    ASSERT_EQ(text.length(), 2U);
    EXPECT_EQ(text.styleAt(text.characters().find(u'n')).color, (TextColor{255, 255, 255, 255}));
    EXPECT_EQ(text.styleAt(text.characters().find(u'n')).size, 48);
}

TEST_F(TextEditorTest, AsksOnceBeforeEveryEditByTheUser) {
    QTest::keyClicks(&editor, QStringLiteral("ab"));
    EXPECT_EQ(asked.size(), 2U);
    EXPECT_EQ(asked[1].ranges, (std::vector<NSRange>{{1, 0}}));
    EXPECT_EQ(asked[1].replacements, std::vector<std::u16string>{u"b"});
    QTest::keyClick(&editor, Qt::Key_Backspace);
    EXPECT_EQ(asked.size(), 3U);
    QTest::keyClick(&editor, Qt::Key_Left);
    EXPECT_EQ(asked.size(), 3U);
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    editor.selectAll();
    editor.mergeStyle(bold);
    EXPECT_EQ(asked.size(), 4U);
}

TEST_F(TextEditorTest, NotesAnEditThatCameAnotherWay) {
    QTextCursor cursor = editor.textCursor();
    cursor.insertText(QStringLiteral("menu"));
    EXPECT_EQ(asked.size(), 1U);
}

TEST_F(TextEditorTest, TheAnswerNoPreventsTheEdit) {
    answer = false;
    QTest::keyClicks(&editor, QStringLiteral("ab"));
    EXPECT_TRUE(editor.text().isEmpty());
}

TEST_F(TextEditorTest, PastesTextInTheStyleOfThePlace) {
    editor.setWholeFont(QStringLiteral("Times"), 48);
    editor.replaceSelection(u"x");
    auto* html = new QMimeData;
    html->setHtml(QStringLiteral("<b style='color:red'>rich</b>"));
    html->setText(QStringLiteral("rich"));
    QApplication::clipboard()->setMimeData(html);
    editor.paste();
    EXPECT_EQ(editor.text().characters(), u"xrich");
    EXPECT_EQ(editor.text().runs().size(), 1U);
    EXPECT_EQ(asked.size(), 1U);
}

TEST_F(TextEditorTest, ItsGroundIsTheBackgroundAndItsCaretIsSeenOnIt) {
    editor.setGround(QColor(10, 20, 30, 40));
    EXPECT_EQ(editor.palette().color(QPalette::Base), QColor(10, 20, 30));
    EXPECT_EQ(editor.palette().color(QPalette::Text), QColor(Qt::white));
    editor.setGround(Qt::yellow);
    EXPECT_EQ(editor.palette().color(QPalette::Text), QColor(Qt::black));
}

}  // namespace
}  // namespace skarnel
