// The export: what is asked of the text system, in which order, and what is left untouched.
#include "text_fixture.h"

namespace skarnel::testing_app {
namespace {

class TextExport : public TextTest {
  protected:
    CGSize size{400, 50};
};

TEST_F(TextExport, TheEstimateGoesThroughTheSerialisedForm) {
    services.readBack = StyledText(u"read back");
    services.naturalSize = {123.5, 45.25};
    controller.estimateTextSize(size);
    EXPECT_THAT(log.take(), ElementsAre("text.dataFromRange RTFD 0+2 encoding 4",
                                        "text.initWithData", "text.size \"read back\""));
    EXPECT_EQ(size, (CGSize{123.5, 45.25}));
}

TEST_F(TextExport, TheEstimateOfAnEmptyTextIsNotMade) {
    window.textView.storage = StyledText();
    controller.estimateTextSize(size);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(size, (CGSize{400, 50}));
}

TEST_F(TextExport, AnEstimateWithoutDataLeavesTheRecordAsItWas) {
    log.failOn("text.dataFromRange RTFD");
    controller.estimateTextSize(size);
    EXPECT_THAT(log.take(), ElementsAre("text.dataFromRange RTFD 0+2 encoding 4"));
    EXPECT_EQ(size, (CGSize{400, 50}));
}

TEST_F(TextExport, AnEstimateThatCannotBeReadBackLeavesTheRecordAsItWas) {
    log.failOn("text.initWithData");
    controller.estimateTextSize(size);
    EXPECT_THAT(log.take(),
                ElementsAre("text.dataFromRange RTFD 0+2 encoding 4", "text.initWithData"));
    EXPECT_EQ(size, (CGSize{400, 50}));
}

TEST_F(TextExport, TheMessageHasTheBackgroundColourInItsBodyTag) {
    controller.resultViewBackgroundColor = NSColor::colorWithDeviceRed(1, 0.2, 0, 0.5);
    const std::optional<std::u16string> html = controller.getHTMLMessage(4, size);
    EXPECT_THAT(log.take(), ElementsAreArray(exported(2, "\"Hi\"")));
    ASSERT_TRUE(html);
    EXPECT_NE(html->find(u"<body bgcolor=\"#FF3300\">"), std::u16string::npos);
    EXPECT_EQ(html->find(u"<body>"), std::u16string::npos);
    EXPECT_EQ(size, (CGSize{150, 30}));
}

TEST_F(TextExport, EveryBodyTagIsReplacedWithoutRegardToCase) {
    services.document = "<BODY><body class=x><Body>";
    EXPECT_EQ(controller.getHTMLMessage(4, size),
              u"<body bgcolor=\"#000000\"><body class=x><body bgcolor=\"#000000\">");
}

TEST_F(TextExport, ADocumentWithoutATagIsGivenBackAsItIs) {
    services.document = "<p>no tag</p>";
    EXPECT_EQ(controller.getHTMLMessage(4, size), u"<p>no tag</p>");
}

TEST_F(TextExport, AnEmptyTextGivesNoneWithoutAnEstimate) {
    window.textView.storage = StyledText();
    EXPECT_EQ(controller.getHTMLMessage(4, size), std::nullopt);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(size, (CGSize{400, 50}));
}

TEST_F(TextExport, AFailedEstimateDoesNotStopTheExport) {
    log.failOn("text.dataFromRange RTFD");
    EXPECT_TRUE(controller.getHTMLMessage(4, size));
    EXPECT_THAT(log.take(), ElementsAre("text.dataFromRange RTFD 0+2 encoding 4",
                                        "text.dataFromRange HTML 0+2 encoding 4",
                                        "text.stringWithData encoding 4"));
    EXPECT_EQ(size, (CGSize{400, 50}));
}

TEST_F(TextExport, WithoutHtmlDataThereIsNoMessage) {
    log.failOn("text.dataFromRange HTML");
    EXPECT_EQ(controller.getHTMLMessage(4, size), std::nullopt);
    EXPECT_EQ(log.take().back(), "text.dataFromRange HTML 0+2 encoding 4");
}

TEST_F(TextExport, DataThatCannotBeDecodedGiveNoMessage) {
    log.failOn("text.stringWithData");
    EXPECT_EQ(controller.getHTMLMessage(4, size), std::nullopt);
    EXPECT_EQ(log.take().back(), "text.stringWithData encoding 4");
}

TEST_F(TextExport, TheEncodingIsHandedOnToWriterAndReader) {
    window.textView.storage = StyledText(u"\u00E9");
    const std::optional<std::u16string> html = controller.getHTMLMessage(5, size);
    ASSERT_TRUE(html);
    EXPECT_NE(html->find(u"charset=\"iso-8859-1\""), std::u16string::npos);
    EXPECT_NE(html->find(u"\u00E9"), std::u16string::npos);
    EXPECT_THAT(log.take(),
                ElementsAre("text.dataFromRange RTFD 0+1 encoding 4", "text.initWithData",
                            "text.size \"?\"", "text.dataFromRange HTML 0+1 encoding 5",
                            "text.stringWithData encoding 5"));
    EXPECT_EQ(controller.getHTMLMessage(1, size), std::nullopt);
}

TEST_F(TextExport, ALoneLineBreakIsExported) {
    window.textView.storage = StyledText(u"\r");
    EXPECT_TRUE(controller.getHTMLMessage(4, size));
    EXPECT_THAT(log.take(), ElementsAreArray(exported(1, "\"\\r\"")));
}

}  // namespace
}  // namespace skarnel::testing_app
