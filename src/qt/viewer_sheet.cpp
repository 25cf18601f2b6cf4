// What a viewer's sheet keeps when its picture changes.
#include <algorithm>
#include <cmath>
#include <utility>

#include "qt/viewer_tools.h"

namespace skarnel {
namespace {

CGRect scaledRect(CGRect rect, double x, double y) {
    const double left = std::round(rect.minX() * x);
    const double top = std::round(rect.minY() * y);
    return {left, top, std::max(1.0, std::round(rect.maxX() * x) - left),
            std::max(1.0, std::round(rect.maxY() * y) - top)};
}

}  // namespace

void ViewerSheet::setImageSize(CGSize size) {
    const CGSize before = view.imageSize();
    if (before == size) return;
    const bool carries = before.width > 0 && before.height > 0 && size.width > 0 && size.height > 0;
    const bool whole = showsWhole();
    const CGRect part = view.part();
    view.setImageSize(size);
    if (!carries) return;
    const double x = size.width / before.width;
    const double y = size.height / before.height;
    for (Annotation& annotation : annotations) annotation = scaledAnnotation(annotation, x, y);
    if (!whole) view.setPart(scaledRect(part, x, y));
    for (std::optional<CGRect>* selected : {&selection, &setAside}) {
        if (!*selected) continue;
        const CGRect scaled = scaledRect(**selected, x, y);
        *selected = pixelsBetween({scaled.minX(), scaled.minY()}, {scaled.maxX(), scaled.maxY()},
                                  view.part());
    }
}

void ViewerSheet::discardEdits() {
    selection.reset();
    setAside.reset();
    annotations.clear();
    view.setPart({});
    view.setRotation(0);
}

void ViewerSheet::takeEdits(ViewerSheet from) {
    from.setImageSize(view.imageSize());
    selection = from.setAside ? from.setAside : from.selection;
    setAside.reset();
    annotations = std::move(from.annotations);
    view.setPart(from.showsWhole() ? CGRect{} : from.view.part());
    view.setRotation(from.view.rotation());
}

bool ViewerSheet::showsWhole() const {
    return view.part() == CGRect{0, 0, view.imageSize().width, view.imageSize().height};
}

bool ViewerSheet::hasEdits() const {
    return selection || !annotations.empty() || view.rotation() != 0 || !showsWhole();
}

}  // namespace skarnel
