// Paths to URL text: what is trimmed, unescaped, escaped and refused.
#include "textimaging/url_text.h"

#include <gtest/gtest.h>

#include "textimaging/string_encodings.h"

namespace skarnel {
namespace {

TEST(EncodeStringTrimmingWhitespace, TrimsUnescapesAndEscapesAgain) {
    EXPECT_EQ(EncodeStringTrimmingWhitespace(" /a b/c%41.html "), "/a%20b/cA.html");
}

TEST(EncodeStringTrimmingWhitespace, WhiteSpaceIsTrimmedAtBothEndsOnly) {
    EXPECT_EQ(EncodeStringTrimmingWhitespace("\t\r\n\xC2\xA0/a\tb\xE3\x80\x80\n"), "/a%09b");
    EXPECT_EQ(EncodeStringTrimmingWhitespace(" \n "), "");
    EXPECT_EQ(EncodeStringTrimmingWhitespace(""), "");
}

TEST(EncodeStringTrimmingWhitespace, EveryKindOfWhiteSpaceIsTrimmedAndNoNeighbourOfIt) {
    const std::u16string blanks =
        u"\t\n\v\f\r \u0085\u00A0\u1680\u2000\u2005\u200B\u2028\u2029\u202F\u205F\u3000";
    for (const char16_t blank : blanks) {
        const std::string text = utf8FromUtf16({&blank, 1});
        EXPECT_EQ(EncodeStringTrimmingWhitespace(text + "/a" + text), "/a") << int{blank};
    }
    const std::u16string others = u"\u0008\u000E\u0021\u0084\u1FFF\u200C\u2027\u2030\u3001";
    for (const char16_t other : others) {
        const std::string text = utf8FromUtf16({&other, 1});
        EXPECT_NE(EncodeStringTrimmingWhitespace("/a" + text), "/a") << int{other};
    }
}

TEST(EncodeStringTrimmingWhitespace, AnEscapedBlankAtTheEndIsNotTrimmed) {
    EXPECT_EQ(EncodeStringTrimmingWhitespace("/a%20"), "/a%20");
}

TEST(EncodeStringTrimmingWhitespace, OnlyWhatMayNotStandInAUrlIsEscaped) {
    const std::string kept = "abcxyzABCXYZ0189;/?:@&=+$,-_.!~*'()";
    EXPECT_EQ(EncodeStringTrimmingWhitespace(kept), kept);
    EXPECT_EQ(EncodeStringTrimmingWhitespace("a \"#<>[\\]^`{|}\x7F"
                                             "b"),
              "a%20%22%23%3C%3E%5B%5C%5D%5E%60%7B%7C%7D%7Fb");
    // U+00E9 is C3 A9, U+1F600 is F0 9F 98 80.
    EXPECT_EQ(EncodeStringTrimmingWhitespace("\xC3\xA9\xF0\x9F\x98\x80"), "%C3%A9%F0%9F%98%80");
}

TEST(EncodeStringTrimmingWhitespace, AnEscapedPercentSignStaysEscaped) {
    EXPECT_EQ(EncodeStringTrimmingWhitespace("100%25"), "100%25");
    EXPECT_EQ(EncodeStringTrimmingWhitespace("%2541"), "%2541");
}

TEST(EncodeStringTrimmingWhitespace, EscapesOfSeveralBytesMakeOneCharacter) {
    EXPECT_EQ(EncodeStringTrimmingWhitespace("%c3%A9"), "%C3%A9");
}

TEST(EncodeStringTrimmingWhitespace, AMalformedEscapeGivesNone) {
    for (const char* text : {"%", "a%4", "%zz", "%4g", "% 41", "%%41"})
        EXPECT_EQ(EncodeStringTrimmingWhitespace(text), std::nullopt) << text;
}

TEST(EncodeStringTrimmingWhitespace, EscapesThatAreNoUtf8GiveNone) {
    for (const char* text : {"%FF", "%C3", "%C3(", "%ED%A0%80", "%C0%80", "%F4%90%80%80"})
        EXPECT_EQ(EncodeStringTrimmingWhitespace(text), std::nullopt) << text;
}

TEST(IsValidURLText, TakesWhatMayStandInAUrlAndWholeEscapes) {
    for (const char* text : {"file:///tmp/a%20b.html", "file:///tmp//x.html", "a", "x#y", "%41"})
        EXPECT_TRUE(isValidURLText(text)) << text;
    for (const char* text : {"", "a b", "file:///\xC3\xA9", "<", "%4", "%zz", "a\"b", "\n"})
        EXPECT_FALSE(isValidURLText(text)) << text;
}

TEST(PathOfFileURL, UnescapesThePathAndLeavesQueryAndFragmentOut) {
    EXPECT_EQ(pathOfFileURL("file:///tmp/x%20y.html"), "/tmp/x y.html");
    EXPECT_EQ(pathOfFileURL("file:///tmp/x.html?q#f"), "/tmp/x.html");
    EXPECT_EQ(pathOfFileURL("http://host/x"), std::nullopt);
    EXPECT_EQ(pathOfFileURL("file://host/x"), std::nullopt);
    EXPECT_EQ(pathOfFileURL("file:///%zz"), std::nullopt);
}

}  // namespace
}  // namespace skarnel
