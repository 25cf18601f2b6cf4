// Rich text as styled text: what it can say comes along, and the rest leaves its characters.
#include "qt/page/html_reader.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

TextStyle styleOf(double size) {
    TextStyle style;
    style.size = size;
    return style;
}

TEST(StyledTextOfHtml, ReadsTheStylesThatStyledTextKnows) {
    const TextStyle base = styleOf(48);
    const StyledText text = styledTextOfHtml(
        u"<p align='center'>plain<b>bold</b><i>slant</i><u>under</u>"
        u"<span style='color:#ff0000;font-family:Courier;font-size:20px'>red</span></p>"
        u"<p>next</p>",
        base);
    EXPECT_EQ(text.characters(), u"plainboldslantunderred\nnext");
    EXPECT_EQ(text.alignments().size(), 2U);
    EXPECT_EQ(text.alignments()[0], TextAlignment::Center);
    EXPECT_EQ(text.styleAt(0), base);
    EXPECT_EQ(text.styleAt(5).weight, kTextWeightBold);
    EXPECT_EQ(text.styleAt(9).slant, TextSlant::Italic);
    EXPECT_EQ(text.styleAt(14).underline, TextUnderline::Single);
    EXPECT_EQ(text.styleAt(19).color, (TextColor{255, 0, 0, 255}));
    EXPECT_EQ(text.styleAt(19).family, "Courier");
    EXPECT_EQ(text.styleAt(19).size, 20);
    EXPECT_EQ(text.styleAt(24), base);
}

TEST(StyledTextOfHtml, SizesKeepTheirFractionsInPixelsAndInPoints) {
    const StyledText text = styledTextOfHtml(
        u"<span style='font-size: 13.25px'>a</span><span style='color:red;FONT-SIZE:.5px'>b</span>"
        u"<span style='font-size:20.75pt'>c</span>font-size: 2.5px",
        styleOf(48));
    EXPECT_EQ(text.characters(), u"abcfont-size: 2.5px");
    EXPECT_EQ(text.styleAt(0).size, 13.25);
    EXPECT_EQ(text.styleAt(1).size, 0.5);
    EXPECT_EQ(text.styleAt(2).size, 20.75);
}

TEST(StyledTextOfHtml, PicturesScriptsAndLinksLeaveNothingButTheirText) {
    const StyledText text = styledTextOfHtml(
        u"a<img src='file:///etc/passwd'><script>alert(1)</script><a href='http://x/'>link</a>",
        styleOf(48));
    EXPECT_EQ(text.characters(), u"alink");
    EXPECT_EQ(text.styleAt(1), styleOf(48));
}

TEST(StyledTextOfHtml, TextBehindALinkElementIsNotLost) {
    for (const std::u16string_view html :
         {u"<link rel=stylesheet href=x>text", u"<LINK title='a>b' href=\"'\"/><p>text",
          u"<html><head><link href=x></head><body>text</body></html>",
          u"te<span><link itemprop=url href=x>xt</span>"})
        EXPECT_EQ(styledTextOfHtml(html, styleOf(48)).characters(), u"text");
    // Neither another element of such a name, nor its name alone.
    EXPECT_EQ(styledTextOfHtml(u"<linked>te</linked>xt &lt;link&gt;", styleOf(48)).characters(),
              u"text <link>");
}

TEST(StyledTextOfHtml, LinkElementsThatHaveNoEndTakeNoTime) {
    std::u16string html;
    for (int i = 0; i < 100'000; ++i) html += i % 2 == 0 ? u"<link '" : u"<link \"";
    EXPECT_TRUE(styledTextOfHtml(html, styleOf(48)).isEmpty());  // nested too deeply
    std::u16string open = u"text<link ";
    for (int i = 0; i < 500'000; ++i) open += u"a=\"\" ";
    EXPECT_EQ(styledTextOfHtml(open, styleOf(48)).characters().substr(0, 4), u"text");
}

std::u16string nested(int depth) {
    std::u16string html;
    for (int i = 0; i < depth; ++i) html += u"<div>";
    return html + u"text";
}

std::u16string repeated(std::u16string_view part, int count) {
    std::u16string html;
    for (int i = 0; i < count; ++i) html += part;
    return html;
}

bool isRefused(std::u16string_view part, int count) {
    return styledTextOfHtml(repeated(part, count) + u"text", styleOf(48)).isEmpty();
}

TEST(StyledTextOfHtml, WhatIsATagWithoutTheElementInItCountsAsNested) {
    for (const std::u16string_view part : {u"<<link>div>", u"<inp<input>ut>", u"<d<col>iv>"}) {
        EXPECT_FALSE(isRefused(part, 900));
        EXPECT_TRUE(isRefused(part, 5'001));
    }
}

TEST(StyledTextOfHtml, WhatIsATagToTheToolkitAloneCountsAsNested) {
    for (const std::u16string_view tag : {u"< div>", u"<\n\tdiv>", u"<_>", u"<?x>", u"<o:p>"}) {
        EXPECT_TRUE(isRefused(tag, 5'001));
        EXPECT_EQ(styledTextOfHtml(std::u16string(tag) + u"text", styleOf(48)).characters(),
                  u"text");
    }
}

TEST(StyledTextOfHtml, MarkupThatIsNestedTooDeeplyHasNoText) {
    EXPECT_EQ(styledTextOfHtml(nested(5'000), styleOf(48)).characters(), u"text");
    EXPECT_TRUE(styledTextOfHtml(nested(5'001), styleOf(48)).isEmpty());
    // Would take the toolkit minutes.
    EXPECT_TRUE(styledTextOfHtml(nested(100'000), styleOf(48)).isEmpty());
}

TEST(StyledTextOfHtml, WhatOnlyLooksLikeAnEndTagEndsNothing) {
    // Took the toolkit 2 to 13 s.
    for (const std::u16string_view part :
         {u"<div title=\"</div>\">", u"<div><!--</div>-->", u"<div><style></div></style>",
          u"<div></div x='><div>'>", u"<p><li>", u"<b><dt></b>", u"<dl><dt><div><dt></div></dt>",
          u"<option>", u"<input", u"<style>b{}</style>"})
        EXPECT_TRUE(isRefused(part, 20'000));
}

TEST(StyledTextOfHtml, ThePartThatWasCopiedIsWhatTheToolkitTakesForIt) {
    const std::u16string html =
        u"<b title=\"<!--StartFragment-->" + repeated(u"<div>", 5'001) + u"\">text";
    EXPECT_TRUE(styledTextOfHtml(html, styleOf(48)).isEmpty());
    EXPECT_EQ(
        styledTextOfHtml(u"a<!--StartFragment-->text<!--EndFragment-->b", styleOf(48)).characters(),
        u"text");
    EXPECT_EQ(styledTextOfHtml(u"a<!--StartFragment-->text", styleOf(48)).characters(), u"text");
}

TEST(StyledTextOfHtml, ManyPicturesTakeNoTime) {
    // Took the toolkit more than a minute.
    EXPECT_FALSE(isRefused(u"<img src='a>b'>", 20'000));
    for (const std::u16string_view part : {u"<im<img>g>", u"< img>", u"<\"img\">"})
        EXPECT_TRUE(isRefused(part, 20'000));
}

TEST(StyledTextOfHtml, ALargeTableOfAWordProcessorIsRead) {
    const std::u16string head =
        u"<html xmlns:o=\"urn:x:office\"><head><meta http-equiv=Content-Type content=\"text/html\">"
        u"<link rel=File-List href=\"file:///x/y.xml\"><!--[if gte mso "
        u"9]><xml><o:p/></xml><![endif]-->"
        u"<style><!-- @font-face {font-family:\"A, B\";} p.Normal, li.Normal {margin:0cm;} -->"
        u"</style></head><body lang=EN-US style='tab-interval:36.0pt'><!--StartFragment-->"
        u"<table border=1 cellspacing=0><col width=64><tbody>";
    const std::u16string_view row =
        u"<tr style='height:15.0pt'><td width=64 valign=top style='border:solid windowtext 1.0pt'>"
        u"<p class=Normal><b><span lang=EN-US style='font-size:9.0pt'>cell<o:p></o:p></span></b>"
        u"</p></td><td><p class=Normal><![if !supportEmptyParas]>&nbsp;<![endif]><br clear=all/>"
        u"</p></td></tr>\n";
    const StyledText text = styledTextOfHtml(
        head + repeated(row, 3'000) + u"</tbody></table></body></html>", styleOf(48));
    EXPECT_EQ(text.characters().substr(0, 5), u"\ncell");
}

TEST(StyledTextOfHtml, ALargeTableOfABrowserIsRead) {
    const std::u16string_view row =
        u"<tr style=\"height: 20px;\"><td data-x='{\"k\":\"<\"}'><span class=\"a b\">cell <a "
        u"href=\"https://x.example/?a=1&amp;b=2\">link</a></span><wbr><input disabled=\"\">"
        u"<ul><li>one</li><li>two</li></ul></td></tr>";
    const StyledText text = styledTextOfHtml(
        u"<meta charset=\"utf-8\"><table><colgroup><col width=\"10\"><col></colgroup><tbody>" +
            repeated(row, 2'000) + u"</tbody></table>",
        styleOf(48));
    EXPECT_EQ(text.characters().substr(0, 10), u"\ncell link");
}

TextStyle styleIn(std::u16string_view html, const TextStyle& base = styleOf(48)) {
    const StyledText text = styledTextOfHtml(html, base);
    EXPECT_EQ(text.characters(), u"a") << "one letter in one style";
    return text.styleAt(0);
}

TEST(StyledTextOfHtml, AStyleWithoutASizeOrAFamilyHasThatOfItsSurroundings) {
    EXPECT_EQ(styleIn(u"<span style='font-size:0pt'>a</span>").size, 48);
    EXPECT_EQ(styleIn(u"<span style='font-family:\"\"'>a</span>").family, styleOf(48).family);
    // The steps of HTML go from two below the middle to four above it, and no further.
    EXPECT_EQ(styleIn(u"<font size='7'>a</font>").size, 48 * 2.4);
    EXPECT_EQ(styleIn(u"<font size='1'>a</font>").size, 48 * 0.7);
    EXPECT_EQ(styleIn(u"<big>a</big>").size, 48 * 1.2);
}

TEST(StyledTextOfHtml, WhatIsUprightInSlantedTextIsUpright) {
    TextStyle slanted = styleOf(48);
    slanted.slant = TextSlant::Italic;
    EXPECT_EQ(styleIn(u"<span style='font-style:normal'>a</span>", slanted).slant,
              TextSlant::Upright);
    EXPECT_EQ(styleIn(u"<span style='font-style:italic'>a</span>").slant, TextSlant::Italic);
    EXPECT_EQ(styleIn(u"a", slanted).slant, TextSlant::Italic);
}

TEST(StyledTextOfHtml, EachParagraphHasItsAlignment) {
    const StyledText text = styledTextOfHtml(
        u"<p>a</p><p align='left'>b</p><p align='right'>c</p><p align='center'>d</p>"
        u"<p align='justify'>e</p>",
        styleOf(48));
    using enum TextAlignment;
    EXPECT_EQ(text.alignments(), (std::vector{Natural, Left, Right, Center, Justified}));
}

}  // namespace
}  // namespace skarnel
