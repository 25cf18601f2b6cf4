#include "qt/accessible_parts.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QLocale>

#include "qt/announcer.h"
#include "qt/color_well.h"
#include "qt/float_slider.h"
#include "qt/number_text.h"
#include "qt/view_transform.h"
#include "qt/viewer.h"

namespace skarnel {
namespace {

constexpr double kPercent = 100;

/// Asked without drawing them.
QSize sizeInPixels(const Viewer& viewer) {
    const CGSize size = viewer.sheet().view.imageSize();
    return QSizeF(size.width, size.height).toSize();
}

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

/// What the keyboard does on the picture with this tool.
QString hintOfTool(IKToolMode mode) {
    switch (mode) {
        case IKToolModeMove:
            return {};
        case IKToolModeSelect:
            return QCoreApplication::translate(
                "AccessibleView",
                "Return begins a selection; arrow keys move it, with Shift they change its size, "
                "with Ctrl they go further; Escape takes it away");
        case IKToolModeCrop:
            return QCoreApplication::translate(
                "AccessibleView",
                "Return begins a frame; arrow keys move it, with Shift they change its size, with "
                "Ctrl they go further; Return crops, Escape gives up");
        case IKToolModeRotate:
            return QCoreApplication::translate(
                "AccessibleView",
                "Left and right arrow keys turn the picture, with Shift in steps; Escape turns it "
                "back");
        case IKToolModeAnnotate:
            return QCoreApplication::translate(
                "AccessibleView",
                "Return puts a mark in the middle; arrow keys move it, with Shift they change its "
                "size, with Ctrl they go further; Return keeps it, Escape takes it away");
    }
    return {};
}

QString whole(double number) {
    return QLocale().toString(number, 'f', 0);
}

QString boxText(const QString& form, CGRect box) {
    return form.arg(whole(box.width), whole(box.height), whole(box.x), whole(box.y));
}

QString marksText(const std::vector<Annotation>& marks) {
    const Annotation& last = marks.back();
    return QCoreApplication::translate("AccessibleView",
                                       "marks: %1, the last from %2, %3 to %4, %5")
        .arg(whole(static_cast<double>(marks.size())), whole(last.from.x), whole(last.from.y),
             whole(last.to.x), whole(last.to.y));
}

/// What tools have done, each with its place in image pixels from the top left.
QStringList editTexts(const ViewerSheet& sheet) {
    const CGRect all{0, 0, sheet.view.imageSize().width, sheet.view.imageSize().height};
    QStringList parts;
    if (sheet.view.part() != all)
        parts << boxText(
            QCoreApplication::translate("AccessibleView", "cropped to %1 by %2 at %3, %4"),
            sheet.view.part());
    if (sheet.view.rotation() != 0)
        parts << QCoreApplication::translate("AccessibleView", "turned by %1°")
                     .arg(QLocale().toString(sheet.view.rotation(), 'f', 0));
    if (sheet.selection)
        parts << boxText(
            QCoreApplication::translate("AccessibleView", "selected %1 by %2 at %3, %4"),
            *sheet.selection);
    if (!sheet.annotations.empty()) parts << marksText(sheet.annotations);
    return parts;
}

/// Its value is the zoom, in percent: events of a new value are passed on for such objects alone.
class PictureView final : public QAccessibleWidget,
                          public QAccessibleImageInterface,
                          public QAccessibleValueInterface {
  public:
    explicit PictureView(Viewer& viewer)
        : QAccessibleWidget(&viewer, QAccessible::Graphic), viewer_(viewer) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ImageInterface)
            return static_cast<QAccessibleImageInterface*>(this);
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Description) return description();
        if (kind != QAccessible::Value || !viewer_.hasImage()) return QAccessibleWidget::text(kind);
        return pictureText(viewer_);
    }

    QString imageDescription() const override { return text(QAccessible::Description); }
    QSize imageSize() const override { return sizeInPixels(viewer_); }
    QPoint imagePosition() const override { return rect().topLeft(); }

    QVariant currentValue() const override { return kPercent * viewer_.zoomFactor(); }
    void setCurrentValue(const QVariant& value) override {
        viewer_.setZoomFactor(value.toDouble() / kPercent);
    }
    QVariant maximumValue() const override { return kPercent * ViewTransform::kMaxFactor; }
    QVariant minimumValue() const override { return kPercent * ViewTransform::kMinFactor; }
    QVariant minimumStepSize() const override { return 0.0; }  // any

  private:
    QString description() const {
        // Not every screen reader asks a picture for a value, so the name stands here as well.
        QStringList parts{viewer_.pictureName(), QAccessibleWidget::text(QAccessible::Description),
                          hintOfTool(viewer_.toolMode())};
        parts.removeAll(QString());
        return parts.join(QLatin1String(". "));
    }

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

class AnnouncementView final : public QAccessibleObject {
  public:
    explicit AnnouncementView(Announcer& announcer)
        : QAccessibleObject(&announcer), announcer_(announcer) {}

    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(announcer_.parent());
    }
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::Notification; }
    QAccessible::State state() const override { return {}; }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? announcer_.message() : QString();
    }

  private:
    Announcer& announcer_;
};

QAccessibleInterface* viewOf(const QString& /*className*/, QObject* object) {
    if (auto* slider = qobject_cast<FloatSlider*>(object)) return new SliderView(*slider);
    if (auto* viewer = qobject_cast<Viewer*>(object)) return new PictureView(*viewer);
    if (auto* well = qobject_cast<ColorWell*>(object)) return new ColorView(*well);
    if (auto* announcer = qobject_cast<Announcer*>(object)) return new AnnouncementView(*announcer);
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
    QAccessibleValueChangeEvent event(&viewer, kPercent * viewer.zoomFactor());
    QAccessible::updateAccessibility(&event);
}

void announcePicture(Viewer& viewer) {
    announceValue(viewer);
    QAccessibleEvent event(&viewer, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
}

QString pictureText(const Viewer& viewer) {
    const QSize size = sizeInPixels(viewer);
    const QLocale locale;
    QStringList parts{viewer.pictureName(),
                      QCoreApplication::translate("AccessibleView", "%1 by %2 pixels, zoom %3 %")
                          .arg(locale.toString(size.width()), locale.toString(size.height()),
                               locale.toString(viewer.zoomFactor() * 100, 'f', 0))};
    parts.removeAll(QString());
    return (parts + editTexts(viewer.sheet())).join(QStringLiteral("; "));
}

void announceColor(ColorWell& well) {
    QAccessibleEvent event(&well, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
}

void announceTool(Viewer& viewer) {
    QAccessibleEvent event(&viewer, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
}

}  // namespace skarnel
