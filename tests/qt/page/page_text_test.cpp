// What was typed is what is drawn: the page against the text layout's own drawing.
#include <QImage>

#include "page_fixture.h"
#include "qt/page/text_layout.h"

namespace skarnel::test_page {
namespace {

struct NamedText {
    std::string name;
    StyledText text;
};

StyledText mixed() {
    StyledText text(u"Summer ", styleOf(48, {255, 136, 0, 255}));
    TextStyle style = styleOf(72, {0, 200, 255, 255});
    style.family = "Helvetica";
    style.weight = kTextWeightBold;
    text.append(u"Sale", style);
    return text;
}

StyledText inStyle(std::u16string_view characters, const std::string& family, double size,
                   int weight, TextSlant slant, TextAlignment alignment = TextAlignment::Natural) {
    TextStyle style = styleOf(size);
    style.family = family;
    style.weight = weight;
    style.slant = slant;
    return StyledText(characters, style, alignment);
}

std::vector<NamedText> dozen() {
    using enum TextSlant;
    std::u16string paragraphs;
    for (int i = 0; i < 12; ++i) paragraphs += u"A line of some length\n";
    StyledText sizes(u"small ", styleOf(12));
    sizes.append(u"BIG\n", styleOf(120));
    sizes.append(u"middle", styleOf(36));
    return {
        {"one word", StyledText(u"Summer", styleOf(48))},
        {"two lines", StyledText(u"Summer\nSale", styleOf(48))},
        {"two fonts and colours", mixed()},
        {"twelve lines", StyledText(paragraphs, styleOf(24))},
        {"bold sans", inStyle(u"Bold Helvetica", "Helvetica", 40, 700, Upright)},
        {"italic serif", inStyle(u"Italic Times gQ", "Times", 64, 400, Italic)},
        {"typewriter", inStyle(u"int main() { }", "Courier", 32, 400, Upright)},
        {"centred", inStyle(u"a short line\nand a much longer line", "Times", 30, 400, Upright,
                            TextAlignment::Center)},
        {"right", inStyle(u"a short line\nand a much longer line", "Times", 30, 400, Upright,
                          TextAlignment::Right)},
        {"sizes in one line", sizes},
        {"blanks and tabs", StyledText(u"a   b\tc\n\n  d", styleOf(28))},
        {"very large", StyledText(u"Ag", styleOf(300))},
        {"very small", StyledText(u"the small print of the sale", styleOf(9))},
    };
}

TEST_F(PageTest, ADozenTextsAreAsLargeOnThePageAsInTheTextView) {
    useLiberationFonts();
    for (const auto& [name, text] : dozen()) {
        const Capture page = capture(text, "#203040");
        ASSERT_EQ(page.outcome, PaintOutcome::Painted) << name;
        const QImage drawing = drawText(text, {0x20, 0x30, 0x40, 255}, 80);
        std::vector<std::uint8_t> bytes;
        for (int y = 0; y < drawing.height(); ++y)
            bytes.insert(bytes.end(), drawing.constScanLine(y),
                         drawing.constScanLine(y) + 4 * drawing.width());
        const auto [pageWidth, pageHeight] = usedSize(page.bytes, page.width, page.height);
        const auto [width, height] = usedSize(bytes, drawing.width(), drawing.height());
        EXPECT_NEAR(pageWidth, width, 2) << name;
        EXPECT_NEAR(pageHeight, height, 2) << name;
    }
}

// The text view's sizes are whole; others come from the command line and are drawn as they are.
TEST_F(PageTest, AFractionalSizeIsDrawnAsItIs) {
    const auto widthAt = [&](double size) {
        const Capture page = capture(StyledText(u"Summer Sale Summer", styleOf(size)), "#000000");
        return usedSize(page.bytes, page.width, page.height)[0];
    };
    EXPECT_NEAR(2 * widthAt(33.5), widthAt(67), 4);
    EXPECT_NEAR(2 * widthAt(12.25), widthAt(24.5), 4);
}

TEST_F(PageTest, UnusualTextsAreDrawnInTheirNaturalRoom) {
    std::u16string hundred;
    for (int line = 0; line < 100; ++line) {
        for (int i = 0; i < 100; ++i) hundred += static_cast<char16_t>(u'a' + (line + i) % 26);
        hundred += u'\n';
    }
    const NamedText rows[] = {
        {"right to left",
         StyledText(u"\u05E9\u05DC\u05D5\u05DD \u05E2\u05D5\u05DC\u05DD", styleOf(48))},
        {"both directions", StyledText(u"abc \u05D0\u05D1\u05D2 123\n\u05D0 xyz", styleOf(48))},
        {"Chinese", StyledText(u"\u590F\u5B63\u7279\u5356", styleOf(48))},
        {"emoji", StyledText(u"sun \U0001F31E\U0001F3D6\uFE0F", styleOf(48))},
        {"a hundred lines", StyledText(hundred, styleOf(48))},
    };
    for (const auto& [name, text] : rows) {
        const CGSize natural = module().naturalTextSize(text);
        const Capture page = capture(text, "#000000");
        ASSERT_EQ(page.outcome, PaintOutcome::Painted) << name;
        // Without an emoji face the two draw boxes of their own kinds.
        EXPECT_NEAR(page.document.width, natural.width + 48, name == "emoji" ? 24 : 4) << name;
        EXPECT_NEAR(page.document.height, natural.height + 48, 2) << name;
        EXPECT_GT(usedSize(page.bytes, page.width, page.height)[0], 40) << name;
    }
}

TEST_F(PageTest, MarkupInTheTextIsDrawnAsTyped) {
    const StyledText typed(u"<script>document.body.innerHTML=''</script><b>bold</b>&amp;",
                           styleOf(20));
    const Capture page = capture(typed, "#000000");
    EXPECT_NEAR(page.document.width, module().naturalTextSize(typed).width + 20, 3);
}

TEST_F(PageTest, ALineBreakAloneIsABlankPage) {
    for (const char16_t* text : {u"\r", u"\n", u" ", u"\u2028"}) {
        const Capture page = capture(StyledText(text, styleOf(48)), "#123456");
        ASSERT_EQ(page.outcome, PaintOutcome::Painted);
        EXPECT_LE(usedSize(page.bytes, page.width, page.height)[0], 0);
    }
}

TEST_F(PageTest, TextInTheColourOfTheGroundIsABlankPage) {
    for (const TextColor color : {TextColor{0x12, 0x34, 0x56, 255}, TextColor{255, 255, 255, 255},
                                  TextColor{127, 127, 127, 255}, TextColor{254, 1, 99, 255}}) {
        char ground[8];
        std::snprintf(ground, sizeof ground, "#%02X%02X%02X", color.red, color.green, color.blue);
        const Capture page = capture(StyledText(u"Invisible", styleOf(48, color)), ground);
        for (std::size_t i = 0; i < page.bytes.size(); ++i)
            ASSERT_EQ(page.bytes[i], page.bytes[i % 4]) << ground;
    }
}

TEST(NaturalTextSize, LinesEndOnlyWhereTheTextEndsThem) {
    const double one = naturalTextSize(StyledText(u"word", styleOf(48))).width;
    std::u16string many;
    for (int i = 0; i < 200; ++i) many += u"word";
    const CGSize size = naturalTextSize(StyledText(many, styleOf(48)));
    EXPECT_NEAR(size.width, 200 * one, 200);
    EXPECT_EQ(size.height, naturalTextSize(StyledText(u"word", styleOf(48))).height);
    EXPECT_EQ(naturalTextSize(StyledText(u"a\nb", styleOf(48))).height, 2 * size.height);
    EXPECT_EQ(paragraphHeights(StyledText(u"a\n\nb", styleOf(48))),
              (std::vector<double>{size.height, size.height, size.height}));
}

TEST(NaturalTextSize, OnePointIsOnePixel) {
    const double at48 = naturalTextSize(StyledText(u"mmmmmmmmmm", styleOf(48))).width;
    EXPECT_NEAR(naturalTextSize(StyledText(u"mmmmmmmmmm", styleOf(96))).width, 2 * at48, 4);
    // The letter m of the face is 1593 of 2048 units wide.
    EXPECT_NEAR(at48, 480 * 1593.0 / 2048, 12);
}

}  // namespace
}  // namespace skarnel::test_page
