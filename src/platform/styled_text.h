// Styled text as a plain value: characters, runs of style, and the alignment of each paragraph.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace skarnel {

/// Device RGB, not premultiplied.
struct TextColor {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;
    friend bool operator==(const TextColor&, const TextColor&) = default;
};

enum class TextSlant : std::uint8_t { Upright, Italic, Oblique };
enum class TextUnderline : std::uint8_t { None, Single };

/// Natural is the leading side: left for text that runs to the right, right for the other.
enum class TextAlignment : std::uint8_t { Natural, Left, Center, Right, Justified };

inline constexpr int kTextWeightNormal = 400;
inline constexpr int kTextWeightBold = 700;

/// What a run of characters looks like.
struct TextStyle {
    std::string family = "Times";  // UTF-8
    double size = 48;              // points; one point is one unit of drawing, one pixel of a page
    int weight = kTextWeightNormal;  // 1..1000
    TextSlant slant = TextSlant::Upright;
    TextUnderline underline = TextUnderline::None;
    TextColor color;
    friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

struct TextRun {
    std::size_t length = 0;  // string units, at least 1
    TextStyle style;
    friend bool operator==(const TextRun&, const TextRun&) = default;
};

/// Half-open: string units [location, location + length).
struct TextRange {
    std::size_t location = 0;
    std::size_t length = 0;
    std::size_t end() const { return location + length; }
    friend bool operator==(const TextRange&, const TextRange&) = default;
};

/// A value in a canonical form, so that two texts that look alike compare equal: neighbouring runs
/// differ, the runs' lengths add up to the number of characters, and there is one alignment for
/// each paragraph.
///
/// Lengths and places count UTF-16 string units; unpaired surrogates are kept as they are.
/// A paragraph ends with U+000A, U+000D, the pair U+000D U+000A, or U+2029. The text after the last
/// end, empty or not, is a paragraph too, so the empty text has one.
class StyledText {
  public:
    StyledText();
    explicit StyledText(std::u16string_view characters, const TextStyle& style = {},
                        TextAlignment alignment = TextAlignment::Natural);

    /// From characters and the runs that cover them, in any split; every paragraph natural. What
    /// the runs leave uncovered has the last one's style, what they have too much is cut.
    static StyledText fromRuns(std::u16string characters, const std::vector<TextRun>& runs);

    const std::u16string& characters() const { return characters_; }
    std::size_t length() const { return characters_.size(); }
    bool isEmpty() const { return characters_.empty(); }
    const std::vector<TextRun>& runs() const { return runs_; }
    /// One for each paragraph, in order.
    const std::vector<TextAlignment>& alignments() const { return alignments_; }

    /// The paragraphs without the characters that end them, in order; as many as alignments.
    std::vector<TextRange> paragraphs() const;

    /// The style of the character at a place below `length()`.
    const TextStyle& styleAt(std::size_t location) const;

    /// The last paragraph goes on with the appended characters; the paragraphs that they begin take
    /// its alignment over.
    void append(std::u16string_view characters, const TextStyle& style);

    /// The part of a range that lies beyond the end is ignored, here and below.
    void setStyle(TextRange range, const TextStyle& style);
    void setColor(TextRange range, TextColor color);
    /// A paragraph that does not exist is ignored.
    void setAlignment(std::size_t paragraph, TextAlignment alignment);
    void setAlignmentOfAll(TextAlignment alignment);

    /// The characters, styles and alignments of a range.
    StyledText subtext(TextRange range) const;

    friend bool operator==(const StyledText&, const StyledText&) = default;

  private:
    template <typename Change>
    void changeStyles(TextRange range, Change change);

    std::u16string characters_;
    std::vector<TextRun> runs_;
    std::vector<TextAlignment> alignments_;
};

/// True for the characters that end a line without ending the paragraph: U+000B, U+000C, U+0085 and
/// U+2028.
bool isLineSeparator(char16_t unit);

std::ostream& operator<<(std::ostream& out, const TextColor& color);
std::ostream& operator<<(std::ostream& out, const TextStyle& style);
std::ostream& operator<<(std::ostream& out, const TextRange& range);
std::ostream& operator<<(std::ostream& out, const StyledText& text);

}  // namespace skarnel
