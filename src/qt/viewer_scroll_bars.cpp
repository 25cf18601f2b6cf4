#include "qt/viewer_scroll_bars.h"

#include <QScrollBar>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>

namespace skarnel {
namespace {

constexpr double kMostScroll = 1e9;  // device pixels, within an int
constexpr int kStepsAPage = 20;

void show(QScrollBar& bar, double most, double value, double page) {
    const QSignalBlocker quiet(&bar);
    bar.setRange(0, static_cast<int>(std::min(most, kMostScroll)));
    bar.setPageStep(static_cast<int>(page));
    bar.setSingleStep(std::max(1, static_cast<int>(page) / kStepsAPage));
    bar.setValue(static_cast<int>(std::lround(std::min(value, kMostScroll))));
}

}  // namespace

ViewerScrollBars::ViewerScrollBars(QWidget& viewer)
    : QObject(&viewer),
      horizontal_(new QScrollBar(Qt::Horizontal, &viewer)),
      vertical_(new QScrollBar(Qt::Vertical, &viewer)) {
    const auto moved = [this] { emit scrolled(horizontal_->value(), vertical_->value()); };
    for (QScrollBar* bar : {horizontal_, vertical_}) {
        bar->setFocusPolicy(Qt::NoFocus);
        bar->setCursor(Qt::ArrowCursor);
        bar->hide();
        connect(bar, &QScrollBar::valueChanged, this, moved);
    }
    // A picture has its left edge on the left, whatever the direction of writing.
    horizontal_->setLayoutDirection(Qt::LeftToRight);
    horizontal_->setAccessibleName(tr("Picture, sideways"));
    vertical_->setAccessibleName(tr("Picture, up and down"));
}

void ViewerScrollBars::place(const ViewTransform& view, QSize size) {
    const CGPoint range = view.scrollRange();
    const CGSize port = view.viewport();
    const bool across = range.x > 0 || !autohides_;
    const bool down = range.y > 0 || !autohides_;
    show(*horizontal_, range.x, view.scroll().x, port.width);
    show(*vertical_, range.y, view.scroll().y, port.height);
    const int thickness = vertical_->sizeHint().width();
    horizontal_->setGeometry(0, size.height() - thickness, size.width() - (down ? thickness : 0),
                             thickness);
    vertical_->setGeometry(size.width() - thickness, 0, thickness,
                           size.height() - (across ? thickness : 0));
    horizontal_->setVisible(across);
    vertical_->setVisible(down);
}

}  // namespace skarnel
