#include "qt/number_field.h"

#include <QKeyEvent>
#include <QLocale>
#include <algorithm>
#include <utility>

#include "qt/number_text.h"

namespace skarnel {

NumberField::NumberField(const SettingRange& range, QWidget* parent)
    : EntryField(parent), range_(range) {
    setAlignment(Qt::AlignRight);
    setMaxLength(32);
    setFixedWidth(fontMetrics().horizontalAdvance(QStringLiteral("-000.000000")) + 12);
}

void NumberField::setNumber(float value) {
    setTextFor(numberText(value), value);
}

void NumberField::setTextFor(const QString& text, float value) {
    value_ = value;
    shown_ = text;
    setText(text);
    if (hasFocus()) selectAll();
}

void NumberField::putBack() {
    setText(shown_);
    selectAll();
}

void NumberField::commit() {
    if (!isModified()) return;
    const auto typed = numberFromText(text(), locale());
    if (!typed) return putBack();
    setNumber(std::clamp(*typed, range_.fieldMin, range_.fieldMax));
    emit committed(value_);
}

void NumberField::step(float by) {
    const float base = numberFromText(text(), locale()).value_or(value_);
    setNumber(std::clamp(base + by, range_.fieldMin, range_.fieldMax));
    stepping_ = true;
    emit stepped(value_);
}

void NumberField::endSteps() {
    if (std::exchange(stepping_, false)) emit stepsEnded();
}

void NumberField::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            commit();
            return selectAll();
        case Qt::Key_Escape:
            if (!isModified()) break;
            return putBack();
        case Qt::Key_Up:
            return step(range_.step);
        case Qt::Key_Down:
            return step(-range_.step);
        case Qt::Key_PageUp:
            return step(range_.pageStep);
        case Qt::Key_PageDown:
            return step(-range_.pageStep);
        default:
            break;
    }
    EntryField::keyPressEvent(event);
}

void NumberField::keyReleaseEvent(QKeyEvent* event) {
    if (!event->isAutoRepeat()) endSteps();
    EntryField::keyReleaseEvent(event);
}

void NumberField::focusInEvent(QFocusEvent* event) {
    EntryField::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)
        selectAll();
}

void NumberField::focusOutEvent(QFocusEvent* event) {
    endSteps();
    // A menu or another window may take the focus for a moment; what was typed waits.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        commit();
    EntryField::focusOutEvent(event);
}

}  // namespace skarnel
