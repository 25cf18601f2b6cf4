#include "qt/accessible_parts.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QLocale>

#include "qt/color_well.h"
#include "qt/float_slider.h"
#include "qt/number_text.h"
#include "qt/viewer.h"

namespace skarnel {
namespace {

class SliderView final : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    explicit SliderView(FloatSlider& slider)
        : QAccessibleWidget(&slider, QAccessible::Slider), slider_(slider) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Value) return QAccessibleWidget::text(kind);
        return numberText(slider_.floatValue()) + QLatin1Char(' ') +
               QString::fromLatin1(slider_.range().unit);
    }

    QVariant currentValue() const override { return static_cast<double>(slider_.floatValue()); }
    void setCurrentValue(const QVariant& value) override {
        slider_.moveTo(positionOfValue(slider_.range(), value.toFloat()));
    }
    QVariant maximumValue() const override {
        return static_cast<double>(slider_.range().travelMax);
    }
    QVariant minimumValue() const override {
        return static_cast<double>(slider_.range().travelMin);
    }
    QVariant minimumStepSize() const override { return static_cast<double>(slider_.range().step); }

  private:
    FloatSlider& slider_;
};

class PictureView final : public QAccessibleWidget, public QAccessibleImageInterface {
  public:
    explicit PictureView(Viewer& viewer)
        : QAccessibleWidget(&viewer, QAccessible::Graphic), viewer_(viewer) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ImageInterface)
            return static_cast<QAccessibleImageInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Value || viewer_.shownImage().isNull())
            return QAccessibleWidget::text(kind);
        const QLocale locale;
        return QCoreApplication::translate("AccessibleView", "%1 by %2 pixels, zoom %3 %")
            .arg(locale.toString(imageSize().width()), locale.toString(imageSize().height()),
                 locale.toString(viewer_.zoomFactor() * 100, 'f', 0));
    }

    QString imageDescription() const override { return text(QAccessible::Description); }
    QSize imageSize() const override { return viewer_.shownImage().size(); }
    QPoint imagePosition() const override { return rect().topLeft(); }

  private:
    Viewer& viewer_;
};

class ColorView final : public QAccessibleWidget {
  public:
    explicit ColorView(ColorWell& well)
        : QAccessibleWidget(&well, QAccessible::Button), well_(well) {}

    /// Not every screen reader asks a button for a value, so the colour comes with the description.
    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Value) return colorText();
        if (kind != QAccessible::Description) return QAccessibleWidget::text(kind);
        return colorText() + QLatin1String(". ") + QAccessibleWidget::text(kind);
    }
    QStringList actionNames() const override {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name == pressAction()) return well_.click();
        QAccessibleWidget::doAction(name);
    }
    QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

  private:
    QString colorText() const {
        const QColor color = well_.color();
        QString opaque = color.name(QColor::HexRgb).toUpper();
        if (color.alpha() == 255) return opaque;
        return QCoreApplication::translate("AccessibleView", "%1, opacity %2 %")
            .arg(opaque, QLocale().toString(color.alphaF() * 100, 'f', 0));
    }

    ColorWell& well_;
};

QAccessibleInterface* viewOf(const QString& /*className*/, QObject* object) {
    if (auto* slider = qobject_cast<FloatSlider*>(object)) return new SliderView(*slider);
    if (auto* viewer = qobject_cast<Viewer*>(object)) return new PictureView(*viewer);
    if (auto* well = qobject_cast<ColorWell*>(object)) return new ColorView(*well);
    return nullptr;
}

}  // namespace

void describeOwnWidgets() {
    QAccessible::installFactory(viewOf);  // which ignores one that is there already
}

void announceValue(FloatSlider& slider) {
    QAccessibleValueChangeEvent event(&slider, static_cast<double>(slider.floatValue()));
    QAccessible::updateAccessibility(&event);
}

void announceValue(Viewer& viewer) {
    QAccessibleValueChangeEvent event(&viewer, viewer.zoomFactor());
    QAccessible::updateAccessibility(&event);
}

void announceColor(ColorWell& well) {
    QAccessibleEvent event(&well, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
}

}  // namespace skarnel
