// Rendering the preview with the stored settings, and returning them to their defaults.
#include <array>

#include "app/float_text.h"
#include "app/vantera_desktop_controller.h"
#include "render/fitting.h"
#include "render/settings.h"

namespace skarnel {

namespace {

constexpr float kPeakOpacityWithoutKey = 200;

/// The pair of controls that show a numeric setting.
struct SettingControls {
    std::string_view key;
    NSSlider* VanteraDesktopController::*slider;
    NSTextField* VanteraDesktopController::*textField;
};

constexpr std::array<SettingControls, 7> kSettingControls{{
    {"perspectiveWidth", &VanteraDesktopController::perspectiveWidthSlider,
     &VanteraDesktopController::perspectiveWidthTextField},
    {"perspectiveHeight", &VanteraDesktopController::perspectiveHeightSlider,
     &VanteraDesktopController::perspectiveHeightTextField},
    {"offset", &VanteraDesktopController::offsetSlider, &VanteraDesktopController::offsetTextField},
    {"start", &VanteraDesktopController::startSlider, &VanteraDesktopController::startTextField},
    {"gradient", &VanteraDesktopController::gradientSlider,
     &VanteraDesktopController::gradientTextField},
    {"alpha", &VanteraDesktopController::alphaSlider, &VanteraDesktopController::alphaTextField},
    {"imagePerspective", &VanteraDesktopController::imagePerspectiveSlider,
     &VanteraDesktopController::imagePerspectiveTextField},
}};

// The two tables name the same keys in the same order, so that one loop can walk both.
constexpr bool tablesAgree() {
    for (std::size_t i = 0; i < kSettingControls.size(); ++i) {
        if (kSettingControls[i].key != kReflectionSettings[i].key) return false;
    }
    return kSettingControls.size() == kReflectionSettings.size();
}
static_assert(tablesAgree());

}  // namespace

void VanteraDesktopController::sliderChanged(const NSObject* /*sender*/) {
    if (!scaledImage) return;
    const std::optional<CGImage> bitmap = operations_.getCGImageRef(*scaledImage);
    if (!bitmap) return;
    const std::optional<CGImage> result = reflectedImage(*bitmap);
    if (!result) return;
    const std::optional<NSImage> wrapped = operations_.NSImageFromCGImageRef(*result);
    if (wrapped) {
        showFitted(*wrapped);
    } else {
        resultView->setImage(*result, nullptr);
        resultView->zoomImageToFit(this);
    }
}

// No zoom call follows: the picture already fits, and the viewer keeps the zoom that the user
// chose.
void VanteraDesktopController::showFitted(const NSImage& result) {
    const CGRect visible = resultView->visibleRect();
    const CGSize size = result.size();
    const CGRect fitted =
        GetDestinationRect({visible.x, visible.y, size.width, size.height}, visible);
    const auto scaled = operations_.imageByScalingProportionallyToSize(result, fitted.size());
    if (!scaled) return;
    const std::optional<CGImage> bitmap = operations_.getCGImageRef(*scaled);
    if (bitmap) resultView->setImage(*bitmap, nullptr);
}

void VanteraDesktopController::perspectiveChanged(const NSObject* /*sender*/) {
    sliderChanged(this);
}

void VanteraDesktopController::reset(const NSObject* /*sender*/) {
    NSUserDefaults& defaults = toolkit_.standardUserDefaults();
    emptyUserDefaults(defaults);
    resetReflectionSettings(defaults);
    defaults.synchronize();
    sliderChanged(this);
}

// Everything goes, not only the settings: the store holds nothing that should outlive a reset.
void VanteraDesktopController::emptyUserDefaults(NSUserDefaults& defaults) {
    defaults.resetStandardUserDefaults();
    const DefaultsDictionary dictionary = defaults.dictionaryRepresentation();
    for (const std::string& key : dictionary.allKeys()) defaults.removeObjectForKey(key);
}

void VanteraDesktopController::resetReflectionSettings(NSUserDefaults& defaults) {
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        const float value = kReflectionSettings[i].defaultValue;
        defaults.setFloat(value, kReflectionSettings[i].key);
        (this->*kSettingControls[i].slider)->setFloatValue(value);
        (this->*kSettingControls[i].textField)->setStringValue(floatText(value));
    }
    defaults.setBool(false, kApplyBackgroundColorKey);
    applyBackgroundColorButton->setState(0);
}

std::optional<CGImage> VanteraDesktopController::reflectedImage(const CGImage& source) {
    const NSUserDefaults& defaults = toolkit_.standardUserDefaults();
    const float perspectiveW = defaults.floatForKey("perspectiveWidth");
    const float perspectiveH = defaults.floatForKey("perspectiveHeight");
    const float reflectionOffset = defaults.floatForKey("offset");
    const float gradientOffset = defaults.floatForKey("start");
    const float gradient = defaults.floatForKey("gradient");
    return addReflectionToCGImage(source, perspectiveW, perspectiveH, reflectionOffset,
                                  gradientOffset, gradient);
}

std::optional<CGImage> VanteraDesktopController::addReflectionToCGImage(
    const CGImage& source, float perspectiveW, float perspectiveH, float reflectionOffset,
    float gradientOffset, float gradient) {
    const NSUserDefaults& defaults = toolkit_.standardUserDefaults();
    const RenderInputReaders readers(
        [&defaults] {
            return defaults.objectForKey("alpha") ? defaults.floatForKey("alpha")
                                                  : kPeakOpacityWithoutKey;
        },
        [this, &defaults]() -> std::optional<DeviceColor> {
            const bool applies = defaults.objectForKey(kApplyBackgroundColorKey) &&
                                 defaults.boolForKey(kApplyBackgroundColorKey);
            if (!applies) return std::nullopt;
            return resultViewBackgroundColor.deviceColor();
        },
        // The control itself, not its stored key.
        [this] { return imagePerspectiveSlider->floatValue(); });
    return operations_.addReflectionToCGImage(source, perspectiveW, perspectiveH, reflectionOffset,
                                              gradientOffset, gradient, readers);
}

}  // namespace skarnel
