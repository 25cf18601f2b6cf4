// A controller in a recorded window, for the tests of its commands.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/vantera_desktop_controller.h"
#include "recording_controls.h"
#include "recording_toolkit.h"
#include "storage/temporary_folder.h"

namespace skarnel::testing_app {

/// The outlets of the window, each under the name of its field.
struct RecordedWindow {
    explicit RecordedWindow(CallLog& log);
    ~RecordedWindow();

    void connect(VanteraDesktopController& controller) {
        controller.resultWindow = &resultWindow;
        controller.textView = &textView;
        controller.resultView = &resultView;
        controller.resultViewBackgroundColorTextField = &resultViewBackgroundColorTextField;
        controller.progress = &progress;
        controller.perspectiveHeightSlider = &perspectiveHeightSlider;
        controller.perspectiveWidthSlider = &perspectiveWidthSlider;
        controller.offsetSlider = &offsetSlider;
        controller.startSlider = &startSlider;
        controller.gradientSlider = &gradientSlider;
        controller.alphaSlider = &alphaSlider;
        controller.imagePerspectiveSlider = &imagePerspectiveSlider;
        controller.applyBackgroundColorButton = &applyBackgroundColorButton;
        controller.perspectiveHeightTextField = &perspectiveHeightTextField;
        controller.perspectiveWidthTextField = &perspectiveWidthTextField;
        controller.offsetTextField = &offsetTextField;
        controller.startTextField = &startTextField;
        controller.gradientTextField = &gradientTextField;
        controller.alphaTextField = &alphaTextField;
        controller.imagePerspectiveTextField = &imagePerspectiveTextField;
    }

  private:
    CallLog& log_;

  public:
    RecordingWindow resultWindow{log_};
    RecordingTextView textView{log_};
    RecordingImageView resultView{log_};
    RecordingProgress progress;
    RecordingTextField resultViewBackgroundColorTextField{log_,
                                                          "resultViewBackgroundColorTextField"};
    RecordingSlider perspectiveHeightSlider{log_, "perspectiveHeightSlider"};
    RecordingSlider perspectiveWidthSlider{log_, "perspectiveWidthSlider"};
    RecordingSlider offsetSlider{log_, "offsetSlider"};
    RecordingSlider startSlider{log_, "startSlider"};
    RecordingSlider gradientSlider{log_, "gradientSlider"};
    RecordingSlider alphaSlider{log_, "alphaSlider"};
    RecordingSlider imagePerspectiveSlider{log_, "imagePerspectiveSlider"};
    RecordingButton applyBackgroundColorButton{log_, "applyBackgroundColorButton"};
    RecordingTextField perspectiveHeightTextField{log_, "perspectiveHeightTextField"};
    RecordingTextField perspectiveWidthTextField{log_, "perspectiveWidthTextField"};
    RecordingTextField offsetTextField{log_, "offsetTextField"};
    RecordingTextField startTextField{log_, "startTextField"};
    RecordingTextField gradientTextField{log_, "gradientTextField"};
    RecordingTextField alphaTextField{log_, "alphaTextField"};
    RecordingTextField imagePerspectiveTextField{log_, "imagePerspectiveTextField"};
};

/// An opaque picture of the common pixel format in which no two neighbours are alike.
inline CGImage testPicture(int width, int height) {
    PixelBuffer pixels = *PixelBuffer::zeroed(width, height);
    const MutablePixelView view = pixels.view();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = view.row(y) + std::ptrdiff_t{4} * x;
            pixel[0] = static_cast<std::uint8_t>(x * 7 + y);
            pixel[1] = static_cast<std::uint8_t>(y * 11 + 40);
            pixel[2] = static_cast<std::uint8_t>((x ^ y) * 5);
            pixel[3] = 255;
        }
    }
    return CGImage(std::move(pixels));
}

/// The same picture as an image of one bitmap representation.
inline NSImage testImage(int width, int height) {
    return *ImageOperations().NSImageFromCGImageRef(testPicture(width, height));
}

/// A controller whose outlets are recorded; nothing was called on it yet.
struct RecordedController {
    RecordedController();
    ~RecordedController();

    /// A store as the first start leaves it.
    void storeDefaults() {
        toolkit.defaults.values = {{"perspectiveWidth", 0.0F}, {"perspectiveHeight", 100.0F},
                                   {"offset", 0.0F},           {"start", 0.0F},
                                   {"gradient", 7.0F},         {"alpha", 200.0F},
                                   {"imagePerspective", 50.0F}};
    }

    /// As after a picture of that size was opened under the name "Beach"; leaves no line.
    void openPicture(int width, int height) {
        storeDefaults();
        controller.image = testImage(width, height);
        controller.scaledImage = testImage(width, height);
        controller.saveFilename = "Beach Reflection";
    }

    /// The lines of the five reads that begin every render.
    static CallLog::Lines settingsRead() {
        return {"defaults.floatForKey perspectiveWidth", "defaults.floatForKey perspectiveHeight",
                "defaults.floatForKey offset", "defaults.floatForKey start",
                "defaults.floatForKey gradient"};
    }

    /// The lines of a whole render at the default settings of a picture shown as "WxH".
    static CallLog::Lines defaultRender(const std::string& size) {
        return lines(
            {settingsRead(),
             {"addReflectionToCGImage " + size + " 0 100 0 0 7", "defaults.objectForKey alpha",
              "defaults.floatForKey alpha", "defaults.objectForKey applyBackgroundColor",
              "imagePerspectiveSlider.floatValue"}});
    }

    RecordingToolkit toolkit;
    CallLog& log = toolkit.log;
    RecordingOperations operations{log};
    RecordedWindow window{log};
    VanteraDesktopController controller{toolkit, operations, "host.example"};
};

class ControllerTest : public ::testing::Test, protected RecordedController {};

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

}  // namespace skarnel::testing_app
