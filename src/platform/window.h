// The main window as the controller sees it.
#pragma once

#include "platform/object.h"

namespace skarnel {

class NSWindow : public NSObject {
  public:
    /// The window's own remembered focus, also while a panel or another window is active; null
    /// when nothing in it has the focus.
    virtual NSResponder* firstResponder() const = 0;

    /// Hides the window. `sender` may be null.
    virtual void orderOut(const NSObject* sender) = 0;
};

}  // namespace skarnel
