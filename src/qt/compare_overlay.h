// The picture alone, shown in place of the result for as long as a key is held.
#pragma once

#include <QImage>
#include <QWidget>
#include <functional>
#include <optional>

#include "imaging/cgimage.h"

namespace skarnel {

/// Lies over the widget that it is made for and follows its size. The space bar shows it while that
/// widget has the focus; letting go, or losing the focus, hides it.
class CompareOverlay final : public QWidget {
    Q_OBJECT
  public:
    using Source = std::function<std::optional<CGImage>()>;
    using Ground = std::function<QColor()>;

    CompareOverlay(QWidget& over, Source source, Ground ground);

    void start();
    void stop();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    bool isCompareKey(const QEvent& event) const;

    QWidget& over_;
    Source source_;
    Ground ground_;
    QImage picture_;
};

}  // namespace skarnel
