// Whether all that a window says can be seen in it.
#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QComboBox>
#include <QFontMetrics>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QStyleOptionViewItem>
#include <QToolButton>
#include <algorithm>
#include <string>

namespace skarnel {

/// Logical pixels of a line's own field for what is typed.
inline int roomOf(const QLineEdit& line) {
    constexpr int kInnerMargin = 2;  // which the toolkit leaves on either side of the text
    const QMargins margins = line.textMargins();
    const int frame = line.hasFrame()
                          ? line.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, &line)
                          : 0;
    return line.contentsRect().width() - margins.left() - margins.right() -
           2 * (frame + kInnerMargin);
}

inline bool hasRoomForItems(const QComboBox& box) {
    QStyleOptionComboBox option;
    option.initFrom(&box);
    option.frame = box.hasFrame();
    const int room =
        box.style()
            ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box)
            .width();
    for (int i = 0; i < box.count(); ++i)
        if (box.fontMetrics().horizontalAdvance(box.itemText(i)) > room) return false;
    return true;
}

/// Every text of the list whole in its item, and every item whole in the list's height.
inline bool hasRoomForItems(const QListWidget& list) {
    for (int i = 0; i < list.count(); ++i) {
        const QRect place = list.visualItemRect(list.item(i));
        QStyleOptionViewItem option;
        option.initFrom(&list);
        option.rect = place;
        option.text = list.item(i)->text();
        option.features = QStyleOptionViewItem::HasDisplay | QStyleOptionViewItem::HasDecoration;
        option.decorationSize = list.iconSize();
        option.decorationPosition = QStyleOptionViewItem::Top;
        const QRect text =
            list.style()->subElementRect(QStyle::SE_ItemViewItemText, &option, &list);
        const int margin = list.style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1;
        const QFontMetrics metrics = list.fontMetrics();
        if (metrics.horizontalAdvance(option.text) > text.width() - 2 * margin ||
            metrics.height() > text.height() || place.bottom() >= list.viewport()->height())
            return false;
    }
    return true;
}

/// Whether every text in the widget has the room that it asks for.
inline bool hasRoom(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        if (label->wordWrap()) return label->height() >= label->heightForWidth(label->width());
        return label->width() >= label->minimumSizeHint().width();
    }
    if (const auto* spin = qobject_cast<const QSpinBox*>(&widget)) {
        const QString widest = spin->prefix() + QString::number(spin->maximum()) + spin->suffix();
        return spin->fontMetrics().horizontalAdvance(widest) <=
               roomOf(*spin->findChild<QLineEdit*>());
    }
    if (const auto* line = qobject_cast<const QLineEdit*>(&widget))
        return line->fontMetrics().horizontalAdvance(line->displayText()) <= roomOf(*line);
    if (const auto* box = qobject_cast<const QComboBox*>(&widget))
        return box->isEditable() || hasRoomForItems(*box);  // its line is looked at itself
    if (const auto* list = qobject_cast<const QListWidget*>(&widget)) return hasRoomForItems(*list);
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
        // The toolkit's file dialog makes its buttons of icons narrower than they ask for.
        const auto* tool = qobject_cast<const QToolButton*>(button);
        const bool iconAlone = tool != nullptr && !tool->icon().isNull() &&
                               tool->toolButtonStyle() == Qt::ToolButtonIconOnly;
        return button->width() >=
               (iconAlone ? button->iconSize().width() : button->minimumSizeHint().width());
    }
    return true;
}

/// Logical pixels between a button's border and what is written on it, at the nearer end; the whole
/// width for a button without anything.
inline int labelMargin(QPushButton& button) {
    const QImage labelled = button.grab().toImage();
    const QString text = button.text();
    const QIcon icon = button.icon();
    button.setText({});
    button.setIcon({});
    const QImage bare = button.grab().toImage();
    button.setText(text);
    button.setIcon(icon);
    int nearest = labelled.width();
    for (int x = 0; x < labelled.width(); ++x)
        for (int y = 0; y < labelled.height(); ++y)
            if (labelled.pixel(x, y) != bare.pixel(x, y))
                nearest = std::min({nearest, x, labelled.width() - 1 - x});
    return static_cast<int>(nearest / labelled.devicePixelRatio());
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
                                 qobject_cast<const QSpinBox*>(widget) != nullptr ||
                                 qobject_cast<const QListWidget*>(widget) != nullptr ||
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
