// The toolkit's controls on Qt's widgets. Each borrows its widget, which outlives it.
#pragma once

#include <cstdint>

#include "platform/controls.h"

class QCheckBox;
class QLineEdit;
class QProgressBar;

namespace skarnel {

class FloatSlider;
class NumberField;

class QtSlider final : public NSSlider {
  public:
    explicit QtSlider(FloatSlider& widget) : widget_(widget) {}
    float floatValue() const override;
    void setFloatValue(float value) override;

  private:
    FloatSlider& widget_;
};

class QtButton final : public NSButton {
  public:
    explicit QtButton(QCheckBox& widget) : widget_(widget) {}
    void setState(int state) override;

  private:
    QCheckBox& widget_;
};

class QtTextField final : public NSTextField {
  public:
    explicit QtTextField(QLineEdit& widget) : widget_(widget) {}
    void setStringValue(std::string_view text) override;

  private:
    QLineEdit& widget_;
};

/// A field of a number. The text is shown as it is given, "100.000000" for one.
class QtNumberTextField final : public NSTextField {
  public:
    explicit QtNumberTextField(NumberField& widget) : widget_(widget) {}
    void setStringValue(std::string_view text) override;

  private:
    NumberField& widget_;
};

class QtProgressIndicator final : public NSProgressIndicator {
  public:
    explicit QtProgressIndicator(QProgressBar& widget) : widget_(widget) {}
    const QProgressBar& widget() const { return widget_; }

  private:
    QProgressBar& widget_;
};

/// Stands for a menu item or button as the sender of an action.
class QtTaggedSender final : public NSControl {
  public:
    explicit QtTaggedSender(std::int64_t tag) : tag_(tag) {}
    std::int64_t tag() const override { return tag_; }

  private:
    std::int64_t tag_;
};

}  // namespace skarnel
