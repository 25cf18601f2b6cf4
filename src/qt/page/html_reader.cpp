#include "qt/page/html_reader.h"

#include <QBrush>
#include <QFont>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>
#include <algorithm>
#include <array>
#include <vector>

#include "qt/page/format_values.h"
#include "util/string/html_depth.h"

namespace skarnel {
namespace {

/// Has no resources: what the text names is not there.
class ClosedDocument final : public QTextDocument {
  protected:
    QVariant loadResource(int, const QUrl&) override { return {}; }
};

// The sizes that HTML counts by, "medium" in the middle; as the toolkit draws them.
double scaleOfAdjustment(int adjustment) {
    static constexpr std::array kScales{0.7, 0.8, 1.0, 1.2, 1.5, 2.0, 2.4};
    return kScales[static_cast<std::size_t>(
        std::clamp(adjustment + 2, 0, static_cast<int>(kScales.size()) - 1))];
}

double sizeOf(const QTextCharFormat& format, double base) {
    if (format.hasProperty(QTextFormat::FontPixelSize))
        return format.property(QTextFormat::FontPixelSize).toDouble();
    if (format.hasProperty(QTextFormat::FontPointSize)) return format.fontPointSize();
    return base * scaleOfAdjustment(format.intProperty(QTextFormat::FontSizeAdjustment));
}

TextStyle styleOf(const QTextCharFormat& format, const TextStyle& base) {
    TextStyle style = base;
    const QStringList families = format.fontFamilies().toStringList();
    if (!families.isEmpty() && !families.front().isEmpty())
        style.family = families.front().toStdString();
    const double size = sizeOf(format, base.size);
    if (size > 0) style.size = size;
    if (format.hasProperty(QTextFormat::FontWeight))
        style.weight = std::clamp(format.fontWeight(), 1, 1000);
    if (format.hasProperty(QTextFormat::FontItalic))
        style.slant = format.fontItalic() ? TextSlant::Italic : TextSlant::Upright;
    if (format.fontUnderline() && !format.isAnchor()) style.underline = TextUnderline::Single;
    if (format.hasProperty(QTextFormat::ForegroundBrush) && !format.isAnchor())
        style.color = textColor(format.foreground().color());
    return style;
}

/// The toolkit reads fractions of points only, and here one point is one pixel.
QString withFractionsInPoints(QString html) {
    static const QRegularExpression fraction(
        QStringLiteral("(<[^<>]*font-size\\s*:\\s*\\d*\\.\\d+)px"),
        QRegularExpression::CaseInsensitiveOption);
    return html.replace(fraction, QStringLiteral("\\1pt"));
}

QRegularExpression emptyElements(const char* names) {
    return QRegularExpression(
        QLatin1String("<(?:%1)(?=[\\s/>])(?:[^'\"<>]|\"[^\"]*+\"|'[^']*+')*+>")
            .arg(QLatin1String(names)),
        QRegularExpression::CaseInsensitiveOption);
}

/// The toolkit does not know that these elements have no end tag, and would take all behind one as
/// within it; behind the first it would hide it. For pictures, which it would not find, it takes a
/// time that grows with the square of their number, and leaves a character.
QString withoutEmptyElements(QString html) {
    static const QRegularExpression pictures = emptyElements("img");
    static const QRegularExpression others =
        emptyElements("link|area|base|col|embed|input|param|source|track|wbr");
    return html.replace(pictures, QString(QChar::ObjectReplacementCharacter)).remove(others);
}

/// What the toolkit takes of a document that says which part of it was copied. It looks for that in
/// the bare text, wherever it stands.
QString copiedPartOf(const QString& html) {
    const qsizetype start = html.indexOf(QLatin1String("<!--StartFragment-->"));
    if (start < 0) return html;
    const qsizetype end = html.indexOf(QLatin1String("<!--EndFragment-->"));
    return start < end ? html.sliced(start, end - start) : html.sliced(start);
}

}  // namespace

StyledText styledTextOfHtml(std::u16string_view html, const TextStyle& base) {
    // Before the depth is told: what an empty element stands in may be a tag without it, and what
    // is within a value may be the part that was copied.
    const QString source = copiedPartOf(
        withoutEmptyElements(QString::fromUtf16(html.data(), static_cast<qsizetype>(html.size()))));
    if (isNestedTooDeeply(source.toStdString(), kMaxStyledHtmlDepth, EmptyElements::OfTheToolkit))
        return {};
    ClosedDocument document;
    document.setUndoRedoEnabled(false);
    document.setHtml(withFractionsInPoints(source));
    StyledText text;
    std::vector<TextAlignment> alignments;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block != document.begin()) text.append(u"\n", styleOf(block.charFormat(), base));
        alignments.push_back(textAlignment(block.blockFormat()));
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextFragment fragment = part.fragment();
            QString characters = fragment.text();
            characters.remove(QChar::ObjectReplacementCharacter);
            text.append(characters.toStdU16String(), styleOf(fragment.charFormat(), base));
        }
    }
    for (std::size_t i = 0; i < alignments.size(); ++i) text.setAlignment(i, alignments[i]);
    return text;
}

}  // namespace skarnel
