#include "controller_fixture.h"

#include <limits>

namespace skarnel::testing_app {
namespace {

/// Every index that lies outside of both tables' ends.
constexpr std::int64_t kOutside[] = {-1,
                                     -2,
                                     5,
                                     6,
                                     255,
                                     1LL << 32,
                                     std::numeric_limits<std::int64_t>::min(),
                                     std::numeric_limits<std::int64_t>::max()};

class ViewerControls : public ControllerTest {
  protected:
    /// Sends the command once from a segmented control and once from a tagged sender.
    template <typename Action>
    void fromBothKinds(Action action, std::int64_t index, const CallLog::Lines& expected) {
        // The tag of the segmented control is another row, so that a mix-up shows.
        const Segments segments(index, index == 3 ? 2 : 3);
        window.resultView.factor = 2;
        (controller.*action)(&segments);
        EXPECT_EQ(log.take(), expected) << "segment " << index;

        const TaggedSender tagged(index);
        window.resultView.factor = 2;
        (controller.*action)(&tagged);
        EXPECT_EQ(log.take(), expected) << "tag " << index;
    }

    void zoom(std::int64_t index) {
        const TaggedSender sender(index);
        controller.doZoom(&sender);
    }
};

TEST_F(ViewerControls, ZoomRow0DividesByAboutTheRootOfTwo) {
    fromBothKinds(&VanteraDesktopController::doZoom, 0,
                  {"viewer.zoomFactor", "viewer.setZoomFactor 1.4142136"});
}

TEST_F(ViewerControls, ZoomRow1MultipliesByAboutTheRootOfTwo) {
    fromBothKinds(&VanteraDesktopController::doZoom, 1,
                  {"viewer.zoomFactor", "viewer.setZoomFactor 2.828428"});
}

TEST_F(ViewerControls, ZoomRow2ShowsTheActualSize) {
    fromBothKinds(&VanteraDesktopController::doZoom, 2,
                  {"viewer.zoomImageToActualSize controller"});
}

TEST_F(ViewerControls, ZoomRow3Fits) {
    fromBothKinds(&VanteraDesktopController::doZoom, 3, {"viewer.zoomImageToFit controller"});
}

TEST_F(ViewerControls, ZoomOutsideOfTheTableDoesNothing) {
    fromBothKinds(&VanteraDesktopController::doZoom, 4, {});
    for (const std::int64_t index : kOutside) {
        fromBothKinds(&VanteraDesktopController::doZoom, index, {});
    }
}

TEST_F(ViewerControls, ZoomOutThenInDrifts) {
    // 0.7071068 * 1.414214 = 1.0000003360552 by long multiplication; the double is the nearest.
    window.resultView.factor = 1;
    zoom(0);
    zoom(1);
    EXPECT_DOUBLE_EQ(window.resultView.factor, 1.0000003360552001);
}

TEST_F(ViewerControls, ZoomHasNoBoundsOfItsOwn) {
    window.resultView.factor = 1e-300;
    zoom(0);
    EXPECT_LT(window.resultView.factor, 1e-300);
    window.resultView.factor = 1e300;
    zoom(1);
    EXPECT_GT(window.resultView.factor, 1e300);
}

TEST_F(ViewerControls, ASenderThatIsNotThereOrHasNoTagDoesNothing) {
    controller.doZoom(nullptr);
    controller.switchToolMode(nullptr);
    controller.doZoom(&controller);
    controller.switchToolMode(&controller);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(ViewerControls, ToolRowsInOrder) {
    const char* const tools[] = {"move", "select", "crop", "rotate", "annotate"};
    for (std::int64_t index = 0; index < 5; ++index) {
        fromBothKinds(&VanteraDesktopController::switchToolMode, index,
                      {std::string("viewer.setCurrentToolMode ") + tools[index]});
    }
}

TEST_F(ViewerControls, ToolOutsideOfTheTableDoesNothing) {
    for (const std::int64_t index : kOutside) {
        fromBothKinds(&VanteraDesktopController::switchToolMode, index, {});
    }
}

TEST_F(ViewerControls, BackgroundColorOnlyBringsThePanelToTheFront) {
    controller.backgroundColor(&controller);
    EXPECT_THAT(log.take(), ElementsAre("colorPanel.orderFront none"));
}

TEST_F(ViewerControls, AColourPickedElsewhereIsTheBackgroundAndRendersAgain) {
    openPicture(40, 30);
    for (NSResponder* focus :
         {static_cast<NSResponder*>(nullptr), static_cast<NSResponder*>(&window.resultView),
          static_cast<NSResponder*>(&window.alphaTextField)}) {
        window.resultWindow.focus = focus;
        toolkit.colorPanel.chosen = NSColor::colorWithDeviceRed(1, 0, 0, 1);
        controller.changeBackgroundColor({NSColorPanelColorDidChangeNotification});
        EXPECT_THAT(
            log.take(),
            ElementsAreArray(lines({{"window.firstResponder", "colorPanel.color",
                                     "viewer.setBackgroundColor rgba(1,0,0,1)",
                                     "resultViewBackgroundColorTextField.setStringValue #FF0000",
                                     "getCGImageRef 40x30"},
                                    defaultRender("40x30"),
                                    {"NSImageFromCGImageRef 40x60", "viewer.visibleRect",
                                     "imageByScalingProportionallyToSize 40x60 to 40x60",
                                     "getCGImageRef 40x60", "viewer.setImage 40x60"}})));
        EXPECT_EQ(controller.resultViewBackgroundColor, toolkit.colorPanel.chosen);
    }
}

TEST_F(ViewerControls, AColourPickedBeforeThereIsAPictureIsTheBackgroundAlone) {
    toolkit.colorPanel.chosen = NSColor::colorWithDeviceRed(0, 1, 0, 1);
    controller.changeBackgroundColor({NSColorPanelColorDidChangeNotification});
    EXPECT_THAT(log.take(), ElementsAre("window.firstResponder", "colorPanel.color",
                                        "viewer.setBackgroundColor rgba(0,1,0,1)",
                                        "resultViewBackgroundColorTextField.setStringValue "
                                        "#00FF00"));
    EXPECT_EQ(controller.resultViewBackgroundColor, toolkit.colorPanel.chosen);
}

TEST_F(ViewerControls, AColourPickedWithTheTextViewFocusedLeavesTheBackground) {
    openPicture(40, 30);
    window.resultWindow.focus = &window.textView;
    toolkit.colorPanel.chosen = NSColor::colorWithDeviceRed(1, 0, 0, 1);
    controller.changeBackgroundColor({NSColorPanelColorDidChangeNotification});
    EXPECT_THAT(log.take(), ElementsAre("window.firstResponder"));
    EXPECT_EQ(controller.resultViewBackgroundColor, NSColor());
    EXPECT_EQ(window.resultViewBackgroundColorTextField.text, "");
}

TEST_F(ViewerControls, ThePanelsNotificationIsObserved) {
    controller.awakeFromNib();
    window.resultWindow.focus = &window.textView;
    log.take();
    toolkit.notifications.postNotification(
        {NSColorPanelColorDidChangeNotification, &toolkit.colorPanel});
    EXPECT_THAT(log.take(), ElementsAre("window.firstResponder"));
    toolkit.notifications.postNotification(
        {NSColorPanelColorDidChangeNotification, &window.textView});
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(ViewerControls, BoundsOfTheTextViewFitTheViewerAgainAndRenderNothing) {
    openPicture(40, 30);
    controller.textViewBoundsChanged({NSViewBoundsDidChangeNotification, &window.textView});
    EXPECT_THAT(log.take(), ElementsAre("viewer.zoomImageToFit controller"));
}

TEST_F(ViewerControls, BoundsOfAnotherObjectDoNothing) {
    controller.textViewBoundsChanged({NSViewBoundsDidChangeNotification, &window.resultView});
    controller.textViewBoundsChanged({NSViewBoundsDidChangeNotification, nullptr});
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(ViewerControls, BothNotificationsOfTheTextViewAreObserved) {
    controller.awakeFromNib();
    log.take();
    for (const std::string_view name :
         {NSViewBoundsDidChangeNotification, NSViewFrameDidChangeNotification}) {
        toolkit.notifications.postNotification({name, &window.textView});
        EXPECT_THAT(log.take(), ElementsAre("viewer.zoomImageToFit controller")) << name;
    }
}

TEST_F(ViewerControls, ThePlaceholderIsReplacedByOneCarriageReturnWhenTheTimerFires) {
    controller.awakeFromNib();
    log.take();
    toolkit.runLoop.timers[0]->fire();
    EXPECT_THAT(log.take(), ElementsAre("textView.setString \"\\r\""));
    EXPECT_EQ(controller.clearTextTimer, nullptr);
    EXPECT_EQ(window.textView.storage.characters(), u"\r");

    // An edit after that finds no timer to cancel.
    EXPECT_TRUE(controller.textViewShouldChangeTextInRanges(window.textView, {{0, 1}}, {u"a"}));
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(ViewerControls, TheFirstEditCancelsTheTimerAndEveryEditIsAllowed) {
    controller.awakeFromNib();
    log.take();
    EXPECT_TRUE(controller.textViewShouldChangeTextInRanges(window.textView, {{27, 0}}, {u"!"}));
    EXPECT_THAT(log.take(), ElementsAre("timer.invalidate"));
    EXPECT_EQ(controller.clearTextTimer, nullptr);
    EXPECT_FALSE(toolkit.runLoop.timers[0]->isScheduled());

    EXPECT_TRUE(controller.textViewShouldChangeTextInRanges(window.textView, {}, {}));
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(window.textView.storage.characters(), u"Enter text for imaging here");
}

TEST_F(ViewerControls, HelpOpensTheProductsPage) {
    controller.vanteraHelp(nullptr);
    EXPECT_THAT(log.take(),
                ElementsAre("workspace.openURL https://host.example/products/skarnel/"));
}

TEST_F(ViewerControls, AHelpPageThatCannotBeOpenedIsIgnored) {
    log.failOn("workspace.openURL");
    controller.vanteraHelp(nullptr);
    EXPECT_EQ(log.take().size(), 1U);
}

}  // namespace
}  // namespace skarnel::testing_app
