// The background colour as text.
#include "app/background_color_text.h"
#include "app/vantera_desktop_controller.h"

namespace skarnel {

std::string VanteraDesktopController::backgroundColorString() const {
    const DeviceColor color = resultViewBackgroundColor.deviceColor();
    return colorTextOfRGB(color.red, color.green, color.blue);
}

}  // namespace skarnel
