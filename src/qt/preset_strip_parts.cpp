#include "qt/preset_strip_parts.h"

#include <QApplication>
#include <QEvent>
#include <QLineEdit>
#include <QLinearGradient>
#include <QListView>
#include <QPainter>
#include <QScrollBar>

#include "qt/user_presets.h"

namespace skarnel {
namespace {

constexpr qreal kFrame = 2.5;    // logical pixels
constexpr qreal kRounding = 6;   // of the frame, a little more than the picture's
constexpr int kEndWidth = 36;    // of the mark at an end
constexpr QSizeF kArrow{6, 12};  // half a square on its corner
constexpr qreal kArrowLine = 2;
constexpr qreal kArrowMargin = 8;                  // from the strip's end
constexpr int kStepPercent = 75;                   // of what is seen, by one click
constexpr const char* kHasItsName = "hasItsName";  // a property of an editor

}  // namespace

void PresetTile::paint(QPainter* painter, const QStyleOptionViewItem& option,
                       const QModelIndex& index) const {
    QStyleOptionViewItem plain = option;
    plain.state &= ~QStyle::State_Selected;
    QStyledItemDelegate::paint(painter, plain, index);
    if (!(option.state & QStyle::State_Selected)) return;
    initStyleOption(&plain, index);
    const QStyle* style = plain.widget ? plain.widget->style() : QApplication::style();
    const QRectF icon =
        style->subElementRect(QStyle::SE_ItemViewItemDecoration, &plain, plain.widget);
    QRectF picture({}, QSizeF(plain.decorationSize));
    picture.moveCenter(icon.center());
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(option.palette.color(QPalette::Active, QPalette::Highlight), kFrame));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(picture, kRounding, kRounding);
    painter->restore();
}

QWidget* PresetTile::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const {
    QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto* line = qobject_cast<QLineEdit*>(editor))
        line->setMaxLength(UserPresets::kLongestName);
    return editor;
}

void PresetTile::setEditorData(QWidget* editor, const QModelIndex& index) const {
    if (editor->property(kHasItsName).toBool()) return;
    QStyledItemDelegate::setEditorData(editor, index);
    editor->setProperty(kHasItsName, true);
}

MoreLooks::MoreLooks(QListView& list, Side side)
    : QAbstractButton(&list), list_(list), side_(side) {
    setObjectName(side == Side::Left ? QStringLiteral("moreLooksLeft")
                                     : QStringLiteral("moreLooksRight"));
    setFocusPolicy(Qt::NoFocus);
    setAutoRepeat(true);
    setAccessibleName(tr("More looks"));
    list_.installEventFilter(this);
    QScrollBar* bar = list_.horizontalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, this, &MoreLooks::follow);
    connect(bar, &QScrollBar::valueChanged, this, &MoreLooks::follow);
    connect(this, &QAbstractButton::clicked, this, &MoreLooks::goOn);
    place();
    follow();
}

bool MoreLooks::isTowardsEnd() const {
    return (side_ == Side::Right) != list_.isRightToLeft();
}

void MoreLooks::place() {
    const int x = side_ == Side::Left ? 0 : list_.width() - kEndWidth;
    setGeometry(x, 0, kEndWidth, list_.height());
    raise();
}

void MoreLooks::follow() {
    const QScrollBar& bar = *list_.horizontalScrollBar();
    setVisible(isTowardsEnd() ? bar.value() < bar.maximum() : bar.value() > bar.minimum());
}

void MoreLooks::goOn() {
    QScrollBar& bar = *list_.horizontalScrollBar();
    const int step = bar.pageStep() * kStepPercent / 100;
    bar.setValue(bar.value() + (isTowardsEnd() ? step : -step));
}

bool MoreLooks::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &list_ &&
        (event->type() == QEvent::Resize || event->type() == QEvent::LayoutDirectionChange)) {
        place();
        follow();
    }
    return false;
}

void MoreLooks::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QColor ground = list_.window()->palette().color(QPalette::Window);
    QColor clear = ground;
    clear.setAlpha(0);
    const bool left = side_ == Side::Left;
    QLinearGradient fade(left ? width() : 0, 0, left ? 0 : width(), 0);
    fade.setColorAt(0, clear);
    fade.setColorAt(0.5, ground);
    painter.fillRect(rect(), fade);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(list_.window()->palette().color(QPalette::WindowText), kArrowLine,
                        Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const qreal tip = left ? kArrowMargin : width() - kArrowMargin;
    const qreal back = left ? tip + kArrow.width() : tip - kArrow.width();
    const qreal middle = height() / 2.0;
    const qreal half = kArrow.height() / 2;
    const QPointF arrow[] = {{back, middle - half}, {tip, middle}, {back, middle + half}};
    painter.drawPolyline(arrow, 3);
}

}  // namespace skarnel
