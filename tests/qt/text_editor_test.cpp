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

TEST_F(TextEditorTest, WhatTheProgramSetIsNotTheUsersToUndo) {
    editor.setWholeFont(QStringLiteral("Times"), 48);
    editor.replaceSelection(u"Enter text for imaging here");
    editor.colorRange(Qt::white, {0, editor.text().length()});
    EXPECT_FALSE(editor.document()->isUndoAvailable());
    editor.replaceAll(u"\r");
    EXPECT_FALSE(editor.document()->isUndoAvailable());
}

TEST_F(TextEditorTest, AStyledTextIsSetAsOneStepOfUndo) {
    editor.setWholeFont(QStringLiteral("Times"), 48);
    QTest::keyClicks(&editor, QStringLiteral("keep me"));
    const StyledText before = editor.text();
    TextStyle red;
    red.color = {255, 0, 0, 255};
    TextStyle large;
    large.size = 96;
    StyledText other(u"Summer\n", red);
    other.append(u"Sale", large);
    other.setAlignment(0, TextAlignment::Center);
    editor.setText(other);
    EXPECT_EQ(editor.text().characters(), u"Summer\nSale");
    editor.undo();
    EXPECT_EQ(editor.text(), before);
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

void copyToClipboard(const QString& html, const QString& text) {
    auto* data = new QMimeData;
    if (!html.isEmpty()) data->setHtml(html);
    if (!text.isEmpty()) data->setText(text);
    QApplication::clipboard()->setMimeData(data);
}

TEST_F(TextEditorTest, PastedPlainTextHasTheStyleOfThePlace) {
    editor.setWholeFont(QStringLiteral("Times"), 48);
    editor.replaceSelection(u"x");
    copyToClipboard({}, QStringLiteral("plain"));
    editor.paste();
    EXPECT_EQ(editor.text().characters(), u"xplain");
    EXPECT_EQ(editor.text().runs().size(), 1U);
    EXPECT_EQ(asked.size(), 1U);
}

TEST_F(TextEditorTest, PastedRichTextKeepsItsStylesAndTheRestIsAsThePlaceHasIt) {
    editor.setWholeFont(QStringLiteral("Times"), 48);
    editor.replaceSelection(u"x");
    const TextStyle place = editor.text().styleAt(0);
    copyToClipboard(
        QStringLiteral("<html><body><p>as here <b style='color:#ff0000;font-family:Courier;"
                       "font-size:20px'>red</b></p><p align='center'><i>next</i></p></body>"),
        QStringLiteral("as here red next"));
    editor.paste();
    StyledText expected(u"xas here ", place);
    TextStyle red = place;
    red.family = "Courier";
    red.size = 20;
    red.weight = kTextWeightBold;
    red.color = {255, 0, 0, 255};
    TextStyle slanted = place;
    slanted.slant = TextSlant::Italic;
    expected.append(u"red", red);
    const StyledText pasted = editor.text();
    EXPECT_EQ(pasted.characters(), u"xas here red\nnext");
    EXPECT_EQ(pasted.subtext({0, 12}), expected);
    EXPECT_EQ(pasted.styleAt(13), slanted);
    EXPECT_EQ(pasted.alignments(),
              (std::vector<TextAlignment>{TextAlignment::Natural, TextAlignment::Center}));
    EXPECT_EQ(asked.size(), 1U);
    EXPECT_TRUE(everyParagraphHasALine(editor));
    editor.undo();
    EXPECT_EQ(editor.text().characters(), u"x");
}

TEST_F(TextEditorTest, SizesKeepTheirFractionsWhateverIsDrawn) {
    TextStyle style;
    style.size = 13.5;
    StyledText text(u"half", style);
    style.size = 0.25;
    text.append(u"tiny", style);
    editor.setText(text);
    EXPECT_EQ(editor.text(), text);
    copyToClipboard(QStringLiteral("<span style='font-size:20.75px'>pasted</span>"), {});
    editor.selectAll();
    editor.paste();
    EXPECT_EQ(editor.text().styleAt(0).size, 20.75);
    editor.setWholeFont(QStringLiteral("Times"), 21);  // the same size as drawn
    EXPECT_EQ(editor.text().styleAt(0).size, 21);
}

TEST_F(TextEditorTest, EveryAlignmentIsReadBackAsItWasSet) {
    for (const TextAlignment alignment :
         {TextAlignment::Natural, TextAlignment::Left, TextAlignment::Center, TextAlignment::Right,
          TextAlignment::Justified}) {
        StyledText text(u"one\ntwo", {});
        text.setAlignment(1, alignment);
        editor.setText(text);
        EXPECT_EQ(editor.text(), text) << static_cast<int>(alignment);
    }
}

TEST_F(TextEditorTest, PastedRichTextReplacesTheSelectionAndLeavesPicturesAndScriptsBehind) {
    editor.replaceSelection(u"old");
    editor.selectAll();
    copyToClipboard(QStringLiteral("<img src='file:///etc/passwd'><script>1</script>new"), {});
    editor.paste();
    EXPECT_EQ(editor.text().characters(), u"new");
}

TEST_F(TextEditorTest, ControlShiftVPastesTheCharactersAlone) {
    editor.setWholeFont(QStringLiteral("Times"), 48);
    editor.replaceSelection(u"x");
    copyToClipboard(QStringLiteral("<b style='color:red'>rich</b>"), QStringLiteral("rich"));
    QTest::keyClick(&editor, Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(editor.text().characters(), u"xrich");
    EXPECT_EQ(editor.text().runs().size(), 1U);
    EXPECT_EQ(asked.size(), 1U);
}

TEST_F(TextEditorTest, AnAnswerNoPreventsAPasteOfEitherKind) {
    answer = false;
    copyToClipboard(QStringLiteral("<b>rich</b>"), QStringLiteral("rich"));
    editor.paste();
    QTest::keyClick(&editor, Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(editor.text().isEmpty());
    EXPECT_EQ(asked.size(), 2U);
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
