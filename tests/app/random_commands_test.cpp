// Whatever a person does in whatever order, and whatever fails under it: what must always hold.
#include <algorithm>

#include "controller_fixture.h"
#include "util/log/system_log.h"
#include "util/seeded_test.h"

namespace skarnel::testing_app {
namespace {

class RandomCommands : public SeededTest, protected RecordedController {
  protected:
    void SetUp() override {
        SeededTest::SetUp();
        storeDefaults();
        window.resultView.visible = {0, 0, 60, 40};
        const Bytes bytes = *encodeImage(testPicture(50, 40), kUTTypePNG);
        test::putFile(folder / "good.png", {bytes.begin(), bytes.end()});
        test::putFile(folder / "bad.png", "no picture");
        toolkit.namedImage = testImage(30, 20);
        controller.init();
        controller.awakeFromNib();
        controller.applicationWillFinishLaunching({"launched"});
        log.take();
    }

    void planAFailure() {
        static constexpr std::string_view kCalls[] = {"initByReferencingFile",
                                                      "imageByScalingProportionallyToSize",
                                                      "getCGImageRef",
                                                      "NSImageFromCGImageRef",
                                                      "TIFFRepresentation",
                                                      "addReflectionToCGImage",
                                                      "imageSourceCreateWithData",
                                                      "imageDestinationCreateWithURL",
                                                      "imageDestinationCreateWithData",
                                                      "dataCreateMutable",
                                                      "destination.finalize"};
        log.failOn(kCalls[static_cast<std::size_t>(whole(0, std::size(kCalls) - 1))], whole(1, 3));
    }

    void changeASetting() {
        static constexpr const char* kKeys[] = {
            "perspectiveWidth", "perspectiveHeight", "offset", "start", "gradient", "alpha"};
        const std::string key = kKeys[whole(0, std::size(kKeys) - 1)];
        if (whole(0, 5) == 0) {
            toolkit.defaults.values.erase(key);
        } else {
            toolkit.defaults.values[key] = static_cast<float>(whole(-150, 400));
        }
        window.imagePerspectiveSlider.value = static_cast<float>(whole(0, 1000)) / 10;
        controller.sliderChanged(nullptr);
    }

    void pickAColour() {
        toolkit.colorPanel.chosen = NSColor::colorWithDeviceRed(
            whole(0, 255) / 255.0, whole(0, 255) / 255.0, whole(0, 255) / 255.0, whole(0, 2) / 2.0);
        window.resultWindow.focus =
            whole(0, 1) == 0 ? static_cast<NSResponder*>(&window.textView) : &window.resultView;
        toolkit.notifications.postNotification(
            {NSColorPanelColorDidChangeNotification, &toolkit.colorPanel});
    }

    void saveAndEndTheSheet() {
        toolkit.lastSavePanel = nullptr;
        controller.save(nullptr);
        if (!toolkit.lastSavePanel) return;
        static constexpr std::string_view kTypes[] = {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG,
                                                      kUTTypePSD};
        toolkit.lastSaveOptions->type = kTypes[whole(0, std::size(kTypes) - 1)];
        toolkit.lastSavePanel->chosenPath = folder / (whole(0, 3) == 0 ? "no/where" : "out");
        toolkit.lastSavePanel->end(whole(0, 1));
    }

    void step() {
        const TaggedSender sender(whole(-1, 6));
        switch (whole(0, 12)) {
            case 0:
                controller.imagePathChanged(folder / "good.png");
                break;
            case 1:
                controller.imagePathChanged(folder / "bad.png");
                break;
            case 2:
                controller.imagePathChanged(folder / "missing.png");
                break;
            case 3:
                changeASetting();
                break;
            case 4:
                pickAColour();
                break;
            case 5:
                saveAndEndTheSheet();
                break;
            case 6:
                controller.putImageOnClipboard(&sender);
                break;
            case 7:
                controller.reset(&sender);
                break;
            case 8:
                controller.doZoom(&sender);
                break;
            case 9:
                controller.switchToolMode(&sender);
                break;
            case 10:
                controller.windowDidResize({"resized"});
                break;
            case 11:
                controller.windowDidEnterFullScreen({"full screen"});
                break;
            default:
                edit();
                break;
        }
    }

    void edit() {
        if (toolkit.runLoop.timers[0]->isScheduled() && whole(0, 4) == 0) {
            toolkit.runLoop.timers[0]->fire();
        }
        EXPECT_TRUE(controller.textViewShouldChangeTextInRanges(window.textView, {}, {}));
    }

    static long count(const CallLog::Lines& all, std::string_view start) {
        return std::count_if(all.begin(), all.end(),
                             [start](const std::string& line) { return line.starts_with(start); });
    }

    /// What must hold after every command, whatever it was.
    void expectInvariants(const CallLog::Lines& all, const std::optional<CGImage>& shownBefore) {
        const auto& shownNow = window.resultView.shownImage;
        if (count(all, "viewer.setImage") == 0) {
            EXPECT_TRUE(!shownBefore || shownBefore->isSame(*shownNow));
        }
        EXPECT_LE(count(all, "viewer.setImage"), 1);
        EXPECT_EQ(count(all, "beep") + count(all, "alert"), 0);

        // The pasteboard is declared, filled and cheered in this order or not touched at all.
        const auto declared = std::find_if(all.begin(), all.end(), [](const std::string& line) {
            return line.starts_with("pasteboard.declareTypes");
        });
        if (declared == all.end()) {
            EXPECT_EQ(count(all, "pasteboard.") + count(all, "sound."), 0);
        } else {
            EXPECT_THAT(CallLog::Lines(declared, all.end()),
                        ElementsAre("pasteboard.declareTypes NSTIFFPboardType owner none",
                                    "pasteboard.setData NSTIFFPboardType", "sound.play"));
        }
        EXPECT_EQ(window.resultViewBackgroundColorTextField.text,
                  controller.backgroundColorString());
        EXPECT_EQ(controller.clearTextTimer != nullptr, toolkit.runLoop.timers[0]->isScheduled());
        for (const std::string& name : folder.names()) {
            EXPECT_TRUE(name == "good.png" || name == "bad.png" || name == "out") << name;
        }
    }

    test::TemporaryFolder folder;
};

TEST_F(RandomCommands, NeverBreakWhatMustAlwaysHold) {
    const ScopedLogCapture quiet;
    const int steps = test::isLongRun() ? 20000 : 600;
    for (int number = 0; number < steps && !HasFailure(); ++number) {
        const std::optional<CGImage> shownBefore = window.resultView.shownImage;
        if (whole(0, 3) == 0) planAFailure();
        step();
        const CallLog::Lines all = log.take();
        expectInvariants(all, shownBefore);
        if (HasFailure())
            ADD_FAILURE() << "step " << number << ": " << ::testing::PrintToString(all);
    }
}

}  // namespace
}  // namespace skarnel::testing_app
