// What a text of a stranger may still say once it has been cleaned.
#include "imaging/io/plain_text.h"

#include <gtest/gtest.h>

#include <string_view>

namespace skarnel::io {
namespace {

std::string plain(std::string_view text, std::size_t maxBytes = 100) {
    return plainText({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, maxBytes);
}

TEST(PlainText, KeepsWholeCharactersOfEveryLength) {
    const std::string_view text =
        "a \x7E \xC2\xA0\xDF\xBF \xE0\xA0\x80\xEF\xBF\xBF "
        "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    EXPECT_EQ(plain(text), text);
}

TEST(PlainText, PutsAQuestionMarkForControls) {
    EXPECT_EQ(plain(std::string_view("\0\x1F\x7F", 3)), "???");
    EXPECT_EQ(plain("\xC2\x80|\xC2\x9F"), "?|?");
    for (const char* mark : {"\xD8\x9C", "\xE2\x80\x8E", "\xE2\x80\x8F", "\xE2\x80\xA8",
                             "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x81\xA9"}) {
        EXPECT_EQ(plain(mark), "?");
    }
    EXPECT_EQ(plain("\xE2\x80\xAF"), "\xE2\x80\xAF") << "a narrow space";
}

TEST(PlainText, PutsAQuestionMarkForEachByteOfNoCharacter) {
    EXPECT_EQ(plain("\x80"), "?") << "nothing that goes on";
    EXPECT_EQ(plain("\xC3"), "?") << "cut off";
    EXPECT_EQ(plain("\xC0\x80"), "??") << "not the shortest form";
    EXPECT_EQ(plain("\xE0\x9F\xBF"), "???") << "nor this";
    EXPECT_EQ(plain("\xED\xA0\x80"), "???") << "half of a pair";
    EXPECT_EQ(plain("\xF4\x90\x80\x80"), "????") << "beyond the last character";
    EXPECT_EQ(plain("\xF8\x88\x80\x80\x80"), "?????");
    EXPECT_EQ(plain("\xE2\x82x"), "??x");
}

TEST(PlainText, CutsBetweenCharacters) {
    EXPECT_EQ(plain("ab\xC3\xB6", 3), "ab");
    EXPECT_EQ(plain("ab\xC3\xB6", 4), "ab\xC3\xB6");
    EXPECT_EQ(plain("ab\xC2\x80", 3), "ab?") << "what stands for it is shorter";
    EXPECT_EQ(plain("ab", 0), "");
}

}  // namespace
}  // namespace skarnel::io
