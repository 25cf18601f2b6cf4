#include "qt/entry_field.h"

#include <QKeyEvent>

namespace skarnel {

EntryField::EntryField(QWidget* parent) : QLineEdit(parent) {
    setAcceptDrops(false);
}

bool EntryField::leavesToWindow(QKeyEvent& event) const {
    return !isModified() &&
           (event.matches(QKeySequence::Undo) || event.matches(QKeySequence::Redo));
}

bool EntryField::event(QEvent* event) {
    // A line edit claims the keys of its own undo, also where it has nothing to undo.
    if (event->type() == QEvent::ShortcutOverride &&
        leavesToWindow(static_cast<QKeyEvent&>(*event))) {
        event->ignore();
        return false;
    }
    return QLineEdit::event(event);
}

void EntryField::keyPressEvent(QKeyEvent* event) {
    if (leavesToWindow(*event)) return event->ignore();
    QLineEdit::keyPressEvent(event);
}

}  // namespace skarnel
