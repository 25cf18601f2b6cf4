#include "util/string/nsstring_extensions.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "util/log/system_log.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;
using namespace NSStringExtensions;

struct DecodeRow {
    const char16_t* text;
    const char16_t* decoded;
};

class DecodeEntities : public ::testing::TestWithParam<DecodeRow> {};

TEST_P(DecodeEntities, GivesTheTable) {
    ScopedLogCapture log;
    EXPECT_EQ(stringByDecodingHTMLEntities(NSString(std::u16string_view(GetParam().text))),
              NSString(std::u16string_view(GetParam().decoded)));
    EXPECT_EQ(log.text(), "");
}

INSTANTIATE_TEST_SUITE_P(
    Table, DecodeEntities,
    ::testing::Values(
        DecodeRow{u"a &amp; b", u"a & b"}, DecodeRow{u"&amp;&apos;&quot;&lt;&gt;", u"&'\"<>"},
        DecodeRow{u"&LT;b&GT;", u"<b>"}, DecodeRow{u"&AmP;&QuOt;&aPoS;", u"&\"'"},
        DecodeRow{u"&#65;&#x42;&#X43", u"ABC"}, DecodeRow{u"&#65&#66", u"AB"},
        // Nothing is decoded twice.
        DecodeRow{u"&amp;lt;", u"&lt;"}, DecodeRow{u"&amp;#65;", u"&#65;"},
        // Unknown entities, lone signs, missing semicolons of named ones.
        DecodeRow{u"&copy;", u"&copy;"}, DecodeRow{u"&", u"&"}, DecodeRow{u"end &", u"end &"},
        DecodeRow{u"&&amp;", u"&&"}, DecodeRow{u"&amp", u"&amp"}, DecodeRow{u"& amp;", u"& amp;"},
        // White space is kept everywhere.
        DecodeRow{u"  &lt;  \n", u"  <  \n"}, DecodeRow{u"&#65; ;", u"A ;"},
        // The optional prefix of the hexadecimal scan.
        DecodeRow{u"&#x0x41;", u"A"}, DecodeRow{u"&#x0X41;", u"A"},
        // Signs, wrapping to 16 bits: -1 is FFFF, -65471 = 65 - 65536 is 0041.
        DecodeRow{u"&#+65;", u"A"}, DecodeRow{u"&#-1;", u"\uFFFF"}, DecodeRow{u"&#-65471;", u"A"},
        // 1F600 keeps F600; 10041 keeps 0041; 65601 = 65536 + 65.
        DecodeRow{u"&#128512;", u"\uF600"}, DecodeRow{u"&#x10041;", u"A"},
        DecodeRow{u"&#65601;", u"A"},
        // Beyond 32 bits: the ends 7FFFFFFF, 80000000 and FFFFFFFF of the scanner's range.
        DecodeRow{u"&#99999999999;", u"\uFFFF"}, DecodeRow{u"&#x1234567890;", u"\uFFFF"},
        // Only one semicolon is taken.
        DecodeRow{u"&#65;;", u"A;"}));

TEST(DecodeEntitiesLimits, TheNumberZeroIsAUnitLikeAnyOther) {
    EXPECT_EQ(stringByDecodingHTMLEntities(u"a&#0;b"_ns),
              NSString(std::u16string_view(u"a\0b", 3)));
    // -99999999999 counts as -2147483648, whose low 16 bits are 0.
    EXPECT_EQ(stringByDecodingHTMLEntities(u"&#-99999999999;"_ns),
              NSString(std::u16string_view(u"\0", 1)));
    // The "0" of a prefix without digits is the number; the "x" is text.
    EXPECT_EQ(stringByDecodingHTMLEntities(u"&#x0xz"_ns),
              NSString(std::u16string_view(u"\0xz", 3)));
}

TEST(DecodeEntitiesIdentity, TextWithoutAnAmpersandIsTheVeryObject) {
    const NSString text = u"plain; text"_ns;
    EXPECT_TRUE(stringByDecodingHTMLEntities(text).isSame(text));
    const NSString empty;
    EXPECT_TRUE(stringByDecodingHTMLEntities(empty).isSame(empty));
    const NSString same = u"&copy;"_ns;
    EXPECT_FALSE(stringByDecodingHTMLEntities(same).isSame(same)) << "equal, but made anew";
}

struct MalformedRow {
    const char16_t* text;
    const char16_t* copied;
    const char* log;
};

class MalformedEntities : public ::testing::TestWithParam<MalformedRow> {};

TEST_P(MalformedEntities, AreCopiedAndLoggedOnceEach) {
    ScopedLogCapture log;
    EXPECT_EQ(stringByDecodingHTMLEntities(NSString(std::u16string_view(GetParam().text))),
              NSString(std::u16string_view(GetParam().copied)));
    EXPECT_EQ(log.text(), GetParam().log);
}

#define EXPECTED "Expected numeric character entity but got &#"
INSTANTIATE_TEST_SUITE_P(
    Table, MalformedEntities,
    ::testing::Values(MalformedRow{u"&#zz;", u"&#zz;", EXPECTED "zz;\n"},
                      MalformedRow{u"&#xzz;", u"&#xzz;", EXPECTED "xzz;\n"},
                      // The marker is remembered in lower case.
                      MalformedRow{u"&#Xzz;", u"&#xzz;", EXPECTED "xzz;\n"},
                      MalformedRow{u"&#", u"&#", EXPECTED ";\n"},
                      MalformedRow{u"&#;", u"&#;", EXPECTED ";\n"},
                      MalformedRow{u"&#x", u"&#x", EXPECTED "x;\n"},
                      MalformedRow{u"&#-;", u"&#-;", EXPECTED "-;\n"},
                      // Each of the five boundary characters ends the text; an "&" does not.
                      MalformedRow{u"&#a b", u"&#a b", EXPECTED "a;\n"},
                      MalformedRow{u"&#a\tb", u"&#a\tb", EXPECTED "a;\n"},
                      MalformedRow{u"&#a\nb", u"&#a\nb", EXPECTED "a;\n"},
                      MalformedRow{u"&#a\rb", u"&#a\rb", EXPECTED "a;\n"},
                      MalformedRow{u"&#a&lt;b", u"&#a&lt;b", EXPECTED "a&lt;\n"},
                      MalformedRow{u"&#q;&#65;&#r;", u"&#q;A&#r;",
                                   EXPECTED "q;\n" EXPECTED "r;\n"}));
#undef EXPECTED

TEST(FlattenHTML, GivesThePlainText) {
    EXPECT_EQ(flattenHTML(u"<p>a <b>b</b> &eacute; &lt;</p>"_ns), u"a b \u00E9 <\n"_ns);
    EXPECT_EQ(flattenHTML(u"one<br>two"_ns), u"one\ntwo"_ns);
    EXPECT_EQ(flattenHTML(u"\u4E2D\U0001F600 text"_ns), u"\u4E2D\U0001F600 text"_ns);
}

TEST(FlattenHTML, TheEmptyTextIsTheVeryObject) {
    const NSString empty;
    EXPECT_TRUE(flattenHTML(empty)->isSame(empty));
}

TEST(FlattenHTML, UpToThreeUnitsGoThroughMacOSRoman) {
    EXPECT_EQ(flattenHTML(u"abc"_ns), u"abc"_ns);
    EXPECT_EQ(flattenHTML(u"\u00E9\u20AC\u2122"_ns), u"\u00E9\u20AC\u2122"_ns);
    // It was read as HTML and not handed back: runs of white space are one space.
    EXPECT_EQ(flattenHTML(u" a "_ns), u"a"_ns);
    for (const NSString& text : {u"\u4E2D"_ns, u"ab\u0416"_ns, u"\U0001F600"_ns})
        EXPECT_TRUE(flattenHTML(text)->isSame(text)) << text;
}

TEST(FlattenHTML, FourUnitsGoThroughUnicode) {
    const NSString text = u"abc\u4E2D"_ns;
    EXPECT_EQ(flattenHTML(text), text);
    EXPECT_FALSE(flattenHTML(text)->isSame(text));
}

TEST(FlattenHTML, BytesOfMacOSRomanThatLookLikeAMarkAreTakenForOne) {
    // FF FE in Mac OS Roman is the caron and the ogonek: the importer believes the bytes.
    EXPECT_EQ(flattenHTML(u"\u02C7\u02DB"_ns), u""_ns);
}

TEST(FlattenHTML, IsNoneWhereTheImporterFails) {
    std::u16string deep;
    for (int count = 0; count < 10'001; ++count) deep += u"<div>";
    EXPECT_EQ(flattenHTML(NSString(deep)), std::nullopt);
}

TEST(ExtractBetween, TakesTheFirstStartAndTheNextEnd) {
    EXPECT_EQ(extractBetweenPattern(u"<B>bold</b>"_ns, u"<b>"_ns, u"</b>"_ns), u"bold"_ns);
    EXPECT_EQ(extractBetweenPattern(u"a[b[c]d]"_ns, u"["_ns, u"]"_ns), u"b[c"_ns);
    EXPECT_EQ(extractBetweenPattern(u"]x[y]"_ns, u"["_ns, u"]"_ns), u"y"_ns)
        << "an end before the start does not count";
    EXPECT_EQ(extractBetweenPattern(u"|a|b|"_ns, u"|"_ns, u"|"_ns), u"a"_ns);
    EXPECT_EQ(extractBetweenPattern(u"[]"_ns, u"["_ns, u"]"_ns), u""_ns);
}

TEST(ExtractBetween, IsNoneWithoutAMarker) {
    EXPECT_EQ(extractBetweenPattern(u"<b>bold"_ns, u"<b>"_ns, u"</b>"_ns), std::nullopt);
    EXPECT_EQ(extractBetweenPattern(u"bold</b>"_ns, u"<b>"_ns, u"</b>"_ns), std::nullopt);
    EXPECT_EQ(extractBetweenPattern(u"[a]"_ns, u""_ns, u"]"_ns), std::nullopt);
    EXPECT_EQ(extractBetweenPattern(u"[a]"_ns, u"["_ns, u""_ns), std::nullopt);
    EXPECT_EQ(extractBetweenPattern(u"a["_ns, u"["_ns, u"]"_ns), std::nullopt);
}

TEST(ReverseExtract, TakesTheNearestStartBeforeTheFirstEnd) {
    EXPECT_EQ(reverseExtractBetweenPattern(u"x[a[b]c]"_ns, u"["_ns, u"]"_ns), u"b"_ns);
    EXPECT_EQ(reverseExtractBetweenPattern(u"<B>one<b>two</B>"_ns, u"<b>"_ns, u"</b>"_ns),
              u"two"_ns);
    EXPECT_EQ(reverseExtractBetweenPattern(u"[]"_ns, u"["_ns, u"]"_ns), u""_ns);
}

TEST(ReverseExtract, IsNoneWithoutAMarker) {
    EXPECT_EQ(reverseExtractBetweenPattern(u"[a"_ns, u"["_ns, u"]"_ns), std::nullopt);
    EXPECT_EQ(reverseExtractBetweenPattern(u"]a["_ns, u"["_ns, u"]"_ns), std::nullopt)
        << "a start behind the end does not count";
    EXPECT_EQ(reverseExtractBetweenPattern(u"[a]"_ns, u""_ns, u"]"_ns), std::nullopt);
    // The markers may not overlap: "ab" ends where "bc" has begun.
    EXPECT_EQ(reverseExtractBetweenPattern(u"abc"_ns, u"ab"_ns, u"bc"_ns), std::nullopt);
}

TEST(CleanForFilename, ReplacesSlashesAndColonsOnly) {
    EXPECT_EQ(cleanForFilename(u"a/b:c"_ns), u"a-b-c"_ns);
    EXPECT_EQ(cleanForFilename(u"//::"_ns), u"----"_ns);
    EXPECT_EQ(cleanForFilename(u"a\\b*?\"<>|\u2215\uFF1A"_ns), u"a\\b*?\"<>|\u2215\uFF1A"_ns);
    const NSString text = u"plain"_ns;
    EXPECT_EQ(cleanForFilename(text), text);
    EXPECT_FALSE(cleanForFilename(text).isSame(text)) << "a copy, always";
}

TEST(RunScript, GivesTheTextOfANumberOrText) {
    EXPECT_EQ(runScript(u"40 + 2"_ns), u"42"_ns);
    EXPECT_EQ(runScript(u"'a' + 1"_ns), u"a1"_ns);
}

TEST(RunScript, AListGivesNoneWhateverIsInIt) {
    EXPECT_EQ(runScript(u"['a', 'b']"_ns), std::nullopt);
    EXPECT_EQ(runScript(u"[]"_ns), std::nullopt);
}

TEST(RunScript, AnErrorOrNothingGivesNone) {
    EXPECT_EQ(runScript(u"throw 1"_ns), std::nullopt);
    EXPECT_EQ(runScript(u"(("_ns), std::nullopt);
    EXPECT_EQ(runScript(u"undefined"_ns), std::nullopt);
    EXPECT_EQ(runScript(u""_ns), std::nullopt);
}

/// A runner that makes no script, or one that gives a fixed result, and counts.
class FakeRunner final : public ScriptRunner {
  public:
    bool makes = true;
    std::optional<ScriptDescriptor> result;
    int executed = 0;
    std::optional<NSString> source;

    std::unique_ptr<Script> scriptWithSource(const NSString& text) override {
        source = text;
        if (!makes) return nullptr;
        return std::make_unique<FakeScript>(*this);
    }

  private:
    struct FakeScript final : Script {
        explicit FakeScript(FakeRunner& runner) : runner_(runner) {}
        std::optional<ScriptDescriptor> execute() override {
            ++runner_.executed;
            return runner_.result;
        }
        FakeRunner& runner_;
    };
};

TEST(RunScript, HandsItsTextToTheRunnerAndRunsOnce) {
    FakeRunner runner;
    runner.result = ScriptDescriptor(kDescriptorText, u"done"_ns);
    const NSString text = u"source"_ns;
    EXPECT_EQ(runScript(text, runner), u"done"_ns);
    EXPECT_TRUE(runner.source->isSame(text));
    EXPECT_EQ(runner.executed, 1);
    runner.makes = false;
    EXPECT_EQ(runScript(text, runner), std::nullopt);
    EXPECT_EQ(runner.executed, 1);
}

TEST(RunScript, AsksAListForItemZeroWhichThereIsNot) {
    FakeRunner runner;
    runner.result = ScriptDescriptor::list({ScriptDescriptor(kDescriptorText, u"first"_ns)});
    EXPECT_EQ(runScript(u""_ns, runner), std::nullopt);
    runner.result = ScriptDescriptor(kDescriptorRecord);
    EXPECT_EQ(runScript(u""_ns, runner), std::nullopt);
}

TEST(FSRefStrings, AnExistingPathGoesToAReferenceAndBack) {
    std::string pattern = (fs::temp_directory_path() / "skarnel-\xC3\xA9-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    const std::string path = fs::canonical(pattern).string();
    FSRef reference;
    EXPECT_TRUE(getFSRef(NSString::stringWithUTF8(path).value(), &reference));
    EXPECT_EQ(stringWithFSRef(&reference)->UTF8String(), path);
    fs::remove(path);
    EXPECT_FALSE(getFSRef(NSString::stringWithUTF8(path).value(), &reference));
    EXPECT_EQ(stringWithFSRef(&reference), std::nullopt);
}

TEST(FSRefStrings, ANullReferenceHasNoPath) {
    EXPECT_EQ(stringWithFSRef(nullptr), std::nullopt);
}

TEST(FSRefStrings, ATextWithoutAUTF8FormNamesNothing) {
    FSRef reference;
    EXPECT_FALSE(getFSRef(NSString(std::u16string{u'/', 0xD83D}), &reference));
    EXPECT_FALSE(getFSRef(NSString(), &reference));
}

TEST(FSRefStrings, APathThatIsNoUTF8HasNoText) {
    std::string pattern = (fs::temp_directory_path() / "skarnel-\xFF-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) GTEST_SKIP() << "the file system takes UTF-8 only";
    FSRef reference;
    EXPECT_EQ(FSPathMakeRef(pattern.c_str(), &reference, nullptr), 0);
    EXPECT_EQ(stringWithFSRef(&reference), std::nullopt);
    fs::remove(pattern);
}

}  // namespace
}  // namespace skarnel
