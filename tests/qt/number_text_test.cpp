#include "qt/number_text.h"

#include <gtest/gtest.h>

#include <QLocale>
#include <QString>
#include <cmath>
#include <limits>
#include <random>

namespace skarnel {
namespace {

const QLocale kGerman(QLocale::German, QLocale::Germany);

struct WriteRow {
    float value;
    const char* text;
};

TEST(NumberText, WritesTheShortestDecimalThatReadsBack) {
    const WriteRow rows[] = {{0.0F, "0"},       {-0.0F, "0"},      {100.0F, "100"},
                             {0.5F, "0.5"},     {0.1F, "0.1"},     {33.37F, "33.37"},
                             {-7.25F, "-7.25"}, {1e7F, "10000000"}};
    for (const WriteRow& row : rows) EXPECT_EQ(numberText(row.value).toStdString(), row.text);
}

TEST(NumberText, EveryFloatComesBackBitForBit) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> values(-1000.0F, 1000.0F);
    for (int i = 0; i < 2000; ++i) {
        const float value = values(random);
        EXPECT_EQ(numberFromText(numberText(value), QLocale::c()), value);
    }
}

struct ReadRow {
    const char* text;
    std::optional<float> value;
};

TEST(NumberText, ReadsTheFullStopFirstAndThenTheLocalesSign) {
    const ReadRow rows[] = {
        {"1.5", 1.5F},
        {"1,5", 1.5F},
        {" 12 ", 12.0F},
        {"-3", -3.0F},
        {"+4", 4.0F},
        {"1e2", 100.0F},
        {".5", 0.5F},
        // In German "1.500" would be fifteen hundred with a group separator: the full stop wins.
        {"1.500", 1.5F},
        {"1.500,5", std::nullopt},
    };
    for (const ReadRow& row : rows)
        EXPECT_EQ(numberFromText(QString::fromLatin1(row.text), kGerman), row.value) << row.text;
}

TEST(NumberText, RefusesGroupSeparatorsAndNonsense) {
    for (const char* text : {"1,500", "1 500", "", " ", "abc", "12x", "--1", "nan", "inf", "-inf",
                             "1e99", "0x10", "1.2.3"})
        EXPECT_EQ(numberFromText(QString::fromLatin1(text), QLocale::c()), std::nullopt) << text;
}

}  // namespace
}  // namespace skarnel
