#include "recipe/base64.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

Bytes bytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

struct Row {
    std::string_view bytes;
    std::string_view text;
};
// RFC 4648, section 10.
constexpr Row kVectors[] = {{"", ""},
                            {"f", "Zg=="},
                            {"fo", "Zm8="},
                            {"foo", "Zm9v"},
                            {"foob", "Zm9vYg=="},
                            {"fooba", "Zm9vYmE="},
                            {"foobar", "Zm9vYmFy"}};

TEST(Base64, GivesTheStandardsExamples) {
    for (const Row& row : kVectors) EXPECT_EQ(encodeBase64(bytesOf(row.bytes)), row.text);
}

TEST(Base64, ReadsTheStandardsExamples) {
    for (const Row& row : kVectors) EXPECT_EQ(decodeBase64(row.text), bytesOf(row.bytes));
}

TEST(Base64, KeepsEveryByte) {
    Bytes all;
    for (int i = 0; i < 256; ++i) all.push_back(static_cast<std::uint8_t>(i));
    EXPECT_EQ(decodeBase64(encodeBase64(all)), all);
}

TEST(Base64, RefusesWhatIsNoSingleTextOfItsBytes) {
    for (const std::string_view text : {"Z", "Zg", "Zg=", "Zm9v\n", "Zm 9", "Zg==Zg==", "=Zg=",
                                        "Z===", "====", "Zh==", "Zm9=", "Zm9_"}) {
        EXPECT_EQ(decodeBase64(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace skarnel
