// Whether all that a window says can be seen in it.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <string>

namespace skarnel {

/// Whether every text in the widget has the room that it asks for.
inline bool hasRoom(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return label->wordWrap() || label->width() >= label->minimumSizeHint().width();
    if (qobject_cast<const QAbstractButton*>(&widget) != nullptr)
        return widget.width() >= widget.minimumSizeHint().width();
    return true;
}

/// Whether its parents let all of it be seen sideways; a panel may be scrolled up and down.
inline bool isCutOff(const QWidget& widget) {
    for (const QWidget* parent = widget.parentWidget(); parent != nullptr && !widget.isWindow();
         parent = parent->parentWidget()) {
        const int left = widget.mapTo(parent, QPoint(0, 0)).x();
        if (left < 0 || left + widget.width() > parent->width()) return true;
        if (parent->isWindow()) break;
    }
    return false;
}

/// That nothing in a window, or in a part of one, lacks room or lies outside it.
inline void expectEverythingSeen(QWidget& window, const std::string& where) {
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(&window) || widget->isWindow()) continue;
        // A list scrolls its own content; a tool bar that is too narrow shows its arrow.
        if (widget->objectName() == QLatin1String("qt_toolbar_ext_button")) {
            EXPECT_FALSE(widget->isVisibleTo(&window)) << where << ": a tool bar is too narrow";
            continue;
        }
        const bool interesting = qobject_cast<const QLabel*>(widget) != nullptr ||
                                 qobject_cast<const QAbstractButton*>(widget) != nullptr ||
                                 qobject_cast<const QLineEdit*>(widget) != nullptr ||
                                 qobject_cast<const QComboBox*>(widget) != nullptr ||
                                 qobject_cast<const QAbstractSlider*>(widget) != nullptr;
        if (!interesting || widget->objectName() == QLatin1String("toast")) continue;
        const std::string name = widget->metaObject()->className() + std::string(" ") +
                                 widget->accessibleName().toStdString() +
                                 widget->toolTip().toStdString() +
                                 widget->objectName().toStdString();
        EXPECT_TRUE(hasRoom(*widget))
            << where << ": no room for " << name << ", "
            << widget->minimumSizeHint().width() - widget->width() << " pixels too few";
        EXPECT_FALSE(isCutOff(*widget)) << where << ": cut off: " << name;
    }
}

}  // namespace skarnel
