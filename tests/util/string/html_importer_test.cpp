#include "util/string/html_importer.h"

#include <gtest/gtest.h>

#include <string>

#include "util/string/html_depth.h"

namespace skarnel {
namespace {

/// The text of markup given as UTF-8.
std::string textOf(std::string_view html) {
    std::vector<std::uint8_t> bytes{0xEF, 0xBB, 0xBF};
    bytes.insert(bytes.end(), html.begin(), html.end());
    const auto document = importHTML(bytes);
    return document ? document->text.description() : "(none)";
}

TEST(HTMLImporter, RemovesTagsAndComments) {
    EXPECT_EQ(textOf("a <b>bold</b> <i class='x>y'>word</i><!-- not this -->!"), "a bold word!");
}

TEST(HTMLImporter, DecodesNamedAndNumericEntities) {
    EXPECT_EQ(textOf("&lt;&eacute;&copy;&hellip;&#8364;&#x41;&amp;amp;"),
              "<\xC3\xA9\xC2\xA9\xE2\x80\xA6\xE2\x82\xAC"
              "A&amp;");
    EXPECT_EQ(textOf("&#128512;"), "\xF0\x9F\x98\x80");
}

TEST(HTMLImporter, EndsALineWithEachBlockAndBreak) {
    EXPECT_EQ(textOf("<p>one</p><p>two</p>"), "one\ntwo\n");
    EXPECT_EQ(textOf("one<br>two<br/>three"), "one\ntwo\nthree");
    EXPECT_EQ(textOf("one<br><br>two"), "one\n\ntwo");
    EXPECT_EQ(textOf("head<div>inside</div>tail"), "head\ninside\ntail");
    EXPECT_EQ(textOf("<ul><li>a<li>b</ul>"), "a\nb\n");
    EXPECT_EQ(textOf("<h1>t</h1><p></p><div><div>x</div></div>"), "t\nx\n");
}

TEST(HTMLImporter, TextWithoutABlockHasNoLineEndOfItsOwn) {
    EXPECT_EQ(textOf("plain"), "plain");
    EXPECT_EQ(textOf("<span>plain</span>"), "plain");
}

TEST(HTMLImporter, CollapsesWhiteSpaceOutsidePreformattedText) {
    EXPECT_EQ(textOf("  a \n\t b  <b> c</b>  "), "a b c");
    EXPECT_EQ(textOf("a\t\fb\r\nc\fd"), "a b c d");
    EXPECT_EQ(textOf("a&#13;b&#12; c"), "a b c") << "written as numbers, too";
    EXPECT_EQ(textOf("<p> a </p> <p> b </p>"), "a\nb\n");
    EXPECT_EQ(textOf("<pre>a  b\n c</pre>"), "a  b\n c\n");
    EXPECT_EQ(textOf("a&nbsp; b"), "a\xC2\xA0 b") << "a no-break space is no white space";
}

TEST(HTMLImporter, SeparatesTheCellsOfARowByTabs) {
    EXPECT_EQ(textOf("<table><tr><td>a</td><td>b</td></tr><tr><th>c<td>d</table>"), "a\tb\nc\td\n");
}

TEST(HTMLImporter, KeepsTheTextOfDrawingsAndFormulas) {
    EXPECT_EQ(textOf("<svg><text>a<![CDATA[ < b]]></text></svg>"), "a < b");
}

TEST(HTMLImporter, LeavesOutHeadScriptsAndStyles) {
    EXPECT_EQ(textOf("<html><head><title>t</title><style>p{}</style></head><body>x"
                     "<script>var a = '<p>';</script><template>y</template>z</body></html>"),
              "xz");
}

TEST(HTMLImporter, ForgivesWhatBrowsersForgive) {
    EXPECT_EQ(textOf("<b>un<i>closed"), "unclosed");
    EXPECT_EQ(textOf("a < b & c"), "a < b & c");
    EXPECT_EQ(textOf("</p>x</div>"), "x");
    EXPECT_EQ(textOf(""), "");
}

TEST(HTMLImporter, ReportsTheEncodingThatItDetected) {
    EXPECT_EQ(importHTML(std::vector<std::uint8_t>{0x8E})->encoding, NSStringEncoding::MacOSRoman);
    EXPECT_EQ(importHTML(std::vector<std::uint8_t>{0x8E})->text, u"\u00E9"_ns);
    const std::vector<std::uint8_t> big{0xFE, 0xFF, 0x00, 0x41};
    EXPECT_EQ(importHTML(big)->encoding, NSStringEncoding::Unicode);
    EXPECT_EQ(importHTML(big)->text, u"A"_ns);
    EXPECT_EQ(importHTML(std::vector<std::uint8_t>{0xEF, 0xBB, 0xBF})->encoding,
              NSStringEncoding::UTF8);
}

std::string repeated(std::string_view part, int times) {
    std::string text;
    for (int count = 0; count < times; ++count) text += part;
    return text;
}

TEST(HTMLImporter, RefusesMarkupThatIsNestedTooDeep) {
    EXPECT_EQ(textOf(repeated("<div>", 10'001)), "(none)");
    EXPECT_EQ(textOf(repeated("<div></x>", 10'001)), "(none)") << "the end tag ends nothing";
    EXPECT_EQ(textOf(repeated("<DIV>", 10'001)), "(none)");
}

TEST(HTMLImporter, RefusesFormattingThatGrowsWithEveryBlock) {
    std::string html = "<div>";
    for (int size = 0; size < 3'000; ++size) html += "<font size=" + std::to_string(size) + ">";
    html += "</div>";
    EXPECT_EQ(textOf(html + repeated("<div>x</div>", 3'000)), "(none)");
    EXPECT_EQ(textOf(html + repeated("<p>x", 3'000)), "(none)");
}

bool isTooDeep(std::string_view part, int times, EmptyElements empty = {}) {
    return isNestedTooDeeply(repeated(part, times), 100, empty);
}

TEST(HTMLImporter, TellsHowDeepMarkupIs) {
    EXPECT_FALSE(isTooDeep("<div>", 100));
    EXPECT_TRUE(isTooDeep("<div>", 101));
    for (const char* cut : {"<", "< ", "</", "<!", "<!x", "<!--", "<b", "<b c=", "<b c='"})
        EXPECT_FALSE(isNestedTooDeeply(cut, 1)) << cut;
    for (const char* part :
         {"<div></div>", "<DIV ></div >", "<dl><dt>a<dd>b</dd></dl>", "<dd></dd><dt></dt>", "<p>a",
          "<li>", "<dt>a<dd>b", "<dd>a<dt>b", "<table><tr><th>a<td>b<tr><td></td></tr></table>",
          "<br>", "<input>", "<img>"})
        EXPECT_FALSE(isTooDeep(part, 200)) << part;
    for (const char* part : {"<dd><p>", "<dt><li>", "<td><p>", "<tr><dd>"})
        EXPECT_TRUE(isTooDeep(part, 200)) << part << ": neither ends the other";
}

TEST(HTMLImporter, BelievesEndTagsBehindWhatAllParsersReadAlike) {
    for (const char* before :
         {"<!-- <b> </b> > -->", "<!DOCTYPE html>", "<![if !x]>", "<br a=b/c d = 'e>f' g=\"<\" h>",
          "<br a=b/>", "<br a=b/ >", "<style><!-- b > c --> b > c</style>",
          "<noscript><br><i></i></noscript>", "<br\n@a:b.c=1\t/>", "<br\r\fa-b_c.d:e9=1Z>",
          "<a-b_c.d:e9></a-b_c.d:e9>", "<?xml a='1'?>", "text > 'text\""})
        EXPECT_FALSE(isNestedTooDeeply(before + repeated("<div></div>", 300), 100)) << before;
}

TEST(HTMLImporter, BelievesNoEndTagBehindAnythingElse) {
    for (const char* before : {"<!-- ",
                               "<!-->-->",
                               "<!--->-->",
                               "<!-- --!> -->",

                               "<![CDATA[>",
                               "<",
                               "a < b>",
                               "</>",
                               "</?x>",
                               "</b x>",
                               "<b a=\"x>",
                               "<b a=>",
                               "<b a=&>",
                               "<b a='1'b>",
                               "<b/x>",
                               "<b\"x\">",
                               "<_>",
                               "<[>",
                               "<{>",
                               "<plaintext>",
                               "<style><!--<--></style>",
                               "<title><b a='<'></title>",
                               "<script>if (a<b)</script>",
                               "< /b>"})
        EXPECT_TRUE(isNestedTooDeeply(before + repeated("<div></div>", 300), 100)) << before;
}

TEST(HTMLImporter, AnElementThatWasNotBegunLastMayStayOpen) {
    EXPECT_TRUE(isTooDeep("<div><b></div></b>", 300));
    EXPECT_TRUE(isTooDeep("<b><dt></b>", 300));
    EXPECT_TRUE(isTooDeep("<tr><td><tr a='", 300)) << "the second may be none";
    EXPECT_TRUE(isNestedTooDeeply("<svg>" + repeated("<td>", 300), 100)) << "in a drawing";
    EXPECT_TRUE(isNestedTooDeeply("<math>" + repeated("<tr>", 300), 100)) << "in a formula";
}

TEST(HTMLImporter, TheToolkitKnowsFewEmptyElements) {
    EXPECT_TRUE(isTooDeep("<input>", 300, EmptyElements::OfTheToolkit));
    EXPECT_FALSE(isTooDeep("<input/>", 300, EmptyElements::OfTheToolkit));
    EXPECT_FALSE(isTooDeep("<br>", 300, EmptyElements::OfTheToolkit));
    EXPECT_FALSE(isNestedTooDeeply("<img>", 1'000, EmptyElements::OfTheToolkit));
    EXPECT_TRUE(
        isNestedTooDeeply(repeated("<img>", 1'000), 1'000'000, EmptyElements::OfTheToolkit));
    EXPECT_TRUE(
        isNestedTooDeeply(repeated("<'img'>", 1'000), 1'000'000, EmptyElements::OfTheToolkit));
}

TEST(HTMLImporter, StyleSheetsCountWithEachElementThatTheyMayBeAbout) {
    const std::string sheet = "<style>" + repeated("b,i{}", 500) + "</style>";
    EXPECT_FALSE(isNestedTooDeeply(sheet + repeated("<b></b>", 2'000), 10'000));
    EXPECT_TRUE(isNestedTooDeeply(sheet + repeated("<b></b>", 3'000), 10'000));
    EXPECT_TRUE(
        isNestedTooDeeply("<style>" + repeated("b{}", 100) + repeated("</x>", 1'000), 10'000))
        << "each ends it to the toolkit";
    EXPECT_TRUE(isNestedTooDeeply(repeated("<style></style>", 3'000), 10'000));
    const std::string small = repeated("<style>b{}</style>", 200);
    EXPECT_FALSE(isNestedTooDeeply(small, 10'000));
    EXPECT_TRUE(isNestedTooDeeply("< " + small, 10'000)) << "none may have ended";
}

TEST(HTMLImporter, TakesLongMarkupThatIsNot) {
    EXPECT_EQ(textOf(repeated("<i>a</i>", 20'000)), std::string(20'000, 'a'));
    EXPECT_EQ(textOf(repeated("<p>a", 20'000)), repeated("a\n", 20'000));
    EXPECT_EQ(textOf(repeated("<div>", 2'000) + "x"), "x\n");
    EXPECT_EQ(textOf("<font>" + repeated("<p>a", 20'000)), repeated("a\n", 20'000));
}

}  // namespace
}  // namespace skarnel
