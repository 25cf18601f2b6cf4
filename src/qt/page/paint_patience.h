// How long the drawing of a page is waited for.
#pragma once

#include <QSize>

namespace skarnel {

/// Of waiting for the answer of a renderer that has itself given up by then; milliseconds.
inline constexpr int kAnswerMilliseconds = 5'000;

/// How long the renderer waits for a page of that many pixels; milliseconds.
inline int paintPatience(QSize size) {
    constexpr int kPaintMilliseconds = 15'000;         // for a page of ordinary size ...
    constexpr double kPaintPixelsAMillisecond = 2000;  // ... and more for one of many pixels
    const double pixels = double(size.width()) * size.height();
    return kPaintMilliseconds + static_cast<int>(pixels / kPaintPixelsAMillisecond);
}

}  // namespace skarnel
