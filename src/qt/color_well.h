// A button that shows a colour, opacity included, and asks for the colour panel.
#pragma once

#include <QAbstractButton>
#include <QColor>

namespace skarnel {

class ColorWell final : public QAbstractButton {
    Q_OBJECT
  public:
    explicit ColorWell(QWidget* parent = nullptr);

    QColor color() const { return color_; }
    void setColor(const QColor& color);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QColor color_ = Qt::black;
};

}  // namespace skarnel
