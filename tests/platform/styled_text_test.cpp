// The value's canonical form, its paragraphs, and what each change leaves alone.
#include "platform/styled_text.h"

#include <gmock/gmock.h>

#include <sstream>

namespace skarnel {
namespace {

using ::testing::ElementsAre;

const TextStyle kPlain{};

TextStyle bold() {
    TextStyle style;
    style.weight = kTextWeightBold;
    return style;
}

TEST(StyledText, AnEmptyTextHasOneParagraphAndNoRun) {
    const StyledText text;
    EXPECT_TRUE(text.isEmpty());
    EXPECT_TRUE(text.runs().empty());
    EXPECT_THAT(text.paragraphs(), ElementsAre(TextRange{0, 0}));
    EXPECT_THAT(text.alignments(), ElementsAre(TextAlignment::Natural));
    EXPECT_EQ(text, StyledText(u""));
}

TEST(StyledText, OneCarriageReturnIsNotEmptyAndEndsAParagraph) {
    const StyledText text(u"\r");
    EXPECT_EQ(text.length(), 1U);
    EXPECT_FALSE(text.isEmpty());
    EXPECT_THAT(text.paragraphs(), ElementsAre(TextRange{0, 0}, TextRange{1, 0}));
}

TEST(StyledText, EveryParagraphEndIsKnownAndTheCarriageReturnLineFeedPairIsOne) {
    const StyledText text(u"a\nb\rc\r\nd\u2029e\u2028f");
    EXPECT_THAT(text.paragraphs(), ElementsAre(TextRange{0, 1}, TextRange{2, 1}, TextRange{4, 1},
                                               TextRange{7, 1}, TextRange{9, 3}));
}

TEST(StyledText, APairThatIsCompletedLaterEndsOneParagraph) {
    StyledText text(u"a\r");
    EXPECT_EQ(text.alignments().size(), 2U);
    text.append(u"\n", kPlain);
    EXPECT_EQ(text.alignments().size(), 2U);
    text.append(u"\n", kPlain);
    EXPECT_EQ(text.alignments().size(), 3U);
}

TEST(StyledText, NeighbouringRunsOfOneStyleBecomeOne) {
    StyledText text(u"ab");
    text.append(u"cd", kPlain);
    EXPECT_THAT(text.runs(), ElementsAre(TextRun{4, kPlain}));
    text.append(u"", bold());
    EXPECT_EQ(text.runs().size(), 1U);
    text.append(u"e", bold());
    EXPECT_THAT(text.runs(), ElementsAre(TextRun{4, kPlain}, TextRun{1, bold()}));
}

TEST(StyledText, AStyleChangeSplitsAndRejoinsRuns) {
    StyledText text(u"abcdef");
    text.setStyle({2, 2}, bold());
    EXPECT_THAT(text.runs(),
                ElementsAre(TextRun{2, kPlain}, TextRun{2, bold()}, TextRun{2, kPlain}));
    EXPECT_EQ(text.styleAt(1), kPlain);
    EXPECT_EQ(text.styleAt(2), bold());
    EXPECT_EQ(text.styleAt(4), kPlain);
    text.setStyle({2, 2}, kPlain);
    EXPECT_THAT(text.runs(), ElementsAre(TextRun{6, kPlain}));
}

TEST(StyledText, AColourChangeKeepsTheRestOfEachStyle) {
    StyledText text(u"ab");
    text.append(u"cd", bold());
    const TextColor white{255, 255, 255, 255};
    text.setColor({1, 2}, white);
    EXPECT_EQ(text.runs().size(), 4U);
    EXPECT_EQ(text.styleAt(1).color, white);
    EXPECT_EQ(text.styleAt(1).weight, kTextWeightNormal);
    EXPECT_EQ(text.styleAt(2).color, white);
    EXPECT_EQ(text.styleAt(2).weight, kTextWeightBold);
    EXPECT_EQ(text.styleAt(3).color, TextColor{});
}

TEST(StyledText, RangesBeyondTheEndAreCutAndNothingElseChanges) {
    StyledText text(u"ab");
    text.setStyle({1, 1000}, bold());
    EXPECT_THAT(text.runs(), ElementsAre(TextRun{1, kPlain}, TextRun{1, bold()}));
    const StyledText before = text;
    text.setStyle({2, 5}, kPlain);
    text.setStyle({99, static_cast<std::size_t>(-1)}, kPlain);
    text.setAlignment(7, TextAlignment::Right);
    EXPECT_EQ(text, before);
}

TEST(StyledText, NewParagraphsTakeTheLastOnesAlignmentOver) {
    StyledText text(u"a\nb", kPlain, TextAlignment::Center);
    EXPECT_THAT(text.alignments(), ElementsAre(TextAlignment::Center, TextAlignment::Center));
    text.setAlignment(1, TextAlignment::Right);
    text.append(u"\nc", kPlain);
    EXPECT_THAT(text.alignments(),
                ElementsAre(TextAlignment::Center, TextAlignment::Right, TextAlignment::Right));
    text.setAlignmentOfAll(TextAlignment::Justified);
    EXPECT_THAT(text.alignments(), ElementsAre(TextAlignment::Justified, TextAlignment::Justified,
                                               TextAlignment::Justified));
}

TEST(StyledText, APartCarriesItsOwnStylesAndAlignments) {
    StyledText text(u"ab\ncd\nef");
    text.setStyle({3, 1}, bold());
    text.setAlignment(1, TextAlignment::Center);
    text.setAlignment(2, TextAlignment::Right);
    const StyledText part = text.subtext({3, 4});
    EXPECT_EQ(part.characters(), u"cd\ne");
    EXPECT_THAT(part.runs(), ElementsAre(TextRun{1, bold()}, TextRun{3, kPlain}));
    EXPECT_THAT(part.alignments(), ElementsAre(TextAlignment::Center, TextAlignment::Right));
    EXPECT_EQ(text.subtext({0, 100}), text);
    EXPECT_TRUE(text.subtext({8, 1}).isEmpty());
}

TEST(StyledText, PrintsEverythingThatEqualityLooksAt) {
    TextStyle style = bold();
    style.slant = TextSlant::Italic;
    style.underline = TextUnderline::Single;
    style.color = {1, 2, 3, 4};
    std::ostringstream out;
    out << StyledText(u"a\n", style, TextAlignment::Right);
    EXPECT_EQ(out.str(),
              "StyledText(2: a\\u000A | 2 \"Times\" 48 weight 700 italic underlined rgba(1,2,3,4) "
              "| alignments 3 3)");
}

TEST(StyledText, LineSeparatorsDoNotEndAParagraph) {
    for (const char16_t unit : {u'\v', u'\f', u'\u0085', u'\u2028'}) {
        EXPECT_TRUE(isLineSeparator(unit));
        EXPECT_EQ(StyledText(std::u16string(1, unit)).paragraphs().size(), 1U);
    }
    EXPECT_FALSE(isLineSeparator(u'\n'));
    EXPECT_FALSE(isLineSeparator(u' '));
}

}  // namespace
}  // namespace skarnel
