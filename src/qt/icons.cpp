#include "qt/icons.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>
#include <cmath>
#include <optional>

#include "util/resources/resource_path.h"

namespace skarnel {
namespace {

QByteArray svgBytes(const QString& name) {
    const auto path = findResource("icons/" + name.toStdString() + ".svg");
    if (!path) return {};
    QFile file(QString::fromStdString(*path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Draws the lines in the colour that the palette has for text on buttons at that moment, so that
/// a change of theme needs nothing but a repaint.
class TintedEngine final : public QIconEngine {
  public:
    explicit TintedEngine(QByteArray svg) : svg_(std::move(svg)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const double ratio =
            painter->device() != nullptr ? painter->device()->devicePixelRatioF() : 1;
        QPixmap drawn = scaledPixmap(rect.size() * ratio, mode, state, ratio);
        painter->drawPixmap(rect, drawn);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1.0);
    }

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/,
                         qreal /*scale*/) override {
        const QColor color = QApplication::palette().color(group(mode), role(mode));
        if (cache_.size() != size || cachedColor_ != color) {
            cache_ = draw(size, color);
            cachedColor_ = color;
        }
        return cache_;
    }

    QIconEngine* clone() const override { return new TintedEngine(svg_); }
    bool isNull() override { return svg_.isEmpty(); }
    QString key() const override { return QStringLiteral("skarnel-tinted"); }

  private:
    static QPalette::ColorGroup group(QIcon::Mode mode) {
        return mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    }
    static QPalette::ColorRole role(QIcon::Mode mode) {
        return mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::ButtonText;
    }
    QPixmap draw(const QSize& size, const QColor& color) const {
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QSvgRenderer renderer(svg_);
        QPainter painter(&drawn);
        renderer.render(&painter, QRectF(QPointF(), size));
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(drawn.rect(), color);
        return drawn;
    }

    QByteArray svg_;
    QPixmap cache_;
    QColor cachedColor_;
};

}  // namespace

QIcon themedIcon(const QString& name) {
    QByteArray svg = svgBytes(name);
    if (svg.isEmpty()) return {};
    return QIcon(new TintedEngine(std::move(svg)));
}

QIcon applicationIcon() {
    const auto path = findResource("icons/skarnel-mark.svg");
    return path ? QIcon(QString::fromStdString(*path)) : QIcon();
}

}  // namespace skarnel
