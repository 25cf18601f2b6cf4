#include "qt/toolkit_controls.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QLocale>

#include "qt/float_slider.h"
#include "qt/number_field.h"
#include "qt/number_text.h"

namespace skarnel {
namespace {

QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

float QtSlider::floatValue() const {
    return widget_.floatValue();
}

void QtSlider::setFloatValue(float value) {
    widget_.setFloatValue(value);
}

void QtButton::setState(int state) {
    widget_.setChecked(state != 0);
}

void QtTextField::setStringValue(std::string_view text) {
    widget_.setText(toQt(text));
}

void QtNumberTextField::setStringValue(std::string_view text) {
    const QString shown = toQt(text);
    widget_.setTextFor(shown, numberFromText(shown, QLocale::c()).value_or(0.0F));
}

}  // namespace skarnel
