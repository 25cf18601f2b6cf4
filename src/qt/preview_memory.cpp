#include "qt/preview_memory.h"

#include "imaging/pixel_memory.h"
#include "qt/viewer.h"

namespace skarnel {
namespace {

/// The picture that is made and the one before it, which the viewer still shows, and the larger
/// one below.
constexpr std::size_t kPictures = 3;
/// What a turn keeps of its canvas between two steps, in pictures: at most a canvas as high as a
/// picture and its reflection.
constexpr std::size_t kTurnedCanvas = 2;

}  // namespace

PreviewMemory::PreviewMemory(Viewer& viewer) : QObject(&viewer), viewer_(viewer) {
    work_.setInterval(0);
    connect(&work_, &QTimer::timeout, this, &PreviewMemory::step);
    connect(&viewer, &Viewer::painted, this, &PreviewMemory::notice);
}

/// After every repaint, since other work may have taken what was ready; without need it costs one
/// look.
void PreviewMemory::notice() {
    if (viewer_.sheet().view.isEmpty()) return;
    const CGSize port = viewer_.viewportSize();
    pictureBytes_ = std::size_t{4} * static_cast<std::size_t>(port.width) *
                    static_cast<std::size_t>(port.height);
    work_.start();
}

void PreviewMemory::step() {
    if (preparePixelMemory(kTurnedCanvas * pictureBytes_, 1) &&
        preparePixelMemory(pictureBytes_, kPictures))
        work_.stop();
}

}  // namespace skarnel
