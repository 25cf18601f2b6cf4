#include "textimaging/html_writer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <unordered_map>
#include <vector>

#include "textimaging/string_encodings.h"

namespace skarnel {
namespace {

constexpr double kLargestSize = 1'000'000;    // pixels
constexpr double kSmallestSize = 1.0 / 1024;  // below it nothing would be seen
constexpr double kLeastMargin = 8;            // pixels

void appendAscii(std::u16string& out, std::string_view ascii) {
    out.append(ascii.begin(), ascii.end());
}

// Plain decimals without an exponent, which every reader of CSS understands.
std::string decimal(double value) {
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    return {buffer, result.ptr};
}

double usableSize(double size) {
    return size >= kSmallestSize ? std::min(size, kLargestSize) : 0;  // NaN counts as 0
}

std::string hexByte(std::uint8_t value) {
    static constexpr char kDigits[] = "0123456789abcdef";
    return {kDigits[value >> 4], kDigits[value & 15]};
}

std::string cssColor(TextColor color) {
    if (color.alpha == 255)
        return "#" + hexByte(color.red) + hexByte(color.green) + hexByte(color.blue);
    // Three decimals tell all 256 steps apart.
    return "rgba(" + std::to_string(color.red) + "," + std::to_string(color.green) + "," +
           std::to_string(color.blue) + "," + decimal(std::round(color.alpha / 0.255) / 1000) + ")";
}

// A CSS string in which everything but letters, digits, blanks and hyphens is written by number, so
// that no name can end the string, the rule or the style element.
void appendCssString(std::u16string& out, std::string_view utf8) {
    out += u'"';
    for (const char16_t unit : withPairedSurrogates(utf16FromUtf8(utf8))) {
        const bool plain = (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
                           (unit >= u'0' && unit <= u'9') || unit == u' ' || unit == u'-' ||
                           unit >= 0xA0;
        if (plain) {
            out += unit;
        } else {
            appendAscii(out, "\\" + hexByte(static_cast<std::uint8_t>(unit)) + " ");
        }
    }
    out += u'"';
}

std::u16string ruleOf(const TextStyle& style) {
    std::u16string out;
    appendAscii(out, "{font-family:");
    appendCssString(out, style.family);
    appendAscii(out, ";font-size:" + decimal(usableSize(style.size)) + "px");
    appendAscii(out, ";font-weight:" + std::to_string(std::clamp(style.weight, 1, 1000)));
    if (style.slant == TextSlant::Italic) appendAscii(out, ";font-style:italic");
    if (style.slant == TextSlant::Oblique) appendAscii(out, ";font-style:oblique");
    if (style.underline == TextUnderline::Single) appendAscii(out, ";text-decoration:underline");
    appendAscii(out, ";color:" + cssColor(style.color) + "}\n");
    return out;
}

const char* alignmentClass(TextAlignment alignment) {
    switch (alignment) {
        case TextAlignment::Left:
            return " class=\"l\"";
        case TextAlignment::Center:
            return " class=\"c\"";
        case TextAlignment::Right:
            return " class=\"t\"";
        case TextAlignment::Justified:
            return " class=\"j\"";
        case TextAlignment::Natural:
            break;
    }
    return "";
}

std::string attributesOf(TextAlignment alignment, const double* height) {
    std::string attributes = alignmentClass(alignment);
    if (height != nullptr) attributes += " style=\"height:" + decimal(usableSize(*height)) + "px\"";
    return attributes;
}

// Draws nothing, and some of these would end the parser's patience with the document.
bool isSilent(char16_t unit) {
    return (unit < 0x20 && unit != u'\t' && !isLineSeparator(unit)) ||
           (unit >= 0x7F && unit < 0xA0 && !isLineSeparator(unit));
}

void appendEscaped(std::u16string& out, std::u16string_view characters) {
    for (const char16_t unit : characters) {
        if (unit == u'&') {
            appendAscii(out, "&amp;");
        } else if (unit == u'<') {
            appendAscii(out, "&lt;");
        } else if (unit == u'>') {
            appendAscii(out, "&gt;");
        } else if (unit == u'"') {
            appendAscii(out, "&quot;");
        } else if (unit == u'\'') {
            appendAscii(out, "&#39;");
        } else if (isLineSeparator(unit)) {
            appendAscii(out, "<br>");
        } else if (!isSilent(unit)) {
            out += unit;
        }
    }
}

// Where a run's characters lie and which rule draws them.
struct PlacedRun {
    TextRange range;
    std::size_t rule;
};

// Each rule once, however many runs it draws.
struct StyleSheet {
    std::u16string rules;
    std::vector<PlacedRun> runs;
};

StyleSheet styleSheetOf(const StyledText& text) {
    StyleSheet sheet;
    std::unordered_map<std::u16string, std::size_t> known;
    std::size_t start = 0;
    for (const TextRun& run : text.runs()) {
        const auto [entry, isNew] = known.try_emplace(ruleOf(run.style), known.size());
        sheet.runs.push_back({{start, run.length}, entry->second});
        if (isNew) {
            appendAscii(sheet.rules, ".r" + std::to_string(entry->second));
            sheet.rules += entry->first;
        }
        start += run.length;
    }
    return sheet;
}

void appendSpan(std::u16string& out, std::size_t rule, std::u16string_view characters) {
    appendAscii(out, "<span class=\"r" + std::to_string(rule) + "\">");
    appendEscaped(out, characters);
    appendAscii(out, "</span>");
}

// `firstRun` moves on to the run in which the paragraph ends, so that all paragraphs together take
// one pass over the runs.
void appendParagraph(std::u16string& out, std::u16string_view characters, TextRange paragraph,
                     const std::string& attributes, const StyleSheet& sheet,
                     std::size_t& firstRun) {
    appendAscii(out, "<p dir=\"auto\"" + attributes + ">");
    while (firstRun + 1 < sheet.runs.size() &&
           sheet.runs[firstRun].range.end() <= paragraph.location)
        ++firstRun;
    for (;; ++firstRun) {
        const TextRange run = sheet.runs[firstRun].range;
        const std::size_t from = std::max(run.location, paragraph.location);
        const std::size_t to = std::min(run.end(), paragraph.end());
        if (from < to) {
            appendSpan(out, sheet.runs[firstRun].rule, characters.substr(from, to - from));
        }
        if (run.end() >= paragraph.end() || firstRun + 1 == sheet.runs.size()) break;
    }
    // A line without characters, the last one of the paragraph included, is as high as its style
    // makes it; a break that ends the block would not show by itself.
    if (paragraph.length == 0 || isLineSeparator(characters[paragraph.end() - 1]))
        appendSpan(out, sheet.runs[firstRun].rule, u"\u2028");
    appendAscii(out, "</p>\n");
}

double marginOf(const StyledText& text) {
    double largest = 0;
    for (const TextRun& run : text.runs()) largest = std::max(largest, usableSize(run.style.size));
    return std::max(kLeastMargin, std::ceil(largest / 2));
}

// White space between the paragraphs must not count, hence `pre` on each of them alone; and a font
// size of 0 outside the spans, so that the page's own font does not widen a line of small letters.
void appendHead(std::u16string& out, const StyledText& text, std::string_view charset,
                const StyleSheet& sheet) {
    appendAscii(out, "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"");
    appendAscii(out, charset);
    appendAscii(out,
                "\">\n<meta http-equiv=\"Content-Security-Policy\" "
                "content=\"default-src 'none'; style-src 'unsafe-inline'\">\n"
                "<style>\nbody{margin:");
    appendAscii(out, decimal(marginOf(text)));
    appendAscii(out,
                "px;width:max-content;font-size:0}\n"
                "p{margin:0;white-space:pre;tab-size:80px;text-align:start;"
                "text-decoration-skip-ink:none}\n"
                ".l{text-align:left}\n.c{text-align:center}\n.t{text-align:right}\n"
                ".j{text-align:justify}\n");
    out += sheet.rules;
    appendAscii(out, "</style>\n</head>\n");
}

}  // namespace

std::u16string htmlDocument(const StyledText& text, std::string_view charset,
                            std::span<const double> paragraphHeights) {
    const StyledText paired = [&] {
        StyledText copy =
            StyledText::fromRuns(withPairedSurrogates(text.characters()), text.runs());
        for (std::size_t i = 0; i < text.alignments().size(); ++i)
            copy.setAlignment(i, text.alignments()[i]);
        return copy;
    }();
    const StyleSheet sheet = styleSheetOf(paired);
    std::u16string out;
    out.reserve(1024 + 2 * paired.length());
    appendHead(out, paired, charset, sheet);
    appendAscii(out, "<body>\n");
    if (!paired.isEmpty()) {
        std::size_t firstRun = 0;
        const std::vector<TextRange> paragraphs = paired.paragraphs();
        const bool hasHeights = paragraphHeights.size() == paragraphs.size();
        for (std::size_t i = 0; i < paragraphs.size(); ++i)
            appendParagraph(
                out, paired.characters(), paragraphs[i],
                attributesOf(paired.alignments()[i], hasHeights ? &paragraphHeights[i] : nullptr),
                sheet, firstRun);
    }
    appendAscii(out, "</body>\n</html>\n");
    return out;
}

std::optional<Bytes> htmlData(const StyledText& text, std::int32_t encoding,
                              std::span<const double> paragraphHeights) {
    const std::optional<std::string_view> charset = charsetOfEncoding(encoding);
    if (!charset) return std::nullopt;
    return encodeString(htmlDocument(text, *charset, paragraphHeights), encoding);
}

std::u16string withBodyBackground(std::u16string_view document, std::string_view colorText) {
    static constexpr std::u16string_view kTag = u"<body>";
    const auto lower = [](char16_t unit) {
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    };
    const auto same = [&](char16_t a, char16_t b) { return lower(a) == lower(b); };
    std::u16string result;
    result.reserve(document.size() + 32);
    for (auto at = document.begin();;) {
        const auto found = std::search(at, document.end(), kTag.begin(), kTag.end(), same);
        result.append(at, found);
        if (found == document.end()) return result;
        appendAscii(result, "<body bgcolor=\"");
        appendAscii(result, colorText);
        appendAscii(result, "\">");
        at = found + static_cast<std::ptrdiff_t>(kTag.size());
    }
}

}  // namespace skarnel
