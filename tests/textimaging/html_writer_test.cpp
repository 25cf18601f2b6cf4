// The document: complete, escaped, styled run by run, with lines where the text has them.
#include "textimaging/html_writer.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "textimaging/string_encodings.h"

namespace skarnel {
namespace {

std::string document(const StyledText& text) {
    return utf8FromUtf16(htmlDocument(text, "utf-8"));
}

// What stands between the opening and the closing of the body.
std::string body(const StyledText& text) {
    const std::string all = document(text);
    const std::size_t start = all.find("<body>") + 6;
    return all.substr(start, all.find("</body>") - start);
}

std::size_t count(std::string_view text, std::string_view part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos;
         at = text.find(part, at + 1))
        ++found;
    return found;
}

TEST(HtmlWriter, ADocumentIsCompleteAndItsBodyIsOpenedByTheLiteralTag) {
    const std::string html = document(StyledText(u"Summer"));
    EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">"));
    EXPECT_TRUE(html.ends_with("</body>\n</html>\n"));
    EXPECT_EQ(count(html, "<body>"), 1U);
    EXPECT_EQ(count(html, "</style>"), 1U);
}

TEST(HtmlWriter, ARunHasItsFamilySizeWeightSlantUnderlineAndColour) {
    TextStyle style;
    style.family = "Liberation Sans";
    style.size = 12.5;
    style.weight = 700;
    style.slant = TextSlant::Italic;
    style.underline = TextUnderline::Single;
    style.color = {255, 136, 0, 255};
    EXPECT_NE(document(StyledText(u"a", style))
                  .find(".r0{font-family:\"Liberation Sans\";font-size:12.5px;font-weight:700;"
                        "font-style:italic;text-decoration:underline;color:#ff8800}"),
              std::string::npos);
    style.slant = TextSlant::Oblique;
    style.underline = TextUnderline::None;
    style.color.alpha = 128;  // 128 / 255 = 0.50196
    EXPECT_NE(document(StyledText(u"a", style))
                  .find("font-weight:700;font-style:oblique;color:rgba(255,136,0,0.502)}"),
              std::string::npos);
}

TEST(HtmlWriter, EachStyleIsARuleOnceAndEachRunASpan) {
    TextStyle big;
    big.size = 96;
    StyledText text(u"a");
    text.append(u"b", big);
    text.append(u"c", TextStyle{});
    EXPECT_EQ(body(text),
              "\n<p dir=\"auto\"><span class=\"r0\">a</span><span class=\"r1\">b</span>"
              "<span class=\"r0\">c</span></p>\n");
    EXPECT_EQ(count(document(text), "{font-family:"), 2U);
}

TEST(HtmlWriter, EverythingThatMeansSomethingToHtmlIsEscaped) {
    EXPECT_EQ(body(StyledText(u"<BODY>&\"'</p><script>&lt;")),
              "\n<p dir=\"auto\"><span class=\"r0\">&lt;BODY&gt;&amp;&quot;&#39;&lt;/p&gt;"
              "&lt;script&gt;&amp;lt;</span></p>\n");
}

TEST(HtmlWriter, ATypedBodyTagIsNoTag) {
    const std::u16string html = htmlDocument(StyledText(u"<body><Body></style>"), "utf-8");
    const std::u16string replaced = withBodyBackground(html, "#000000");
    EXPECT_EQ(count(utf8FromUtf16(replaced), "<body bgcolor=\"#000000\">"), 1U);
    EXPECT_EQ(count(utf8FromUtf16(replaced), "bgcolor"), 1U);
}

TEST(HtmlWriter, AFamilysNameCannotEndItsStringItsRuleOrTheStyleElement) {
    TextStyle style;
    style.family = "A\";}</style><body>\\\n&'(url)\xC3\xA9";
    const std::string html = document(StyledText(u"a", style));
    EXPECT_NE(html.find("{font-family:\"A\\22 \\3b \\7d \\3c \\2f style\\3e \\3c body\\3e \\5c "
                        "\\0a \\26 \\27 \\28 url\\29 \xC3\xA9\";"),
              std::string::npos)
        << html;
    EXPECT_EQ(count(html, "<body>"), 1U);
    EXPECT_EQ(count(html, "</style>"), 1U);
}

TEST(HtmlWriter, LinesEndWhereTheTextEndsThem) {
    EXPECT_EQ(body(StyledText(u"a\nb\rc\r\nd\u2029e\u2028f\vg")),
              "\n<p dir=\"auto\"><span class=\"r0\">a</span></p>\n"
              "<p dir=\"auto\"><span class=\"r0\">b</span></p>\n"
              "<p dir=\"auto\"><span class=\"r0\">c</span></p>\n"
              "<p dir=\"auto\"><span class=\"r0\">d</span></p>\n"
              "<p dir=\"auto\"><span class=\"r0\">e<br>f<br>g</span></p>\n");
    EXPECT_NE(document(StyledText(u"a")).find("white-space:pre;"), std::string::npos);
}

TEST(HtmlWriter, AnEmptyLineIsAsHighAsItsStyleMakesIt) {
    TextStyle big;
    big.size = 96;
    StyledText text(u"a\n");
    text.append(u"\n", big);
    EXPECT_EQ(body(text),
              "\n<p dir=\"auto\"><span class=\"r0\">a</span></p>\n"
              "<p dir=\"auto\"><span class=\"r1\"><br></span></p>\n"
              "<p dir=\"auto\"><span class=\"r1\"><br></span></p>\n");
    EXPECT_EQ(body(StyledText(u"\r")),
              "\n<p dir=\"auto\"><span class=\"r0\"><br></span></p>\n"
              "<p dir=\"auto\"><span class=\"r0\"><br></span></p>\n");
}

TEST(HtmlWriter, ALineSeparatorAtAParagraphsEndOpensAnEmptyLine) {
    EXPECT_EQ(
        body(StyledText(u"a\u2028\nb")),
        "\n<p dir=\"auto\"><span class=\"r0\">a<br></span><span class=\"r0\"><br></span></p>\n"
        "<p dir=\"auto\"><span class=\"r0\">b</span></p>\n");
}

TEST(HtmlWriter, AStyleThatChangesInsideAParagraphEndKeepsItsRuns) {
    TextStyle bold;
    bold.weight = 700;
    StyledText text(u"ab\r");
    text.append(u"\ncd", bold);
    EXPECT_EQ(body(text),
              "\n<p dir=\"auto\"><span class=\"r0\">ab</span></p>\n"
              "<p dir=\"auto\"><span class=\"r1\">cd</span></p>\n");
}

TEST(HtmlWriter, BlanksAndTabsStay) {
    EXPECT_EQ(body(StyledText(u"  a \t b  ")),
              "\n<p dir=\"auto\"><span class=\"r0\">  a \t b  </span></p>\n");
}

TEST(HtmlWriter, EachParagraphHasItsAlignment) {
    StyledText text(u"a\nb\nc\nd\ne");
    const TextAlignment all[] = {TextAlignment::Natural, TextAlignment::Left, TextAlignment::Center,
                                 TextAlignment::Right, TextAlignment::Justified};
    for (std::size_t i = 0; i < 5; ++i) text.setAlignment(i, all[i]);
    EXPECT_EQ(body(text),
              "\n<p dir=\"auto\"><span class=\"r0\">a</span></p>\n"
              "<p dir=\"auto\" class=\"l\"><span class=\"r0\">b</span></p>\n"
              "<p dir=\"auto\" class=\"c\"><span class=\"r0\">c</span></p>\n"
              "<p dir=\"auto\" class=\"t\"><span class=\"r0\">d</span></p>\n"
              "<p dir=\"auto\" class=\"j\"><span class=\"r0\">e</span></p>\n");
}

TEST(HtmlWriter, CharactersThatDrawNothingAreLeftOut) {
    std::u16string typed = u"a";
    for (char16_t unit = 0; unit < 0xA0; ++unit)
        if ((unit < 0x20 || unit >= 0x7F) && unit != u'\t' && unit != u'\n' && unit != u'\r' &&
            !isLineSeparator(unit))
            typed += unit;
    typed += u"b\uFFFE";
    EXPECT_EQ(body(StyledText(typed)),
              "\n<p dir=\"auto\"><span class=\"r0\">ab\xEF\xBF\xBE</span></p>\n");
}

TEST(HtmlWriter, AnUnpairedSurrogateBecomesTheReplacementCharacter) {
    const std::u16string typed{u'a', char16_t{0xD800}, u'b'};
    EXPECT_EQ(body(StyledText(typed)),
              "\n<p dir=\"auto\"><span class=\"r0\">a\xEF\xBF\xBD"
              "b</span></p>\n");
    EXPECT_TRUE(htmlData(StyledText(typed), 4));
}

TEST(HtmlWriter, TheMarginIsHalfTheLargestSizeAndAtLeastEight) {
    TextStyle style;
    EXPECT_NE(document(StyledText(u"a", style)).find("body{margin:24px;"), std::string::npos);
    style.size = 9;
    StyledText text(u"a", style);
    EXPECT_NE(document(text).find("body{margin:8px;"), std::string::npos);
    style.size = 101;  // half is 50.5
    text.append(u"b", style);
    EXPECT_NE(document(text).find("body{margin:51px;"), std::string::npos);
}

TEST(HtmlWriter, SizesArePlainDecimals) {
    const struct {
        double size;
        const char* text;
    } rows[] = {{48, "font-size:48px"},    {0.5, "font-size:0.5px"},
                {1e-300, "font-size:0px"}, {1e300, "font-size:1000000px"},
                {-3, "font-size:0px"},     {33.333333333333336, "font-size:33.333333333333336px"}};
    for (const auto& row : rows) {
        TextStyle style;
        style.size = row.size;
        EXPECT_NE(document(StyledText(u"a", style)).find(row.text), std::string::npos) << row.text;
    }
}

TEST(HtmlWriter, AParagraphIsAsHighAsItIsSaidToBe) {
    const StyledText text(u"a\nb", {}, TextAlignment::Center);
    const std::vector<double> heights{56, 55.5};
    const std::string html = utf8FromUtf16(htmlDocument(text, "utf-8", heights));
    EXPECT_NE(html.find("<p dir=\"auto\" class=\"c\" style=\"height:56px\">"), std::string::npos);
    EXPECT_NE(html.find("<p dir=\"auto\" class=\"c\" style=\"height:55.5px\">"), std::string::npos);
    EXPECT_EQ(htmlDocument(text, "utf-8", std::span(heights).first(1)),
              htmlDocument(text, "utf-8"));
}

TEST(HtmlWriter, TheDocumentNamesItsEncodingAndIsWrittenInIt) {
    const StyledText text(u"\u00E9");
    const Bytes latin = *htmlData(text, 5);
    const std::string asText(latin.begin(), latin.end());
    EXPECT_NE(asText.find("<meta charset=\"iso-8859-1\">"), std::string::npos);
    EXPECT_NE(asText.find("\xE9</span>"), std::string::npos);
    EXPECT_FALSE(htmlData(text, 1));
    EXPECT_FALSE(htmlData(StyledText(u"\u4E2D"), 30));
    EXPECT_TRUE(htmlData(StyledText(u"plain"), 1));
    EXPECT_FALSE(htmlData(text, 12345));
}

TEST(HtmlWriter, AnEmptyTextIsAnEmptyBody) {
    EXPECT_EQ(body(StyledText()), "\n");
}

TEST(HtmlWriter, TheTimeGrowsWithTheTextAndNotWithItsSquare) {
    StyledText text;
    TextStyle style;
    for (int i = 0; i < 20000; ++i) {
        style.size = 1 + i % 7919;
        text.append(u"x\n", style);
    }
    EXPECT_EQ(count(body(text), "<p "), 20001U);
}

TEST(WithBodyBackground, ReplacesEveryTagInAnyLetterCase) {
    EXPECT_EQ(withBodyBackground(u"<body>a<BODY>b<Body><bOdY>", "#FF3300"),
              u"<body bgcolor=\"#FF3300\">a<body bgcolor=\"#FF3300\">b<body bgcolor=\"#FF3300\">"
              u"<body bgcolor=\"#FF3300\">");
}

TEST(WithBodyBackground, ATagWithAttributesOrNoneIsLeftAlone) {
    for (const char16_t* text :
         {u"<body class=\"x\">", u"<body >", u"body>", u"<body", u"<<bodyy>", u""})
        EXPECT_EQ(withBodyBackground(text, "#000000"), text);
    EXPECT_EQ(withBodyBackground(u"<<body>>", "#000000"), u"<<body bgcolor=\"#000000\">>");
}

}  // namespace
}  // namespace skarnel
