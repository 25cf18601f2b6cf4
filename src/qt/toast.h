// A short message over the picture that needs no answer and goes by itself.
#pragma once

#include <QColor>
#include <QLabel>
#include <QTimer>

namespace skarnel {

class Toast final : public QLabel {
    Q_OBJECT
  public:
    /// What it is painted with, over whatever the picture has there.
    static constexpr QColor kTextColor{255, 255, 255};
    static constexpr QColor kGround{32, 32, 32, 225};

    /// Lies at the lower edge of `host`.
    explicit Toast(QWidget* host);
    void tell(const QString& message);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void place();
    QString message_;
    QTimer hideTimer_;
};

}  // namespace skarnel
