#include "qt/styled_document.h"

#include <QFont>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <cmath>
#include <optional>

#include "qt/page/format_values.h"

namespace skarnel {
namespace {

/// A paragraph remembers here which characters end it, as a text.
constexpr int kEndProperty = QTextFormat::UserProperty + 1;
/// A run remembers here the size of which the document's own is the nearest whole number.
constexpr int kSizeProperty = QTextFormat::UserProperty + 2;

int wholeSize(double size) {
    return std::max(1, static_cast<int>(std::lround(size)));
}

TextSlant slant(const QFont& font) {
    if (font.style() == QFont::StyleOblique) return TextSlant::Oblique;
    return font.style() == QFont::StyleItalic ? TextSlant::Italic : TextSlant::Upright;
}

/// None for the natural one, which is no property of the document's.
std::optional<Qt::Alignment> alignmentTo(TextAlignment alignment) {
    switch (alignment) {
        case TextAlignment::Left:
            return Qt::AlignLeft | Qt::AlignAbsolute;
        case TextAlignment::Right:
            return Qt::AlignRight | Qt::AlignAbsolute;
        case TextAlignment::Center:
            return Qt::AlignHCenter;
        case TextAlignment::Justified:
            return Qt::AlignJustify;
        case TextAlignment::Natural:
            break;
    }
    return std::nullopt;
}

/// The length of a paragraph's end at `place`; 0 where there is none.
std::size_t endLength(std::u16string_view text, std::size_t place) {
    const char16_t unit = text[place];
    if (unit == u'\r') return place + 1 < text.size() && text[place + 1] == u'\n' ? 2 : 1;
    return unit == u'\n' || unit == u'\u2029' ? 1 : 0;
}

QString toQt(std::u16string_view text) {
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QTextCharFormat charFormat(const TextStyle& style) {
    QFont font(QString::fromStdString(style.family));
    font.setWeight(static_cast<QFont::Weight>(style.weight));
    font.setStyle(style.slant == TextSlant::Italic    ? QFont::StyleItalic
                  : style.slant == TextSlant::Oblique ? QFont::StyleOblique
                                                      : QFont::StyleNormal);
    font.setUnderline(style.underline == TextUnderline::Single);
    QTextCharFormat format;
    format.setFont(font, QTextCharFormat::FontPropertiesSpecifiedOnly);
    format.merge(sizeFormat(style.size));
    const TextColor& color = style.color;
    format.setForeground(QColor(color.red, color.green, color.blue, color.alpha));
    return format;
}

QTextCharFormat sizeFormat(double size) {
    QTextCharFormat format;
    format.setProperty(QTextFormat::FontPixelSize, wholeSize(size));
    format.setProperty(kSizeProperty, size);
    return format;
}

TextStyle textStyle(const QTextCharFormat& format) {
    TextStyle style;
    const QFont font = format.font();
    const QStringList families = font.families();
    if (!families.isEmpty()) style.family = families.front().toStdString();
    if (font.pixelSize() > 0) style.size = font.pixelSize();
    const double exact = format.doubleProperty(kSizeProperty);
    if (exact > 0 && wholeSize(exact) == font.pixelSize()) style.size = exact;
    style.weight = static_cast<int>(font.weight());
    style.slant = slant(font);
    style.underline = font.underline() ? TextUnderline::Single : TextUnderline::None;
    if (format.hasProperty(QTextFormat::ForegroundBrush))
        style.color = textColor(format.foreground().color());
    return style;
}

StyledText styledText(const QTextDocument& document) {
    StyledText text;
    std::vector<TextAlignment> alignments;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        alignments.push_back(textAlignment(block.blockFormat()));
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            text.append(fragment.text().toStdU16String(), textStyle(fragment.charFormat()));
        }
        if (!block.next().isValid()) break;
        const QString end = block.blockFormat().stringProperty(kEndProperty);
        const QTextCharFormat format = block.charFormat();
        text.append(end.isEmpty() ? std::u16string(u"\n") : end.toStdU16String(),
                    textStyle(format));
    }
    for (std::size_t i = 0; i < alignments.size(); ++i) text.setAlignment(i, alignments[i]);
    return text;
}

void setPlainCharacters(QTextDocument& document, std::u16string_view characters,
                        const QTextCharFormat& format) {
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.removeSelectedText();
    QTextBlockFormat plain = cursor.blockFormat();
    plain.clearProperty(kEndProperty);
    cursor.setBlockFormat(plain);
    cursor.setBlockCharFormat(format);
    std::size_t start = 0;
    for (std::size_t i = 0; i < characters.size();) {
        const std::size_t end = endLength(characters, i);
        if (end == 0) {
            ++i;
            continue;
        }
        cursor.insertText(toQt(characters.substr(start, i - start)), format);
        QTextBlockFormat ended = cursor.blockFormat();
        ended.setProperty(kEndProperty, toQt(characters.substr(i, end)));
        cursor.setBlockFormat(ended);
        cursor.insertBlock(plain, format);
        start = i += end;
    }
    cursor.insertText(toQt(characters.substr(start)), format);
    cursor.endEditBlock();
}

void setStyledText(QTextDocument& document, const StyledText& text) {
    const std::u16string& characters = text.characters();
    // One step of undo, with the characters, the styles and the alignments.
    QTextCursor whole(&document);
    whole.beginEditBlock();
    setPlainCharacters(document, characters,
                       charFormat(text.runs().empty() ? TextStyle() : text.styleAt(0)));
    QTextCursor cursor(&document);
    std::size_t place = 0;
    for (const TextRun& run : text.runs()) {
        // A pair that ends a paragraph is one place of the document.
        int places = 0;
        for (const std::size_t end = place + run.length; place < end; ++places) {
            place += std::max<std::size_t>(1, endLength(characters, place));
        }
        cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor, places);
        cursor.setCharFormat(charFormat(run.style));
        cursor.setPosition(cursor.position());
    }
    std::size_t paragraph = 0;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next(), ++paragraph) {
        if (paragraph >= text.alignments().size()) break;
        const auto alignment = alignmentTo(text.alignments()[paragraph]);
        QTextBlockFormat format = block.blockFormat();
        if (alignment)
            format.setAlignment(*alignment);
        else
            format.clearProperty(QTextFormat::BlockAlignment);  // left over from the text before
        QTextCursor(block).setBlockFormat(format);
    }
    whole.endEditBlock();
}

void insertStyledText(QTextCursor& cursor, const StyledText& text) {
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    QTextCursor first(cursor);
    first.setKeepPositionOnInsert(true);
    const bool wasEmpty = cursor.block().length() == 1;
    std::size_t place = 0;
    for (const TextRun& run : text.runs()) {
        cursor.insertText(toQt(std::u16string_view(text.characters()).substr(place, run.length)),
                          charFormat(run.style));
        place += run.length;
    }
    QTextBlock block = first.block();
    for (std::size_t i = 0; block.isValid() && i < text.alignments().size();
         block = block.next(), ++i) {
        const auto alignment = alignmentTo(text.alignments()[i]);
        if (!alignment || (i == 0 && !wasEmpty)) continue;
        QTextBlockFormat format = block.blockFormat();
        format.setAlignment(*alignment);
        QTextCursor(block).setBlockFormat(format);
    }
    cursor.endEditBlock();
}

}  // namespace skarnel
