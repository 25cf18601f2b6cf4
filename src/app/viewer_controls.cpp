// The handlers of the viewer's tools, the colour panel, the text view and the help command.
#include "app/vantera_desktop_controller.h"

namespace skarnel {

namespace {

// Decimal values, not the exact roots of one half and two: out and in again drifts, on purpose.
constexpr double kZoomOutFactor = 0.7071068;
constexpr double kZoomInFactor = 1.414214;

/// The sender's place in a table of commands. Unsigned, so that a negative number lies outside of
/// every table, as does a sender that is not there.
std::uint64_t commandIndex(const NSObject* sender) {
    std::int64_t index = -1;
    if (const auto* segmented = dynamic_cast<const NSSegmentedControl*>(sender)) {
        index = segmented->selectedSegment();
    } else if (sender != nullptr) {
        index = sender->tag();
    }
    return static_cast<std::uint64_t>(index);
}

}  // namespace

void VanteraDesktopController::doZoom(const NSObject* sender) {
    switch (commandIndex(sender)) {
        case 0:
            resultView->setZoomFactor(resultView->zoomFactor() * kZoomOutFactor);
            break;
        case 1:
            resultView->setZoomFactor(resultView->zoomFactor() * kZoomInFactor);
            break;
        case 2:
            resultView->zoomImageToActualSize(this);
            break;
        case 3:
            resultView->zoomImageToFit(this);
            break;
        default:
            break;
    }
}

void VanteraDesktopController::switchToolMode(const NSObject* sender) {
    switch (commandIndex(sender)) {
        case 0:
            resultView->setCurrentToolMode(IKToolModeMove);
            break;
        case 1:
            resultView->setCurrentToolMode(IKToolModeSelect);
            break;
        case 2:
            resultView->setCurrentToolMode(IKToolModeCrop);
            break;
        case 3:
            resultView->setCurrentToolMode(IKToolModeRotate);
            break;
        case 4:
            resultView->setCurrentToolMode(IKToolModeAnnotate);
            break;
        default:
            break;
    }
}

void VanteraDesktopController::backgroundColor(const NSObject* /*sender*/) {
    toolkit_.sharedColorPanel().orderFront(nullptr);
}

void VanteraDesktopController::changeBackgroundColor(const NSNotification& /*notification*/) {
    // The one panel serves two purposes: with the text view in focus it colours text.
    if (resultWindow->firstResponder() == textView) return;
    const NSColor color = toolkit_.sharedColorPanel().color();
    resultView->setBackgroundColor(color);
    resultViewBackgroundColor = color;
    resultViewBackgroundColorTextField->setStringValue(backgroundColorString());
    sliderChanged(this);
}

void VanteraDesktopController::textViewBoundsChanged(const NSNotification& notification) {
    if (notification.object == textView) resultView->zoomImageToFit(this);
}

void VanteraDesktopController::clearTextTimerAction(NSTimer& /*timer*/) {
    textView->setString(u"\r");  // a line break, not nothing: the text view then is not empty
    clearTextTimer = nullptr;
}

bool VanteraDesktopController::textViewShouldChangeTextInRanges(
    const NSTextView& /*view*/, const std::vector<NSRange>& /*ranges*/,
    const std::vector<std::u16string>& /*replacementStrings*/) {
    if (clearTextTimer != nullptr) {
        clearTextTimer->invalidate();
        clearTextTimer = nullptr;
    }
    return true;
}

void VanteraDesktopController::vanteraHelp(const NSObject* /*sender*/) {
    toolkit_.sharedWorkspace().openURL("https://" + helpHost_ + "/products/skarnel/");
}

}  // namespace skarnel
