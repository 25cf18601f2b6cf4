#include "qt/page/text_layout.h"

#include <QAbstractTextDocumentLayout>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QScreen>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <algorithm>
#include <cmath>

namespace skarnel {
namespace {

constexpr double kTabDistance = 80;  // pixels, as the text view and the page have it
constexpr double kPointsAnInch = 72;
constexpr double kLeastSize = 1.0 / 64;  // pixels; the layout knows no smaller one

QString toQt(std::u16string_view text) {
    return QString(reinterpret_cast<const QChar*>(text.data()),
                   static_cast<qsizetype>(text.size()));
}

QTextCharFormat formatOf(const TextStyle& style, double dotsAnInch) {
    QFont font(QString::fromStdString(style.family));
    font.setPointSizeF(std::max(style.size, kLeastSize) * kPointsAnInch / dotsAnInch);
    font.setWeight(static_cast<QFont::Weight>(style.weight));
    font.setStyle(style.slant == TextSlant::Italic    ? QFont::StyleItalic
                  : style.slant == TextSlant::Oblique ? QFont::StyleOblique
                                                      : QFont::StyleNormal);
    font.setUnderline(style.underline == TextUnderline::Single);
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    QTextCharFormat format;
    format.setFont(font);
    const TextColor& color = style.color;
    format.setForeground(QColor(color.red, color.green, color.blue, color.alpha));
    return format;
}

// Dots an inch that fonts measure their points by.
double textResolution() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? 96 : std::round(screen->logicalDotsPerInchY());
}

QTextBlockFormat formatOf(TextAlignment alignment) {
    QTextBlockFormat format;
    switch (alignment) {
        case TextAlignment::Natural:
            break;
        case TextAlignment::Left:
            format.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
            break;
        case TextAlignment::Center:
            format.setAlignment(Qt::AlignHCenter);
            break;
        case TextAlignment::Right:
            format.setAlignment(Qt::AlignRight | Qt::AlignAbsolute);
            break;
        case TextAlignment::Justified:
            format.setAlignment(Qt::AlignJustify);
            break;
    }
    return format;
}

// The document knows one line separator.
std::u16string withOneLineSeparator(std::u16string text) {
    std::replace_if(text.begin(), text.end(), isLineSeparator, u'\u2028');
    return text;
}

// The characters of a paragraph, run by run; an empty one takes the style of what ends it.
void insertParagraph(QTextCursor& cursor, const StyledText& text, TextRange paragraph,
                     double dotsAnInch) {
    const StyledText part = text.subtext(paragraph);
    if (part.isEmpty()) {
        const std::size_t end = std::min(paragraph.location, text.length() - 1);
        cursor.setBlockCharFormat(formatOf(text.styleAt(end), dotsAnInch));
        return;
    }
    std::size_t start = 0;
    for (const TextRun& run : part.runs()) {
        const std::u16string characters =
            withOneLineSeparator(part.characters().substr(start, run.length));
        const QTextCharFormat format = formatOf(run.style, dotsAnInch);
        if (start == 0) cursor.setBlockCharFormat(format);
        cursor.insertText(toQt(characters), format);
        start += run.length;
    }
}

}  // namespace

void useLiberationFonts() {
    QFont::insertSubstitution("Times", "Liberation Serif");
    QFont::insertSubstitution("Helvetica", "Liberation Sans");
    QFont::insertSubstitution("Courier", "Liberation Mono");
}

void layOutText(QTextDocument& document, const StyledText& text) {
    document.setUndoRedoEnabled(false);
    document.setDocumentMargin(0);
    QTextOption option = document.defaultTextOption();
    option.setTabStopDistance(kTabDistance);
    option.setWrapMode(QTextOption::NoWrap);
    document.setDefaultTextOption(option);
    if (text.isEmpty()) return;
    const double dotsAnInch = textResolution();
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    const std::vector<TextRange> paragraphs = text.paragraphs();
    for (std::size_t i = 0; i < paragraphs.size(); ++i) {
        if (i != 0) cursor.insertBlock();
        cursor.setBlockFormat(formatOf(text.alignments()[i]));
        insertParagraph(cursor, text, paragraphs[i], dotsAnInch);
    }
    cursor.endEditBlock();
}

CGSize naturalTextSize(const StyledText& text) {
    QTextDocument document;
    layOutText(document, text);
    return {document.idealWidth(), document.size().height()};
}

std::vector<double> paragraphHeights(const StyledText& text) {
    QTextDocument document;
    layOutText(document, text);
    std::vector<double> heights;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        heights.push_back(document.documentLayout()->blockBoundingRect(block).height());
    return heights;
}

QImage drawText(const StyledText& text, TextColor ground, int margin) {
    QTextDocument document;
    layOutText(document, text);
    document.setTextWidth(document.idealWidth());
    const QSizeF size = document.size();
    QImage image(static_cast<int>(std::ceil(size.width())) + 2 * margin,
                 static_cast<int>(std::ceil(size.height())) + 2 * margin,
                 QImage::Format_RGBA8888_Premultiplied);
    image.fill(QColor(ground.red, ground.green, ground.blue));
    QPainter painter(&image);
    painter.translate(margin, margin);
    document.drawContents(&painter);
    return image;
}

}  // namespace skarnel
