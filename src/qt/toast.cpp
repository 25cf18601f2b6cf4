#include "qt/toast.h"

#include <QAccessible>
#include <QEvent>
#include <QPainter>
#include <algorithm>

namespace skarnel {
namespace {
constexpr int kShownMilliseconds = 5000;
constexpr int kMargin = 16;

/// With places to break its lines at, which are not seen, in words that are wider than the room.
QString breakable(const QString& message, const QFontMetrics& metrics, int room) {
    constexpr QChar kZeroWidthSpace(0x200B);
    QStringList words = message.split(QLatin1Char(' '));
    for (QString& word : words) {
        if (metrics.horizontalAdvance(word) <= room) continue;
        for (qsizetype i = word.size() - 1; i > 0; --i)
            if (!word[i].isLowSurrogate()) word.insert(i, kZeroWidthSpace);
    }
    return words.join(QLatin1Char(' '));
}

}  // namespace

Toast::Toast(QWidget* host) : QLabel(host) {
    setObjectName(QStringLiteral("toast"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAlignment(Qt::AlignCenter);
    setContentsMargins(kMargin, 8, kMargin, 8);
    QPalette light = palette();
    light.setColor(QPalette::WindowText, kTextColor);
    setPalette(light);
    hide();
    hideTimer_.setSingleShot(true);
    connect(&hideTimer_, &QTimer::timeout, this, &QWidget::hide);
    host->installEventFilter(this);
}

void Toast::tell(const QString& message) {
    message_ = message;
    setAccessibleName(message);
    place();
    show();
    raise();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
    hideTimer_.start(kShownMilliseconds);
}

void Toast::place() {
    const QWidget* host = parentWidget();
    const int widest = std::max(80, host->width() - 2 * kMargin);
    setText(breakable(message_, fontMetrics(), widest - 2 * kMargin));
    setWordWrap(false);  // or the hint would be that of the lines broken before
    const QSize oneLine = sizeHint();
    setWordWrap(oneLine.width() > widest);
    const int width = std::min(widest, oneLine.width());
    const int height = wordWrap() ? heightForWidth(width) : oneLine.height();
    setGeometry((host->width() - width) / 2, host->height() - height - kMargin, width, height);
}

bool Toast::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && isVisible()) place();
    return QLabel::eventFilter(watched, event);
}

void Toast::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kGround);
    painter.drawRoundedRect(rect(), 8, 8);
    painter.end();
    QLabel::paintEvent(event);
}

}  // namespace skarnel
