// How long a page is waited for.
#pragma once

#include <QSize>

namespace skarnel {

/// How long a renderer bears with itself; milliseconds. After that it ends, and whoever waits for
/// it is told by the line: an engine that found no memory for one of its processes can wait for it
/// for ever.
struct RendererPatience {
    int start = 60'000;  // from its first step until it takes orders; a sound one takes a second
    int load = 30'000;   // from one sign of life to the next while a page loads
};

/// Of waiting for the answer of a renderer that has itself given up by then; milliseconds.
inline constexpr int kAnswerMilliseconds = 5'000;

/// A renderer that draws says so this often; milliseconds.
inline constexpr int kSignMilliseconds = 200;

/// The longest that it takes longer by for a page of that many pixels; milliseconds.
inline int pixelMilliseconds(QSize size) {
    constexpr double kPixelsAMillisecond = 2000;
    return static_cast<int>(double(size.width()) * size.height() / kPixelsAMillisecond);
}

/// How long the renderer waits for a page of that many pixels; milliseconds.
inline int paintPatience(QSize size) {
    constexpr int kPaintMilliseconds = 15'000;  // for a page of ordinary size
    return kPaintMilliseconds + pixelMilliseconds(size);
}

/// How long a renderer that draws a page of that many pixels may say nothing; milliseconds.
inline int silencePatience(QSize size) {
    constexpr int kSilenceMilliseconds = 4'000;  // for a page of ordinary size
    return kSilenceMilliseconds + pixelMilliseconds(size);
}

}  // namespace skarnel
