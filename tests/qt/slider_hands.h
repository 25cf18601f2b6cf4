// What a hand does to a slider.
#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QStyleOptionSlider>
#include <QTest>
#include <QWheelEvent>

#include "qt/float_slider.h"

namespace skarnel {

/// Where the handle's middle is.
inline QPoint handleAt(const QSlider& slider) {
    QStyleOptionSlider option;
    option.initFrom(&slider);
    option.minimum = slider.minimum();
    option.maximum = slider.maximum();
    option.sliderPosition = slider.sliderPosition();
    option.sliderValue = slider.value();
    option.orientation = Qt::Horizontal;
    return slider.style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider)
        .center();
}

/// Pulls the handle by so many pixels, in steps, and lets it go.
inline void dragHandle(FloatSlider& slider, int byPixels) {
    constexpr int kMoves = 5;
    const QPoint from = handleAt(slider);
    QTest::mousePress(&slider, Qt::LeftButton, {}, from);
    for (int i = 1; i <= kMoves; ++i)
        QTest::mouseMove(&slider, from + QPoint(byPixels * i / kMoves, 0));
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, from + QPoint(byPixels, 0));
}

/// Towards the side on which the handle has room.
inline int roomyPixels(const FloatSlider& slider) {
    return slider.value() > slider.maximum() / 2 ? -30 : 30;
}

inline void turnWheel(QWidget& widget, int units, Qt::KeyboardModifiers modifiers = {}) {
    const QPointF middle = widget.rect().center();
    QWheelEvent turn(middle, widget.mapToGlobal(middle), {}, {0, units}, Qt::NoButton, modifiers,
                     Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &turn);
}

}  // namespace skarnel
