// The text system hands each request to the right form.
#include "textimaging/text_system.h"

#include <gtest/gtest.h>

#include "textimaging/html_writer.h"
#include "textimaging/serialized_text.h"

namespace skarnel {
namespace {

using enum DocumentType;

TEST(TextSystem, SerialisesTheRangeAndReadsItBack) {
    TextSystem system({});
    const StyledText text(u"Summer Sale");
    const std::optional<Bytes> data =
        system.dataFromRange(text, {0, 6}, {NSRTFDTextDocumentType, kEncodingUTF8});
    ASSERT_TRUE(data);
    const Result<StyledText> back = system.initWithData(*data);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, StyledText(u"Summer"));
    EXPECT_FALSE(system.initWithData(Bytes{'x'}));
}

TEST(TextSystem, WritesHtmlInTheAskedEncodingOrNone) {
    TextSystem system({});
    const StyledText text(u"\u00E9");
    for (const std::int32_t code : {kEncodingUTF8, kEncodingISOLatin1, kEncodingMacRoman}) {
        const std::optional<Bytes> data =
            system.dataFromRange(text, {0, 1}, {NSHTMLTextDocumentType, code});
        ASSERT_TRUE(data) << code;
        EXPECT_EQ(data, htmlData(text, code));
        const std::optional<std::u16string> document = system.stringWithData(*data, code);
        ASSERT_TRUE(document) << code;
        EXPECT_NE(document->find(u"\u00E9"), std::u16string::npos) << code;
    }
    EXPECT_EQ(system.dataFromRange(text, {0, 1}, {NSHTMLTextDocumentType, kEncodingASCII}),
              std::nullopt);
    EXPECT_EQ(system.dataFromRange(text, {0, 1}, {NSHTMLTextDocumentType, 77}), std::nullopt);
}

TEST(TextSystem, TheSizeIsTheLayouts) {
    StyledText asked;
    TextSystem system({[&](const StyledText& text) {
                           asked = text;
                           return CGSize{150, 30};
                       },
                       {}});
    EXPECT_EQ(system.size(StyledText(u"x")), (CGSize{150, 30}));
    EXPECT_EQ(asked, StyledText(u"x"));
}

TEST(TextSystem, ThePageHasTheParagraphHeightsOfTheLayout) {
    TextSystem system({{}, [](const StyledText&) { return std::vector<double>{7, 9}; }});
    const StyledText text(u"a\nb");
    EXPECT_EQ(system.dataFromRange(text, {0, 3}, {NSHTMLTextDocumentType, kEncodingUTF8}),
              htmlData(text, kEncodingUTF8, std::vector<double>{7, 9}));
}

}  // namespace
}  // namespace skarnel
