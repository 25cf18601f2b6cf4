#include "storage/settings_json.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace skarnel {
namespace {

ParsedSettings parse(const std::string& text) {
    return parseSettings({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

float numberOf(const ParsedSettings& parsed, const std::string& key) {
    return std::get<float>(parsed.values.at(key));
}

TEST(SettingsJson, IsSortedAndShortAndEndsWithALineEnd) {
    const SettingValues values = {
        {"offset", 0.1F}, {"alpha", 200.0F}, {"off", false}, {"on", true}};
    EXPECT_EQ(serializeSettings(values),
              "{\n    \"alpha\": 200.0,\n    \"off\": false,\n    \"offset\": 0.1,\n"
              "    \"on\": true\n}\n");
}

TEST(SettingsJson, ReadsBackEveryKindOfFloatBitForBit) {
    std::mt19937 random(20);
    std::vector<std::uint32_t> patterns = {
        0x00000000, 0x80000000,                                      // both zeros
        0x00000001, 0x007fffff, 0x80000001,                          // the denormals' ends
        0x00800000, 0x7f7fffff, 0xff7fffff,                          // the normals' ends
        0x7f800000, 0xff800000,                                      // both infinities
        0x7fc00000, 0xffc00000, 0x7f800001, 0x7fffffff, 0xffffffff,  // not numbers
        0x3dcccccd, 0x3f800001, 0x4b7fffff, 0x15ae43fd};
    for (int i = 0; i < 20'000; ++i) patterns.push_back(random());
    SettingValues values;
    for (const std::uint32_t bits : patterns) {
        values[std::to_string(bits)] = std::bit_cast<float>(bits);
    }
    const ParsedSettings parsed = parse(serializeSettings(values));
    EXPECT_TRUE(parsed.whole);
    for (const std::uint32_t bits : patterns) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(numberOf(parsed, std::to_string(bits))), bits);
    }
}

TEST(SettingsJson, WritesMoreDigitsWhereTheShortestWouldReadBackAsAnotherFloat) {
    // 7.038531e-26 is nearest to this float, but by way of the nearest double to the next one.
    EXPECT_EQ(serializeSettings({{"a", std::bit_cast<float>(0x15ae43fdU)}}),
              "{\n    \"a\": 7.038530691851209e-26\n}\n");
}

TEST(SettingsJson, WritesWhatIsNotFiniteAsText) {
    const SettingValues values = {{"a", std::numeric_limits<float>::infinity()},
                                  {"b", -std::numeric_limits<float>::infinity()},
                                  {"c", std::bit_cast<float>(0x7fc00000U)},
                                  {"d", std::bit_cast<float>(0xffc00001U)}};
    EXPECT_EQ(serializeSettings(values),
              "{\n    \"a\": \"inf\",\n    \"b\": \"-inf\",\n    \"c\": \"nan\",\n"
              "    \"d\": \"nan:ffc00001\"\n}\n");
}

TEST(SettingsJson, TakesWholeNumbersAsPeopleWriteThem) {
    const ParsedSettings parsed = parse(R"({"offset": 7, "start": -3, "alpha": 1e2})");
    EXPECT_TRUE(parsed.whole);
    EXPECT_EQ(numberOf(parsed, "offset"), 7.0F);
    EXPECT_EQ(numberOf(parsed, "start"), -3.0F);
    EXPECT_EQ(numberOf(parsed, "alpha"), 100.0F);
}

TEST(SettingsJson, NothingIsAnEmptyWholeFile) {
    EXPECT_TRUE(parse("").whole);
    EXPECT_TRUE(parse(" \r\n\t ").whole);
    EXPECT_TRUE(parse("{}").whole);
    EXPECT_TRUE(parse("").values.empty());
}

TEST(SettingsJson, WhatIsNoObjectHoldsNothing) {
    for (const char* text : {"[1, 2]", "7", "\"text\"", "null", "{", "{\"a\": 1", "{\"a\" 1}",
                             "{\"a\": nan}", "{\"a\": 1}}", "\xff\xfe{}", "{\"\xff\": 1}"}) {
        const ParsedSettings parsed = parse(text);
        EXPECT_FALSE(parsed.whole) << text;
        EXPECT_TRUE(parsed.values.empty()) << text;
    }
}

TEST(SettingsJson, KeysOfWrongTypesAreLeftOutAndTheOthersStay) {
    const ParsedSettings parsed = parse(
        R"({"a": "text", "b": null, "c": [1], "d": {"e": 1}, "f": 1e39, "g": 2.5, "h": false,)"
        R"( "i": "nan:", "j": "nan:3f800000", "k": "nan:xyz", "l": "nan:7fc000000",)"
        R"( "m": "nan:7fc00001x"})");
    EXPECT_FALSE(parsed.whole);
    ASSERT_EQ(parsed.values.size(), 2U);
    EXPECT_EQ(numberOf(parsed, "g"), 2.5F);
    EXPECT_FALSE(std::get<bool>(parsed.values.at("h")));
}

TEST(SettingsJson, NumbersBeyondDoubleDamageTheWholeFile) {
    EXPECT_FALSE(parse(R"({"a": 1e999, "b": 1})").whole);
}

TEST(SettingsJson, DeepNestingIsReadWithoutRecursion) {
    std::string deep = "{\"a\": ";
    deep.append(500'000, '[').append(500'000, ']').append("}");
    EXPECT_FALSE(parse(deep).whole);
}

TEST(SettingsJson, AKeyThatIsNoTextIsWrittenAsReplacementNotThrown) {
    EXPECT_EQ(serializeSettings({{"\xff", 1.0F}}), "{\n    \"\xEF\xBF\xBD\": 1.0\n}\n");
}

}  // namespace
}  // namespace skarnel
