#include "util/string/nsstring.h"

#include <gtest/gtest.h>

#include <sstream>

namespace skarnel {
namespace {

constexpr NSRange kNotFound{9223372036854775807U, 0};

TEST(NSString, CopiesOfAHandleAreTheSameObjectAndEqualTextsAreNot) {
    const NSString text = u"abc"_ns;
    const NSString copy = text;
    EXPECT_TRUE(copy.isSame(text));
    EXPECT_FALSE(u"abc"_ns.isSame(text));
    EXPECT_EQ(u"abc"_ns, text);
    EXPECT_NE(u"abd"_ns, text);
}

TEST(NSString, CountsUnitsNotCharacters) {
    // U+1F600 is the pair D83D DE00.
    const NSString text = NSString::stringWithUTF8("a\xF0\x9F\x98\x80").value();
    EXPECT_EQ(text.length(), 3U);
    EXPECT_EQ(text.characterAtIndex(1), 0xD83D);
    EXPECT_EQ(text.characterAtIndex(2), 0xDE00);
}

TEST(NSString, GoesToUTF8AndBack) {
    const std::string bytes = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(NSString::stringWithUTF8(bytes)->UTF8String(), bytes);
    EXPECT_EQ(NSString().UTF8String(), "");
}

TEST(NSString, BytesThatAreNotUTF8MakeNoText) {
    for (const char* bytes : {"\xFF", "a\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                              // Ended, or going on with a letter, at each of the places.
                              "\xE2", "\xE2\x82", "\xF0", "\xF0\x9F", "\xF0\x9F\x98", "\xE2z\xAC",
                              "\xE2\x82z", "\xF0z\x98\x80", "\xF0\x9Fz\x80", "\xF0\x9F\x98z"})
        EXPECT_EQ(NSString::stringWithUTF8(bytes), std::nullopt);
    EXPECT_EQ(NSString::stringWithUTF8Lossy("a\xFFz"), u"a\uFFFDz"_ns);
}

TEST(NSString, ALoneSurrogateHasNoUTF8FormButADescription) {
    const NSString text(std::u16string{u'a', 0xD83D, u'b'});
    EXPECT_EQ(text.UTF8String(), std::nullopt);
    EXPECT_EQ(text.description(),
              "a\xEF\xBF\xBD"
              "b");
    std::ostringstream out;
    out << u"x"_ns;
    EXPECT_EQ(out.str(), "\"x\"");
}

TEST(NSString, SubstringsAreNewObjects) {
    const NSString text = u"abcdef"_ns;
    EXPECT_EQ(text.substringWithRange({2, 3}), u"cde"_ns);
    EXPECT_EQ(text.substringWithRange({6, 0}), NSString());
    EXPECT_FALSE(text.substringWithRange({0, 6}).isSame(text));
}

TEST(NSStringSearch, FindsTheFirstOrBackwardsTheLast) {
    const NSString text = u"xaabaab"_ns;
    EXPECT_EQ(text.rangeOfString(u"aab"_ns), (NSRange{1, 3}));
    EXPECT_EQ(text.rangeOfString(u"aab"_ns, kNSBackwardsSearch), (NSRange{4, 3}));
    EXPECT_EQ(u"aaa"_ns.rangeOfString(u"aa"_ns, kNSBackwardsSearch), (NSRange{1, 2}));
}

TEST(NSStringSearch, ReportsTheLargestSignedWordWhereNothingIsFound) {
    EXPECT_EQ(u"abc"_ns.rangeOfString(u"d"_ns), kNotFound);
    EXPECT_EQ(u"abc"_ns.rangeOfString(u""_ns), kNotFound);
    EXPECT_EQ(NSString().rangeOfString(u"a"_ns), kNotFound);
    EXPECT_EQ(u"ab"_ns.rangeOfString(u"abc"_ns), kNotFound);
}

TEST(NSStringSearch, HasThePlatformsOptionNumbers) {
    EXPECT_EQ(kNSCaseInsensitiveSearch, 1U);
    EXPECT_EQ(kNSLiteralSearch, 2U);
    EXPECT_EQ(kNSBackwardsSearch, 4U);
    const NSString text = u"aXbxc"_ns;
    EXPECT_EQ(text.rangeOfString(u"x"_ns, 0).location, 3U);
    EXPECT_EQ(text.rangeOfString(u"x"_ns, 1).location, 1U);
    EXPECT_EQ(text.rangeOfString(u"X"_ns, 2).location, 1U);
    EXPECT_EQ(text.rangeOfString(u"X"_ns, 5).location, 3U);
}

TEST(NSStringSearch, FoldsCaseBeyondASCIIAndBeyondThePlane) {
    EXPECT_EQ(u"caf\u00C9"_ns.rangeOfString(u"f\u00E9"_ns, 1), (NSRange{2, 2}));
    // Deseret: U+10400 (D801 DC00) is the capital of U+10428 (D801 DC28).
    EXPECT_EQ(u"-\U00010400-"_ns.rangeOfString(u"\U00010428"_ns, 1), (NSRange{1, 2}));
    EXPECT_EQ(u"-\U00010400-"_ns.rangeOfString(u"\U00010428"_ns, 0), kNotFound);
}

TEST(NSStringSearch, StaysWithinItsRange) {
    const NSString text = u"abcabc"_ns;
    EXPECT_EQ(text.rangeOfString(u"abc"_ns, 0, {1, 5}), (NSRange{3, 3}));
    EXPECT_EQ(text.rangeOfString(u"abc"_ns, 0, {1, 4}), kNotFound);
    EXPECT_EQ(text.rangeOfString(u"abc"_ns, 4, {0, 5}), (NSRange{0, 3}));
    EXPECT_EQ(text.rangeOfString(u"c"_ns, 0, {6, 0}), kNotFound);
}

TEST(NSStringPath, TheLastComponentIgnoresSeparatorsAtTheEnd) {
    EXPECT_EQ(u"/a/b.png"_ns.lastPathComponent(), u"b.png"_ns);
    EXPECT_EQ(u"b.png"_ns.lastPathComponent(), u"b.png"_ns);
    EXPECT_EQ(u"/a/b//"_ns.lastPathComponent(), u"b"_ns);
    EXPECT_EQ(u"/"_ns.lastPathComponent(), u"/"_ns);
    EXPECT_EQ(u"//"_ns.lastPathComponent(), u"/"_ns);
    EXPECT_EQ(u""_ns.lastPathComponent(), u""_ns);
}

}  // namespace
}  // namespace skarnel
