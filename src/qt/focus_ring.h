// Shows that a widget which paints all of itself has the keyboard's focus.
#pragma once

#include <QWidget>

namespace skarnel {

/// A thin frame over the edge of the widget that it is made for, there while a key has brought the
/// focus to it; who clicks knows where they are. Seen on any ground: one line of it is light and
/// the other is not.
class FocusRing final : public QWidget {
    Q_OBJECT
  public:
    explicit FocusRing(QWidget& around);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void place();
    QWidget& around_;
};

}  // namespace skarnel
