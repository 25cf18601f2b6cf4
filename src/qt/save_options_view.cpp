#include "qt/save_options_view.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStyleOptionSlider>
#include <QVBoxLayout>
#include <cmath>

#include "qt/cause_text.h"
#include "qt/wheel_guard.h"
#include "recipe/recipe_file.h"

namespace skarnel {
namespace {

enum Page { kPlainPage, kTiffPage, kPngPage, kQualityPage };

QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

bool hasQuality(std::string_view type) {
    return type == kUTTypeJPEG || type == kUTTypeJPEG2000 || type == kUTTypeWebP ||
           type == kUTTypeHEIF || type == kUTTypeAVIF || type == kUTTypeJPEGXL;
}

template <typename T>
std::optional<double> number(const ImageProperties& properties, const T& key) {
    const auto found = properties.find(key);
    if (found == properties.end()) return std::nullopt;
    if (const auto* whole = std::get_if<std::int64_t>(&found->second))
        return static_cast<double>(*whole);
    if (const auto* real = std::get_if<double>(&found->second)) return *real;
    return std::nullopt;
}

/// A double-click on the handle returns the value it had at first.
class ReturningSlider final : public QSlider {
  public:
    ReturningSlider(int lowest, int highest, int first) : QSlider(Qt::Horizontal) {
        setRange(lowest, highest);
        setValue(first);
        first_ = value();
        guardFromWheel(*this);
    }

  protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        QStyleOptionSlider option;
        initStyleOption(&option);
        const QRect handle =
            style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
        if (event->button() == Qt::LeftButton && handle.contains(event->position().toPoint()))
            setValue(first_);
        else
            mousePressEvent(event);
    }

  private:
    int first_;
};

/// A row's slider with a word for each of its ends.
QWidget* between(const QString& low, QWidget* slider, const QString& high) {
    auto* holder = new QWidget;
    auto* row = new QHBoxLayout(holder);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(new QLabel(low));
    row->addWidget(slider, 1);
    row->addWidget(new QLabel(high));
    return holder;
}

/// The form would take the whole row for what the label's key leads to.
QLabel* labelOf(QWidget& control, const QString& text) {
    auto* label = new QLabel(text);
    label->setBuddy(&control);
    return label;
}

}  // namespace

SaveOptionsView::SaveOptionsView(const ImageProperties& properties, const std::string& type,
                                 QWidget* parent)
    : QWidget(parent),
      initial_(properties),
      types_(new QComboBox),
      pages_(new QStackedWidget),
      column_(new QVBoxLayout(this)) {
    setObjectName(QStringLiteral("saveOptions"));
    column_->setContentsMargins(0, 8, 0, 0);
    auto* row = new QHBoxLayout;
    column_->addLayout(row);
    row->setSpacing(16);
    auto* form = new QFormLayout;
    types_->setAccessibleName(tr("Format"));
    types_->setObjectName(QStringLiteral("saveFormat"));
    for (const ImageType& known : imageTypes())
        if (known.canWrite) types_->addItem(toQt(known.name), toQt(known.identifier));
    guardFromWheel(*types_);
    form->addRow(tr("&Format:"), types_);
    form->addRow(tr("Resolution:"), new QLabel(resolutionText()));
    row->addLayout(form);
    row->addWidget(pages_, 1);
    pages_->addWidget(plainPage());
    pages_->addWidget(tiffPage());
    pages_->addWidget(pngPage());
    pages_->addWidget(qualityPage());
    setType(type);
    showPage();
    connect(types_, &QComboBox::currentIndexChanged, this, [this] {
        showPage();
        emit changed();
        emit typeChanged();
    });
}

void SaveOptionsView::offerRecipe(const std::string& text) {
    if (text.empty() || keepRecipe_ != nullptr) return;
    recipe_ = text;
    keepRecipe_ = new QCheckBox(tr("&Keep the settings inside the file"));
    keepRecipe_->setObjectName(QStringLiteral("keepRecipe"));
    column_->addWidget(keepRecipe_);
    connect(keepRecipe_, &QCheckBox::toggled, this, &SaveOptionsView::changed);
    showPage();
}

void SaveOptionsView::showWhetherRecipeFits() {
    const Result<void> room = roomForRecipe(type(), recipe_);
    keepRecipe_->setEnabled(room.hasValue());
    const bool tooLarge = !room && canCarryRecipe(type());
    keepRecipe_->setToolTip(tooLarge ? causeText(room.error())
                                     : tr("“Take Settings From” finds them there; for a picture of "
                                          "text they hold the text"));
}

QString SaveOptionsView::resolutionText() const {
    const auto dpi = number(initial_, kPropertyDpiWidth);
    if (!dpi || !(*dpi > 0)) return tr("none, as the source");
    return tr("%1 dpi, as the source").arg(QLocale().toString(*dpi, 'g', 4));
}

QWidget* SaveOptionsView::plainPage() {
    return new QWidget;
}

QWidget* SaveOptionsView::tiffPage() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    form->setContentsMargins(0, 0, 0, 0);
    tiffCompression_ = new QComboBox;
    tiffCompression_->setAccessibleName(tr("Compression"));
    tiffCompression_->addItem(tr("None"), 1);
    tiffCompression_->addItem(tr("LZW"), 5);
    tiffCompression_->addItem(tr("Deflate"), 8);
    const int now = static_cast<int>(number(initial_, kPropertyTiffCompression).value_or(5));
    const int found = tiffCompression_->findData(now);
    tiffCompression_->setCurrentIndex(found < 0 ? tiffCompression_->findData(5) : found);
    guardFromWheel(*tiffCompression_);
    form->addRow(tr("&Compression:"), tiffCompression_);
    connect(tiffCompression_, &QComboBox::currentIndexChanged, this, &SaveOptionsView::changed);
    return page;
}

QWidget* SaveOptionsView::pngPage() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    form->setContentsMargins(0, 0, 0, 0);
    pngLevel_ = new ReturningSlider(
        0, 9, static_cast<int>(number(initial_, kPropertyCompressionLevel).value_or(6)));
    pngLevel_->setAccessibleName(tr("Compression"));
    form->addRow(labelOf(*pngLevel_, tr("&Compression:")),
                 between(tr("Fast"), pngLevel_, tr("Small")));
    connect(pngLevel_, &QSlider::valueChanged, this, &SaveOptionsView::changed);
    return page;
}

QWidget* SaveOptionsView::qualityPage() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    form->setContentsMargins(0, 0, 0, 0);
    const double quality = number(initial_, kPropertyLossyQuality).value_or(0.9);
    const int percent = static_cast<int>(std::lround(std::clamp(quality, 0.0, 1.0) * 100));
    quality_ = new ReturningSlider(0, 100, percent);
    quality_->setAccessibleName(tr("Quality"));
    qualityNumber_ = new QSpinBox;
    qualityNumber_->setAccessibleName(tr("Quality, number"));
    qualityNumber_->setSuffix(QStringLiteral(" %"));
    qualityNumber_->setRange(0, 100);
    qualityNumber_->setValue(percent);
    guardFromWheel(*qualityNumber_);
    connect(quality_, &QSlider::valueChanged, qualityNumber_, &QSpinBox::setValue);
    connect(qualityNumber_, &QSpinBox::valueChanged, quality_, &QSlider::setValue);
    connect(quality_, &QSlider::valueChanged, this, &SaveOptionsView::changed);
    auto* row = new QHBoxLayout;
    row->addWidget(quality_, 1);
    row->addWidget(qualityNumber_);
    form->addRow(labelOf(*quality_, tr("&Quality:")), row);
    return page;
}

void SaveOptionsView::showPage() {
    const std::string chosen = type();
    if (keepRecipe_ != nullptr) showWhetherRecipeFits();
    pages_->setCurrentIndex(chosen == kUTTypeTIFF  ? kTiffPage
                            : chosen == kUTTypePNG ? kPngPage
                            : hasQuality(chosen)   ? kQualityPage
                                                   : kPlainPage);
}

std::string SaveOptionsView::type() const {
    return types_->currentData().toString().toStdString();
}

void SaveOptionsView::setType(std::string_view type) {
    const int found = types_->findData(toQt(type));
    if (found >= 0) types_->setCurrentIndex(found);
}

ImageProperties SaveOptionsView::properties() const {
    ImageProperties result = initial_;
    const std::string chosen = type();
    if (chosen == kUTTypeTIFF)
        result[std::string(kPropertyTiffCompression)] =
            std::int64_t{tiffCompression_->currentData().toInt()};
    if (chosen == kUTTypePNG)
        result[std::string(kPropertyCompressionLevel)] = std::int64_t{pngLevel_->value()};
    if (keepRecipe_ != nullptr && keepRecipe_->isChecked() && roomForRecipe(chosen, recipe_))
        result[std::string(kPropertyRecipe)] = recipe_;
    if (hasQuality(chosen)) result[std::string(kPropertyLossyQuality)] = quality_->value() / 100.0;
    return result;
}

QString SaveOptionsView::extension() const {
    return toQt(preferredExtensionOfType(type()).value_or("tiff"));
}

QString SaveOptionsView::nameFilter() const {
    QStringList patterns;
    if (const ImageType* known = imageTypeWithIdentifier(type()))
        for (const std::string_view each : known->extensions)
            patterns << QStringLiteral("*.%1").arg(toQt(each));
    return QStringLiteral("%1 (%2)").arg(types_->currentText(), patterns.join(QLatin1Char(' ')));
}

QString SaveOptionsView::renamed(const QString& fileName) const {
    const QString suffix = QFileInfo(fileName).suffix();
    const ImageType* known = imageTypeWithExtension(suffix.toStdString());
    if (known != nullptr && known->identifier == type()) return fileName;
    // Only a picture's extension is replaced: in "Beach.2010 Reflection" the end is a part of the
    // name.
    const QString stem = known == nullptr ? fileName : fileName.chopped(suffix.size() + 1);
    return stem.isEmpty() ? fileName : stem + QLatin1Char('.') + extension();
}

void SaveOptionsView::followName(const QString& fileName) {
    const ImageType* known = imageTypeWithExtension(QFileInfo(fileName).suffix().toStdString());
    if (known == nullptr || !known->canWrite || known->identifier == type()) return;
    setType(known->identifier);
}

}  // namespace skarnel
