#include "platform/styled_text.h"

#include <algorithm>
#include <cassert>
#include <ostream>

namespace skarnel {
namespace {

// The number of string units that end a paragraph at a place: 0, 1, or 2 for the pair CR LF.
std::size_t paragraphEndLength(std::u16string_view text, std::size_t at) {
    switch (text[at]) {
        case u'\r':
            return at + 1 < text.size() && text[at + 1] == u'\n' ? 2 : 1;
        case u'\n':
        case u'\u2029':
            return 1;
        default:
            return 0;
    }
}

std::vector<TextRange> paragraphsOf(std::u16string_view text) {
    std::vector<TextRange> result;
    std::size_t start = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = paragraphEndLength(text, at);
        if (end == 0) {
            ++at;
            continue;
        }
        result.push_back({start, at - start});
        at += end;
        start = at;
    }
    result.push_back({start, text.size() - start});
    return result;
}

void appendRun(std::vector<TextRun>& runs, std::size_t length, const TextStyle& style) {
    if (length == 0) return;
    if (!runs.empty() && runs.back().style == style)
        runs.back().length += length;
    else
        runs.push_back({length, style});
}

TextRange clipped(TextRange range, std::size_t length) {
    const std::size_t location = std::min(range.location, length);
    return {location, std::min(range.length, length - location)};
}

}  // namespace

StyledText::StyledText() : alignments_{TextAlignment::Natural} {}

StyledText::StyledText(std::u16string_view characters, const TextStyle& style,
                       TextAlignment alignment)
    : alignments_{alignment} {
    append(characters, style);
}

StyledText StyledText::fromRuns(std::u16string characters, const std::vector<TextRun>& runs) {
    StyledText text;
    text.characters_ = std::move(characters);
    std::size_t left = text.length();
    for (const TextRun& run : runs) {
        const std::size_t length = std::min(run.length, left);
        appendRun(text.runs_, length, run.style);
        left -= length;
    }
    appendRun(text.runs_, left, runs.empty() ? TextStyle{} : runs.back().style);
    text.alignments_.assign(text.paragraphs().size(), TextAlignment::Natural);
    return text;
}

std::vector<TextRange> StyledText::paragraphs() const {
    return paragraphsOf(characters_);
}

const TextStyle& StyledText::styleAt(std::size_t location) const {
    assert(location < length());
    std::size_t end = 0;
    for (const TextRun& run : runs_) {
        end += run.length;
        if (location < end) return run.style;
    }
    return runs_.back().style;
}

void StyledText::append(std::u16string_view characters, const TextStyle& style) {
    // Counted from the last character before, since a line feed may complete a pair with it.
    const std::size_t tail = characters_.empty() ? 0 : characters_.size() - 1;
    const std::size_t before = paragraphsOf(std::u16string_view(characters_).substr(tail)).size();
    characters_.append(characters);
    appendRun(runs_, characters.size(), style);
    const std::size_t after = paragraphsOf(std::u16string_view(characters_).substr(tail)).size();
    alignments_.resize(alignments_.size() + after - before, alignments_.back());
}

template <typename Change>
void StyledText::changeStyles(TextRange range, Change change) {
    const TextRange part = clipped(range, length());
    std::vector<TextRun> changed;
    std::size_t start = 0;
    for (const TextRun& run : runs_) {
        const std::size_t end = start + run.length;
        const std::size_t from = std::clamp(part.location, start, end);
        const std::size_t to = std::clamp(part.end(), from, end);
        appendRun(changed, from - start, run.style);
        if (to > from) {
            TextStyle style = run.style;
            change(style);
            appendRun(changed, to - from, style);
        }
        appendRun(changed, end - to, run.style);
        start = end;
    }
    runs_ = std::move(changed);
}

void StyledText::setStyle(TextRange range, const TextStyle& style) {
    changeStyles(range, [&](TextStyle& target) { target = style; });
}

void StyledText::setColor(TextRange range, TextColor color) {
    changeStyles(range, [&](TextStyle& target) { target.color = color; });
}

void StyledText::setAlignment(std::size_t paragraph, TextAlignment alignment) {
    if (paragraph < alignments_.size()) alignments_[paragraph] = alignment;
}

void StyledText::setAlignmentOfAll(TextAlignment alignment) {
    std::fill(alignments_.begin(), alignments_.end(), alignment);
}

StyledText StyledText::subtext(TextRange range) const {
    const TextRange part = clipped(range, length());
    StyledText result;
    result.characters_ = characters_.substr(part.location, part.length);
    std::size_t start = 0;
    for (const TextRun& run : runs_) {
        const std::size_t end = start + run.length;
        const std::size_t from = std::clamp(part.location, start, end);
        appendRun(result.runs_, std::clamp(part.end(), from, end) - from, run.style);
        start = end;
    }
    // The paragraph that holds the range's start is the result's first.
    std::size_t first = 0;
    const std::vector<TextRange> all = paragraphs();
    while (first + 1 < all.size() && all[first + 1].location <= part.location) ++first;
    result.alignments_.clear();
    for (std::size_t i = 0; i < paragraphsOf(result.characters_).size(); ++i)
        result.alignments_.push_back(alignments_[std::min(first + i, alignments_.size() - 1)]);
    return result;
}

bool isLineSeparator(char16_t unit) {
    return unit == u'\u000B' || unit == u'\u000C' || unit == u'\u0085' || unit == u'\u2028';
}

std::ostream& operator<<(std::ostream& out, const TextColor& color) {
    return out << "rgba(" << int{color.red} << ',' << int{color.green} << ',' << int{color.blue}
               << ',' << int{color.alpha} << ')';
}

std::ostream& operator<<(std::ostream& out, const TextStyle& style) {
    out << '"' << style.family << "\" " << style.size << " weight " << style.weight;
    if (style.slant == TextSlant::Italic) out << " italic";
    if (style.slant == TextSlant::Oblique) out << " oblique";
    if (style.underline == TextUnderline::Single) out << " underlined";
    return out << ' ' << style.color;
}

std::ostream& operator<<(std::ostream& out, const TextRange& range) {
    return out << '[' << range.location << ", " << range.end() << ')';
}

std::ostream& operator<<(std::ostream& out, const StyledText& text) {
    out << "StyledText(" << text.length() << ": ";
    static constexpr char kDigits[] = "0123456789ABCDEF";
    for (const char16_t unit : text.characters()) {
        if (unit >= 0x20 && unit < 0x7F) {
            out << static_cast<char>(unit);
        } else {
            out << "\\u";
            for (int shift = 12; shift >= 0; shift -= 4) out << kDigits[(unit >> shift) & 15];
        }
    }
    for (const TextRun& run : text.runs()) out << " | " << run.length << ' ' << run.style;
    out << " | alignments";
    for (const TextAlignment alignment : text.alignments())
        out << ' ' << static_cast<int>(alignment);
    return out << ')';
}

}  // namespace skarnel
