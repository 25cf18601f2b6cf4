// The serialised form: an exact round trip, its bytes, and every way to damage them.
#include "textimaging/serialized_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace skarnel {
namespace {

StyledText richText() {
    TextStyle style;
    style.family = "Liberation Sans";
    style.size = 12.5;
    StyledText text(u"Summer \U0001F600\r", style);
    style.family = "D\xC3\xA9j\xC3\xA0";
    style.weight = 900;
    style.slant = TextSlant::Oblique;
    style.underline = TextUnderline::Single;
    style.color = {1, 2, 3, 4};
    text.append(u"Sale\u2028\u5927\n", style);
    style.slant = TextSlant::Italic;
    text.append(std::u16string{u'\0', char16_t{0xD800}}, style);
    text.setAlignment(0, TextAlignment::Right);
    text.setAlignment(1, TextAlignment::Justified);
    return text;
}

TEST(SerializeText, GivesBackExactlyWhatItTook) {
    for (const StyledText& text : {StyledText(), StyledText(u"\r"), StyledText(u"a"), richText()}) {
        const std::optional<Bytes> data = serializeText(text);
        ASSERT_TRUE(data);
        EXPECT_TRUE(isSerializedText(*data));
        const Result<StyledText> back = deserializeText(*data);
        ASSERT_TRUE(back) << back.error().message;
        EXPECT_EQ(*back, text);
    }
}

TEST(SerializeText, WritesTheDocumentedBytes) {
    TextStyle style;
    style.family = "Ab";
    style.size = 48;  // 0x4048000000000000
    style.weight = 700;
    style.color = {9, 8, 7, 6};
    const Bytes expected{
        'S',  'k',  'T', 'e', 'x',  't', '\r', '\n', 1, 0, 0, 0,  // magic, version
        1,    0,    0,   0,   0x42, 0,                            // one unit
        1,    0,    0,   0,   1,    0,   0,    0,                 // one run, of one unit
        2,    0,    0,   0,   'A',  'b', 0,    0,    0, 0, 0, 0, 0x48, 0x40,  // family, size
        0xBC, 0x02, 0,   0,   9,    8,   7,    6,  // weight, slant, underline, colour
        1,    0,    0,   0,   2,                   // one alignment: centred
    };
    EXPECT_EQ(serializeText(StyledText(u"B", style, TextAlignment::Center)), expected);
}

TEST(SerializeText, AStyleThatCouldNotBeReadBackGivesNone) {
    for (const double size : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        TextStyle style;
        style.size = size;
        EXPECT_EQ(serializeText(StyledText(u"a", style)), std::nullopt) << size;
    }
    for (const int weight : {0, -5, 1001}) {
        TextStyle style;
        style.weight = weight;
        EXPECT_EQ(serializeText(StyledText(u"a", style)), std::nullopt) << weight;
    }
}

TEST(DeserializeText, EveryPrefixIsRefused) {
    const Bytes data = *serializeText(richText());
    for (std::size_t length = 0; length < data.size(); ++length)
        EXPECT_FALSE(deserializeText(ByteView(data).first(length))) << length;
}

TEST(DeserializeText, TrailingBytesAreRefused) {
    Bytes data = *serializeText(richText());
    data.push_back(0);
    EXPECT_FALSE(deserializeText(data));
}

TEST(DeserializeText, SaysWhatIsWrong) {
    Bytes data = *serializeText(richText());
    EXPECT_EQ(deserializeText({}).error().code, ErrorCode::UnknownFormat);
    EXPECT_EQ(deserializeText(ByteView(data).first(20)).error().code, ErrorCode::Damaged);
    data[8] = 2;
    EXPECT_EQ(deserializeText(data).error().code, ErrorCode::Unsupported);
    data[0] = 's';
    EXPECT_EQ(deserializeText(data).error().code, ErrorCode::UnknownFormat);
}

// Offsets in the bytes of WritesTheDocumentedBytes.
TEST(DeserializeText, EveryFieldIsChecked) {
    const Bytes good = *serializeText(StyledText(u"BC", {}, TextAlignment::Center));
    ASSERT_TRUE(deserializeText(good));
    constexpr std::size_t kUnits = 12;
    constexpr std::size_t kRuns = kUnits + 4 + 4;
    constexpr std::size_t kRunLength = kRuns + 4;
    constexpr std::size_t kFamily = kRunLength + 4;
    constexpr std::size_t kSize = kFamily + 4 + 5;  // "Times"
    constexpr std::size_t kWeight = kSize + 8;
    constexpr std::size_t kAlignments = kWeight + 2 + 2 + 4;
    const struct {
        const char* name;
        std::size_t at;
        std::uint8_t value;
    } rows[] = {
        {"more units than bytes", kUnits + 3, 0x7F},
        {"fewer units", kUnits, 1},
        {"no run", kRuns, 0},
        {"four thousand million runs", kRuns + 3, 0xFF},
        {"an empty run", kRunLength, 0},
        {"a run that is too short", kRunLength, 1},
        {"a run that is too long", kRunLength, 3},
        {"a family longer than the data", kFamily + 3, 0xFF},
        {"a size that is negative", kSize + 7, 0xC0},
        {"a size that is infinite or no number", kSize + 7, 0x7F},
        {"a weight of 0", kWeight, 0},
        {"a weight above 1000", kWeight + 1, 0xFF},
        {"an unknown slant", kWeight + 2, 3},
        {"an unknown underline", kWeight + 3, 2},
        {"no alignment", kAlignments, 0},
        {"too many alignments", kAlignments, 2},
        {"an unknown alignment", kAlignments + 4, 5},
    };
    for (const auto& row : rows) {
        Bytes bad = good;
        bad.at(row.at) = row.value;
        if (row.at == kWeight) bad.at(kWeight + 1) = 0;
        if (row.value == 0x7F && row.at == kSize + 7) bad.at(kSize + 6) = 0xF0;
        const Result<StyledText> result = deserializeText(bad);
        ASSERT_FALSE(result) << row.name;
        EXPECT_EQ(result.error().code, ErrorCode::Damaged) << row.name;
    }
}

TEST(DeserializeText, NeighbouringRunsOfOneStyleAreNotTheFormThatWasWritten) {
    TextStyle bold;
    bold.weight = 700;
    StyledText text(u"a");
    text.append(u"b", bold);
    Bytes data = *serializeText(text);
    // The second run's weight is made 400 (0x0190) like the first's.
    for (std::size_t at = 0; at + 1 < data.size(); ++at)
        if (data[at] == 0xBC && data[at + 1] == 0x02) data[at] = 0x90, data[at + 1] = 0x01;
    EXPECT_FALSE(deserializeText(data));
}

TEST(DeserializeText, DamagedBytesAreRefusedOrGiveAWellFormedText) {
    const Bytes good = *serializeText(richText());
    std::mt19937 random(20240611);
    for (int round = 0; round < 20000; ++round) {
        Bytes data = good;
        for (int changes = 1 + static_cast<int>(random() % 3); changes > 0; --changes)
            data[random() % data.size()] = static_cast<std::uint8_t>(random());
        const Result<StyledText> result = deserializeText(data);
        if (!result) continue;
        EXPECT_EQ(serializeText(*result), data) << "round " << round;
    }
}

}  // namespace
}  // namespace skarnel
