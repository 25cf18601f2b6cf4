// Styled text to and from the editor's document.
#pragma once

#include <QTextCharFormat>

#include "platform/styled_text.h"

class QTextCursor;
class QTextDocument;

namespace skarnel {

/// One point of the text's size is one logical pixel, which is also one pixel of the page made from
/// it; so sizes are set in pixels.
QTextCharFormat charFormat(const TextStyle& style);

/// The size alone, in place of whatever size it is merged over. Drawn in whole pixels and kept with
/// its fraction, which the page is made with. At least 1.
QTextCharFormat sizeFormat(double size);

/// What the format leaves open is as in `TextStyle`'s defaults, but for the colour: black.
TextStyle textStyle(const QTextCharFormat& format);

/// All characters. A paragraph ends with the character it was given by `insertStyledText`, and
/// with U+000A where the user pressed Return.
StyledText styledText(const QTextDocument& document);

/// Replaces the whole content; `styledText` gives the same text back.
void setStyledText(QTextDocument& document, const StyledText& text);

/// Replaces the selection. The paragraphs that the text begins have its alignments; the one that it
/// is inserted into keeps its own unless it was empty.
void insertStyledText(QTextCursor& cursor, const StyledText& text);

/// Replaces the whole content by characters in one format; U+000D, U+000A, the pair of both and
/// U+2029 end paragraphs and are read back as they were.
void setPlainCharacters(QTextDocument& document, std::u16string_view characters,
                        const QTextCharFormat& format);

}  // namespace skarnel
