// A short message over the picture that needs no answer and goes by itself.
#pragma once

#include <QLabel>
#include <QTimer>

namespace skarnel {

class Toast final : public QLabel {
    Q_OBJECT
  public:
    /// Lies at the lower edge of `host`.
    explicit Toast(QWidget* host);
    void tell(const QString& message);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void place();
    QTimer hideTimer_;
};

}  // namespace skarnel
