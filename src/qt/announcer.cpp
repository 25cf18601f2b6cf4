#include "qt/announcer.h"

#include <QAccessible>

#include "qt/accessible_parts.h"

namespace skarnel {

Announcer::Announcer(QWidget& window) : QObject(&window) {
    describeOwnWidgets();
}

void Announcer::tell(const QString& message) {
    message_ = message;
    // The desktop's bus passes on that a notification comes up, and no alerts; elsewhere the alert
    // is what counts.
    for (const QAccessible::Event kind :
         {QAccessible::NameChanged, QAccessible::ObjectShow, QAccessible::Alert}) {
        QAccessibleEvent event(this, kind);
        QAccessible::updateAccessibility(&event);
    }
}

}  // namespace skarnel
