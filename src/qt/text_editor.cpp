#include "qt/text_editor.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextBlock>

#include "qt/contrast.h"
#include "qt/page/html_reader.h"
#include "qt/styled_document.h"

namespace skarnel {
namespace {

bool deletes(const QKeyEvent& event) {
    for (const auto key :
         {QKeySequence::Cut, QKeySequence::DeleteStartOfWord, QKeySequence::DeleteEndOfWord,
          QKeySequence::DeleteEndOfLine, QKeySequence::DeleteCompleteLine, QKeySequence::Undo,
          QKeySequence::Redo})
        if (event.matches(key)) return true;
    return event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete;
}

bool types(const QKeyEvent& event) {
    if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter) return true;
    if (event.modifiers() & (Qt::ControlModifier | Qt::MetaModifier)) return false;
    return !event.text().isEmpty() && event.text().front().isPrint();
}

std::size_t unsignedPlace(int place) {
    return static_cast<std::size_t>(std::max(0, place));
}

}  // namespace

TextEditor::TextEditor(QWidget* parent) : QTextEdit(parent) {
    setAccessibleName(tr("Text to image"));
    setAccessibleDescription(tr("Type and style text here; Image Text makes it the picture"));
    setTabChangesFocus(true);
    setFrameShape(QFrame::NoFrame);
    setAcceptDrops(true);
    document()->setDocumentMargin(10);
    connect(document(), &QTextDocument::contentsChange, this, &TextEditor::askedLate);
}

template <typename Change>
void TextEditor::byProgram(Change change) {
    const bool outer = std::exchange(byProgram_, true);
    change();
    byProgram_ = outer;
}

void TextEditor::setGround(const QColor& color) {
    QPalette ground = palette();
    const QColor opaque(color.red(), color.green(), color.blue());
    // The caret and plain text have to be seen on any ground.
    ground.setColor(QPalette::Base, opaque);
    ground.setColor(QPalette::Text, readableOn(opaque));
    setPalette(ground);
}

StyledText TextEditor::text() const {
    return styledText(*document());
}

void TextEditor::setWholeFont(const QString& family, double size) {
    byProgram([&] {
        TextStyle style = textStyle(currentCharFormat());
        style.family = family.toStdString();
        const QTextCharFormat full = charFormat(style);
        QTextCharFormat font;
        font.setFont(full.font(), QTextCharFormat::FontPropertiesSpecifiedOnly);
        font.merge(sizeFormat(size));
        QTextCursor all(document());
        all.select(QTextCursor::Document);
        // Characters last: formatting a paragraph's end leaves its lines without a layout.
        all.mergeBlockCharFormat(font);
        all.mergeCharFormat(font);
        mergeCurrentCharFormat(font);
    });
    document()->clearUndoRedoStacks();
}

void TextEditor::replaceSelection(std::u16string_view text) {
    byProgram([&] {
        const auto format = currentCharFormat();
        textCursor().insertText(
            QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size())), format);
    });
    document()->clearUndoRedoStacks();
}

void TextEditor::colorRange(const QColor& color, NSRange range) {
    byProgram([&] {
        QTextCharFormat colored;
        colored.setForeground(color);
        QTextCursor part(document());
        const int last = std::max(0, document()->characterCount() - 1);
        part.setPosition(std::min(last, static_cast<int>(range.location)));
        part.setPosition(std::min(last, static_cast<int>(range.end())), QTextCursor::KeepAnchor);
        // Typing goes on in the style of what stands before the caret. Characters last: formatting
        // a paragraph's end leaves its lines without a layout.
        const int caret = textCursor().position();
        const bool typedNext = caret >= part.selectionStart() && caret <= part.selectionEnd();
        if (typedNext) part.mergeBlockCharFormat(colored);
        if (typedNext && !textCursor().hasSelection()) mergeCurrentCharFormat(colored);
        part.mergeCharFormat(colored);
    });
    document()->clearUndoRedoStacks();
}

void TextEditor::setText(const StyledText& text) {
    byProgram([&] { setStyledText(*document(), text); });
}

void TextEditor::replaceAll(std::u16string_view text) {
    byProgram([&] {
        QTextCursor first(document());
        if (document()->characterCount() > 1) first.movePosition(QTextCursor::NextCharacter);
        const QTextCharFormat format = first.charFormat();
        setPlainCharacters(*document(), text, format);
        setCurrentCharFormat(format);
    });
    document()->clearUndoRedoStacks();
}

void TextEditor::mergeStyle(const QTextCharFormat& format) {
    if (!askBeforeEdit({})) return;
    mergeCurrentCharFormat(format);
    asked_ = false;
}

void TextEditor::alignParagraphs(Qt::Alignment alignment) {
    if (!askBeforeEdit({})) return;
    setAlignment(alignment);
    asked_ = false;
}

bool TextEditor::askBeforeEdit(const QString& replacement) {
    const QTextCursor at = textCursor();
    const NSRange range{unsignedPlace(at.selectionStart()),
                        unsignedPlace(at.selectionEnd() - at.selectionStart())};
    asked_ = true;
    if (!mayEdit_ || mayEdit_({range}, {replacement.toStdU16String()})) return true;
    asked_ = false;
    return false;
}

/// The roads that none of the handlers below sees, such as the context menu, are asked for here,
/// as soon as the edit is noticed.
void TextEditor::askedLate(int position, int removed, int added) {
    if (byProgram_ || asked_ || !mayEdit_ || removed + added == 0) return;
    mayEdit_({{unsignedPlace(position), unsignedPlace(removed)}}, {std::u16string()});
}

void TextEditor::keyPressEvent(QKeyEvent* event) {
    // What the clipboard's styles would make unreadable on this ground is pasted in its own.
    if (event->keyCombination() == (Qt::CTRL | Qt::SHIFT | Qt::Key_V)) {
        const QMimeData* copied = QGuiApplication::clipboard()->mimeData();
        return copied == nullptr ? void() : insertPlain(copied->text());
    }
    const bool edits = types(*event) || deletes(*event);
    if (edits && !askBeforeEdit(types(*event) ? event->text() : QString())) return;
    QTextEdit::keyPressEvent(event);
    asked_ = false;
}

void TextEditor::inputMethodEvent(QInputMethodEvent* event) {
    const bool edits = !event->commitString().isEmpty() || event->replacementLength() > 0;
    if (edits && !askBeforeEdit(event->commitString())) return;
    QTextEdit::inputMethodEvent(event);
    asked_ = false;
}

bool TextEditor::canInsertFromMimeData(const QMimeData* source) const {
    // A file that is dropped here is meant for the window, which opens it.
    return (source->hasText() || source->hasHtml()) && !source->hasUrls();
}

// Characters and their styles: a pasted page's pictures, links and scripts stay behind, and nothing
// that it names is fetched.
void TextEditor::insertFromMimeData(const QMimeData* source) {
    const TextStyle base = textStyle(currentCharFormat());
    StyledText rich;
    if (source->hasHtml()) rich = styledTextOfHtml(source->html().toStdU16String(), base);
    if (rich.isEmpty()) return insertPlain(source->text());
    if (!askBeforeEdit(QString::fromStdU16String(rich.characters()))) return;
    QTextCursor cursor = textCursor();
    insertStyledText(cursor, rich);
    setTextCursor(cursor);
    ensureCursorVisible();
    asked_ = false;
}

void TextEditor::insertPlain(const QString& text) {
    if (text.isEmpty() || !askBeforeEdit(text)) return;
    textCursor().insertText(text, currentCharFormat());
    ensureCursorVisible();
    asked_ = false;
}

void TextEditor::resizeEvent(QResizeEvent* event) {
    QTextEdit::resizeEvent(event);
    if (event->oldSize() != event->size()) emit frameChanged();
}

}  // namespace skarnel
