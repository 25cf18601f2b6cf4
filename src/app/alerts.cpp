// The one helper through which a failure is shown to the user.
#include "app/vantera_desktop_controller.h"

namespace skarnel {

void VanteraDesktopController::doAlert(std::string_view message, std::string_view adding,
                                       NSWindow* parentWindow, NSAlertStyle alertStyle) {
    toolkit_.beep();
    const std::shared_ptr<NSAlert> alert =
        toolkit_.alertWithMessageText(message, "OK", std::nullopt, std::nullopt, adding);
    if (parentWindow == nullptr) {
        alert->setAlertStyle(alertStyle);
        alert->runModal();
    } else {
        alert->beginSheet(*parentWindow, this, nullptr, nullptr);
    }
}

}  // namespace skarnel
