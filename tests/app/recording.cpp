// The fakes' destructors lie here, and with them, once for all test files, their tables of virtual
// functions: compiling these in every test file takes longer than the tests.
#include "controller_fixture.h"
#include "recording_controls.h"
#include "recording_images.h"
#include "recording_panels.h"
#include "recording_services.h"
#include "recording_text.h"
#include "recording_toolkit.h"

namespace skarnel::testing_app {

RecordingSlider::~RecordingSlider() = default;
RecordingButton::~RecordingButton() = default;
RecordingTextField::~RecordingTextField() = default;
RecordingWindow::~RecordingWindow() = default;
RecordingTextView::~RecordingTextView() = default;
RecordingImageView::~RecordingImageView() = default;
RecordingOperations::~RecordingOperations() = default;
RecordingSource::~RecordingSource() = default;
RecordingDestination::~RecordingDestination() = default;
RecordingImageFiles::~RecordingImageFiles() = default;
RecordingOpenPanel::~RecordingOpenPanel() = default;
RecordingSavePanel::~RecordingSavePanel() = default;
RecordingSaveOptions::~RecordingSaveOptions() = default;
RecordingColorPanel::~RecordingColorPanel() = default;
RecordingAlert::~RecordingAlert() = default;
RecordingDefaults::~RecordingDefaults() = default;
RecordingNotificationCenter::~RecordingNotificationCenter() = default;
RecordingTimer::~RecordingTimer() = default;
RecordingRunLoop::~RecordingRunLoop() = default;
RecordingBundle::~RecordingBundle() = default;
RecordingWorkspace::~RecordingWorkspace() = default;
RecordingPasteboard::~RecordingPasteboard() = default;
RecordingSound::~RecordingSound() = default;
RecordingTextServices::~RecordingTextServices() = default;
RecordingTextFiles::~RecordingTextFiles() = default;
RecordingWebView::~RecordingWebView() = default;
RecordingToolkit::~RecordingToolkit() = default;

RecordedWindow::RecordedWindow(CallLog& log) : log_(log) {}
RecordedWindow::~RecordedWindow() = default;

RecordedController::RecordedController() {
    log.name(controller, "controller");
    window.connect(controller);
    window.imagePerspectiveSlider.value = 50;
}
RecordedController::~RecordedController() = default;

}  // namespace skarnel::testing_app
