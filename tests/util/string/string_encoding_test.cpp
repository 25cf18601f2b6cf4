// Bytes of Mac OS Roman are those of the Unicode Consortium's table ROMAN.TXT.
#include "util/string/string_encoding.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(StringEncoding, UnicodeStartsWithItsMark) {
    EXPECT_EQ(dataUsingEncoding(u"A\u20AC"_ns, NSStringEncoding::Unicode),
              (Bytes{0xFF, 0xFE, 0x41, 0x00, 0xAC, 0x20}));
    EXPECT_EQ(dataUsingEncoding(NSString(), NSStringEncoding::Unicode), (Bytes{0xFF, 0xFE}));
}

TEST(StringEncoding, UnicodeTakesALoneSurrogate) {
    const NSString lone(std::u16string{0xD83D});
    EXPECT_EQ(dataUsingEncoding(lone, NSStringEncoding::Unicode), (Bytes{0xFF, 0xFE, 0x3D, 0xD8}));
    EXPECT_EQ(dataUsingEncoding(lone, NSStringEncoding::UTF8), std::nullopt);
}

TEST(StringEncoding, MacOSRomanHasOneByteACharacter) {
    EXPECT_EQ(dataUsingEncoding(u"A\u00E9\u20AC"_ns, NSStringEncoding::MacOSRoman),
              (Bytes{0x41, 0x8E, 0xDB}));
    EXPECT_EQ(dataUsingEncoding(u"\u00C4\u2122\u03A9"_ns, NSStringEncoding::MacOSRoman),
              (Bytes{0x80, 0xAA, 0xBD}));
}

TEST(StringEncoding, MacOSRomanReplacesNothing) {
    for (const NSString& text : {u"\u4E2D"_ns, u"a\u0416"_ns, u"\U0001F600"_ns, u"\u0301"_ns,
                                 // A full-width A looks like an A and is none.
                                 u"\uFF21"_ns, NSString(std::u16string{0xD83D})})
        EXPECT_EQ(dataUsingEncoding(text, NSStringEncoding::MacOSRoman), std::nullopt) << text;
}

// Characters that draw nothing count as characters: none is passed over.
TEST(StringEncoding, MacOSRomanLeavesNothingOut) {
    for (const NSString& text : {u"\u00AD"_ns, u"a\u200Bb"_ns, u"\uFEFF"_ns, u"a\uFE0F"_ns})
        EXPECT_EQ(dataUsingEncoding(text, NSStringEncoding::MacOSRoman), std::nullopt) << text;
}

TEST(StringEncoding, EveryByteOfMacOSRomanComesBack) {
    Bytes all;
    for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<std::uint8_t>(byte));
    // Without a mark at the start: 0xFF and 0xFE stand at the end here.
    const NSString text = stringWithDetectedEncoding(all);
    EXPECT_EQ(text.length(), 256U);
    EXPECT_EQ(dataUsingEncoding(text, NSStringEncoding::MacOSRoman), all);
    EXPECT_EQ(text.characterAtIndex(0x8E), 0x00E9);
    EXPECT_EQ(text.characterAtIndex(0xD5), 0x2019);
}

TEST(StringEncoding, TheMarkNamesTheEncoding) {
    EXPECT_EQ(stringWithDetectedEncoding(Bytes{0xFF, 0xFE, 0xAC, 0x20}), u"\u20AC"_ns);
    EXPECT_EQ(stringWithDetectedEncoding(Bytes{0xFE, 0xFF, 0x20, 0xAC}), u"\u20AC"_ns);
    EXPECT_EQ(stringWithDetectedEncoding(Bytes{0xEF, 0xBB, 0xBF, 0xE2, 0x82, 0xAC}), u"\u20AC"_ns);
    EXPECT_EQ(stringWithDetectedEncoding(Bytes{0x8E}), u"\u00E9"_ns);
    EXPECT_EQ(stringWithDetectedEncoding(Bytes{}), NSString());
    EXPECT_FALSE(encodingOfMark(Bytes{0xEF, 0xBB}));
    EXPECT_TRUE(encodingOfMark(Bytes{0xFE, 0xFF})->bigEndian);
}

TEST(StringEncoding, HalfAUnitAtTheEndIsReplaced) {
    EXPECT_EQ(stringWithDetectedEncoding(Bytes{0xFF, 0xFE, 0x41, 0x00, 0x42}), u"A\uFFFD"_ns);
}

TEST(StringEncoding, HasThePlatformsNumbers) {
    EXPECT_EQ(static_cast<int>(NSStringEncoding::Unicode), 10);
    EXPECT_EQ(static_cast<int>(NSStringEncoding::MacOSRoman), 30);
}

}  // namespace
}  // namespace skarnel
