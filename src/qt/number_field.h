// A field for one number, paired with a slider.
#pragma once

#include "qt/entry_field.h"
#include "qt/setting_ranges.h"

namespace skarnel {

/// Return and leaving the field take what was typed; nonsense and Escape put the number back.
/// Up and Down step. Numbers beyond the field's range are brought to its end.
class NumberField final : public EntryField {
    Q_OBJECT
  public:
    explicit NumberField(const SettingRange& range, QWidget* parent = nullptr);

    /// Shows a number in its shortest form; emits nothing.
    void setNumber(float value);
    /// Shows a text as it stands, which stands for `value`.
    void setTextFor(const QString& text, float value);

    /// Takes what was typed and waits; without such does nothing.
    void commit();

  signals:
    void committed(float value);
    /// A key steps; while it is held, all its steps are one change, which ends with `stepsEnded`.
    void stepped(float value);
    void stepsEnded();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void putBack();
    void step(float by);
    void endSteps();

    const SettingRange& range_;
    float value_ = 0;
    bool stepping_ = false;
    QString shown_;
};

}  // namespace skarnel
