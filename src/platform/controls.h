// The window's controls, each with the operations that the controller uses.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/object.h"

namespace skarnel {

/// A view that sends an action. Where a control is bound to a settings key, the key is written
/// before the action is sent.
class NSControl : public NSResponder {};

class NSSlider : public NSControl {
  public:
    /// The value itself, never a widget's whole-number position.
    virtual float floatValue() const = 0;
    /// Shows the value; sends no action and writes no key.
    virtual void setFloatValue(float value) = 0;
};

class NSButton : public NSControl {
  public:
    /// 1 = on, 0 = off. Sends no action and writes no key.
    virtual void setState(int state) = 0;
};

class NSTextField : public NSControl {
  public:
    /// Shows the text as it stands; sends no action and writes no key. UTF-8.
    virtual void setStringValue(std::string_view text) = 0;
};

/// A row of buttons of which one was pressed last.
class NSSegmentedControl : public NSControl {
  public:
    /// Counted from 0; -1 when none is selected.
    virtual std::int64_t selectedSegment() const = 0;
};

/// Shown by the window; the controller only holds it.
class NSProgressIndicator : public NSResponder {};

}  // namespace skarnel
