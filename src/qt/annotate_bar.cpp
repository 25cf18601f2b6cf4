#include "qt/annotate_bar.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPainter>
#include <QToolButton>

#include "qt/icons.h"
#include "qt/viewer.h"

namespace skarnel {
namespace {

struct MarkColor {
    const char* name;
    QColor color;
};

const MarkColor kMarkColors[] = {
    {QT_TRANSLATE_NOOP("skarnel::AnnotateBar", "Red"), QColor(0xFF, 0x3B, 0x30)},
    {QT_TRANSLATE_NOOP("skarnel::AnnotateBar", "Yellow"), QColor(0xFF, 0xCC, 0x00)},
    {QT_TRANSLATE_NOOP("skarnel::AnnotateBar", "Blue"), QColor(0x0A, 0x84, 0xFF)},
    {QT_TRANSLATE_NOOP("skarnel::AnnotateBar", "White"), QColor(0xFF, 0xFF, 0xFF)},
};

QIcon dotIcon(const QColor& color) {
    QPixmap dot(64, 64);
    dot.fill(Qt::transparent);
    QPainter painter(&dot);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(128, 128, 128), 3));
    painter.setBrush(color);
    painter.drawEllipse(QRectF(12, 12, 40, 40));
    return QIcon(dot);
}

QToolButton* flatButton(QWidget* parent, const QString& name) {
    auto* button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setToolTip(name);
    button->setAccessibleName(name);
    button->setIconSize({20, 20});
    return button;
}

}  // namespace

AnnotateBar::AnnotateBar(Viewer& viewer) : QFrame(&viewer), viewer_(viewer) {
    setFrameStyle(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setCursor(Qt::ArrowCursor);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(6, 4, 6, 4);
    row->setSpacing(2);
    auto* shapes = new QButtonGroup(this);
    const struct {
        const char* icon;
        QString name;
        AnnotationShape shape;
    } kinds[] = {{"mark-ellipse", tr("Ellipse"), AnnotationShape::Ellipse},
                 {"mark-arrow", tr("Arrow"), AnnotationShape::Arrow},
                 {"mark-text", tr("Text"), AnnotationShape::Text}};
    for (const auto& kind : kinds) {
        QToolButton* button = flatButton(this, kind.name);
        button->setIcon(themedIcon(kind.icon));
        button->setCheckable(true);
        button->setChecked(kind.shape == AnnotationShape::Ellipse);
        shapes->addButton(button);
        row->addWidget(button);
        connect(button, &QToolButton::clicked, this,
                [this, shape = kind.shape] { viewer_.setAnnotationShape(shape); });
    }
    row->addSpacing(8);
    row->addWidget(colorButtons());
    row->addSpacing(8);
    QToolButton* clear = flatButton(this, tr("Remove all marks"));
    clear->setIcon(themedIcon("mark-clear"));
    row->addWidget(clear);
    connect(clear, &QToolButton::clicked, this, [this] { viewer_.clearAnnotations(); });
}

QWidget* AnnotateBar::colorButtons() {
    auto* holder = new QWidget(this);
    auto* row = new QHBoxLayout(holder);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    auto* colors = new QButtonGroup(this);
    for (const MarkColor& mark : kMarkColors) {
        QToolButton* button = flatButton(holder, tr(mark.name));
        button->setIcon(dotIcon(mark.color));
        button->setCheckable(true);
        button->setChecked(colors->buttons().isEmpty());
        colors->addButton(button);
        row->addWidget(button);
        connect(button, &QToolButton::clicked, this,
                [this, color = mark.color] { viewer_.setAnnotationColor(color); });
    }
    return holder;
}

}  // namespace skarnel
