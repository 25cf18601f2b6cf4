// The controller's creation, set-up and window hooks.
#include <utility>

#include "app/vantera_desktop_controller.h"
#include "render/settings.h"

namespace skarnel {

namespace {

constexpr std::string_view kCompletionSound = "harp.aif";
constexpr std::string_view kLogoName = "TavelinLogo";
constexpr std::u16string_view kPlaceholderText = u"Enter text for imaging here";
constexpr double kPlaceholderSeconds = 15.0;

}  // namespace

VanteraDesktopController* gVanteraDesktopController = nullptr;

VanteraDesktopController::VanteraDesktopController(Toolkit& toolkit, ImageOperations& operations,
                                                   std::string helpHost)
    : toolkit_(toolkit), operations_(operations), helpHost_(std::move(helpHost)) {}

// Observers stay registered and the process-wide pointer stays set: the controller lives as long
// as the process, and nothing may reach either after it.
VanteraDesktopController::~VanteraDesktopController() = default;

VanteraDesktopController* VanteraDesktopController::init() {
    openInEditor = 0;
    resultViewBackgroundColor = NSColor::blackColor();
    image.reset();
    scaledImage.reset();
    seedReflectionSettings();
    return this;
}

// Written into the store itself, so that a key's presence says that it was ever set. The flag is
// not seeded: absent counts as false.
void VanteraDesktopController::seedReflectionSettings() {
    NSUserDefaults& defaults = toolkit_.standardUserDefaults();
    for (const ReflectionSetting& setting : kReflectionSettings) {
        if (!defaults.objectForKey(setting.key).has_value()) {
            defaults.setFloat(setting.defaultValue, setting.key);
        }
    }
    defaults.synchronize();
}

void VanteraDesktopController::awakeFromNib() {
    resultView->setDoubleClickOpensImageEditPanel(false);
    resultView->setCurrentToolMode(IKToolModeMove);
    resultView->zoomImageToFit(this);
    resultView->setAutohidesScrollers(true);
    resultView->setBackgroundColor(resultViewBackgroundColor);
    resultView->setAutoresizes(true);

    resultViewBackgroundColorTextField->setStringValue(backgroundColorString());

    if (const auto path = toolkit_.mainBundle().pathForSoundResource(kCompletionSound)) {
        harpSound = toolkit_.soundWithContentsOfFile(*path, false);
    }

    gVanteraDesktopController = this;
    observeNotifications();
    showPlaceholderText();
}

void VanteraDesktopController::observeNotifications() {
    NSNotificationCenter& center = toolkit_.defaultNotificationCenter();
    center.addObserver(
        *this, [this](const NSNotification& note) { changeBackgroundColor(note); },
        NSColorPanelColorDidChangeNotification, &toolkit_.sharedColorPanel());

    textView->setPostsBoundsChangedNotifications(true);
    const auto boundsChanged = [this](const NSNotification& note) { textViewBoundsChanged(note); };
    center.addObserver(*this, boundsChanged, NSViewBoundsDidChangeNotification, textView);
    center.addObserver(*this, boundsChanged, NSViewFrameDidChangeNotification, textView);
}

void VanteraDesktopController::showPlaceholderText() {
    textView->setFont({"Times", 48.0});
    textView->insertText(kPlaceholderText);
    textView->setTextColor(NSColor::whiteColor(), {0, textView->textStorage().length()});
    clearTextTimer = toolkit_.mainRunLoop().scheduledTimerWithTimeInterval(
        kPlaceholderSeconds, [this](NSTimer& timer) { clearTextTimerAction(timer); }, false);
}

void VanteraDesktopController::applicationWillFinishLaunching(const NSNotification& /*note*/) {
    saveFilename = kLogoName;
    image = toolkit_.imageNamed(saveFilename);
    loadImage();
}

void VanteraDesktopController::windowDidResize(const NSNotification& /*notification*/) {
    resultView->zoomImageToFit(this);
}

void VanteraDesktopController::windowDidEnterFullScreen(const NSNotification& /*notification*/) {
    sliderChanged(this);
}

}  // namespace skarnel
