#include "qt/settings_panel.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

#include "qt/color_well.h"
#include "qt/entry_field.h"
#include "qt/float_slider.h"
#include "qt/number_field.h"
#include "qt/settings_model.h"

namespace skarnel {
namespace {

constexpr int kMargin = 16;
constexpr int kRowGap = 8;
constexpr int kTightRowGap = 5;  // where a font is tall and the window low
constexpr int kGroupGap = 14;

QLabel* heading(const QString& text) {
    auto* label = new QLabel(text);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

/// A quieter label for units; the role follows every change of theme.
QLabel* unitLabel(const QString& text) {
    auto* label = new QLabel(text);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

}  // namespace

SettingsPanel::SettingsPanel(SettingsModel& model, QWidget* parent)
    : QScrollArea(parent), model_(model) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    auto* sheet = new QWidget;
    auto* column = new QVBoxLayout(sheet);
    column->setContentsMargins(kMargin, kMargin - 4, kMargin, kMargin);
    column->setSpacing(kRowGap);
    addSettings(*column);
    addBackground(*column);
    column->addStretch(1);
    reset_ = new QPushButton(tr("&Reset"));
    reset_->setToolTip(tr("Return every setting to its default"));
    column->addWidget(reset_);
    setWidget(sheet);
    setAccessibleName(tr("Settings"));
    connect(&model_, &SettingsModel::refreshed, this, &SettingsPanel::refresh);
    connect(&model_, &SettingsModel::numberChanged, this,
            [this](std::string_view key, float value) {
                row(key).slider->setFloatValue(value);
                row(key).field->setNumber(value);
            });
    refresh();
}

void SettingsPanel::addSettings(QVBoxLayout& column) {
    // One grid for all groups, so that every slider begins and ends on the same line.
    grid_ = new QGridLayout;
    grid_->setHorizontalSpacing(8);
    grid_->setVerticalSpacing(kRowGap);
    grid_->setColumnStretch(1, 1);
    int line = 0;
    for (std::size_t i = 0; i < kSettingRanges.size(); ++i) {
        const char* title = i == 0   ? QT_TR_NOOP("Reflection")
                            : i == 3 ? QT_TR_NOOP("Fade")
                            : i == 6 ? QT_TR_NOOP("Perspective")
                                     : nullptr;
        if (title != nullptr) {
            if (line > 0) grid_->setRowMinimumHeight(line++, kGroupGap - kRowGap);
            grid_->addWidget(heading(tr(title)), line++, 0, 1, 4);
        }
        addRow(*grid_, line++, kSettingRanges[i], rows_[i]);
    }
    column.addLayout(grid_);
}

void SettingsPanel::addRow(QGridLayout& grid, int line, const SettingRange& range, Row& row) {
    const QString name = tr(range.label);
    auto* label = new QLabel(name);
    row.slider = new FloatSlider(range);
    row.field = new NumberField(range);
    label->setBuddy(row.field);
    for (QWidget* widget : {static_cast<QWidget*>(row.slider), static_cast<QWidget*>(row.field),
                            static_cast<QWidget*>(label)})
        widget->setToolTip(tr(range.hint));
    row.slider->setAccessibleName(name);
    row.field->setAccessibleName(tr("%1, number").arg(name));
    row.slider->setAccessibleDescription(tr(range.hint));
    row.field->setAccessibleDescription(tr(range.hint));
    row.slider->setObjectName(QString::fromLatin1(range.key.data()) + QStringLiteral("Slider"));
    row.field->setObjectName(QString::fromLatin1(range.key.data()) + QStringLiteral("TextField"));
    grid.addWidget(label, line, 0);
    grid.addWidget(row.slider, line, 1);
    grid.addWidget(row.field, line, 2);
    grid.addWidget(unitLabel(QString::fromUtf8(range.unit)), line, 3);
    bindRow(range, row);
}

void SettingsPanel::bindRow(const SettingRange& range, const Row& row) {
    const QString name = tr(range.label);
    SettingsModel* model = &model_;
    connect(row.slider, &FloatSlider::gestureBegan, model,
            [model, name] { model->beginGesture(name); });
    connect(row.slider, &FloatSlider::gestureEnded, model, &SettingsModel::endGesture);
    connect(row.slider, &FloatSlider::wheelTurning, model,
            [model, name] { model->continueGesture(name); });
    connect(row.slider, &FloatSlider::edited, model, [model, name, key = range.key](float value) {
        // Undo in the middle of a drag ends the gesture; what the hand does then is another.
        model->continueGesture(name);
        model->editNumber(key, value);
    });
    connect(row.slider, &FloatSlider::defaultAsked, model, [model, name, key = range.key] {
        model->changeNumber(name, key, settingDefault(key));
    });
    connect(row.field, &NumberField::stepped, model, [model, name, key = range.key](float value) {
        model->continueGesture(name);
        model->editNumber(key, value);
    });
    connect(row.field, &NumberField::stepsEnded, model, &SettingsModel::endGesture);
    connect(row.field, &NumberField::committed, model,
            [model, name, key = range.key](float value) { model->changeNumber(name, key, value); });
}

void SettingsPanel::addBackground(QVBoxLayout& column) {
    column.addSpacing(kGroupGap - kRowGap);
    column.addWidget(heading(tr("Background")));
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    colorWell_ = new ColorWell;
    colorWell_->setAccessibleName(tr("Background colour"));
    colorWell_->setToolTip(tr("Choose the colour behind the picture"));
    colorWell_->setObjectName(QStringLiteral("colorWell"));
    colorText_ = new EntryField;
    colorText_->setAccessibleName(tr("Background colour as #RRGGBB"));
    colorText_->setToolTip(tr("The background colour as #RRGGBB"));
    colorText_->setMaxLength(16);
    colorText_->setObjectName(QStringLiteral("resultViewBackgroundColorTextField"));
    colorText_->setFixedWidth(
        colorText_->fontMetrics().horizontalAdvance(QStringLiteral("#DDDDDDDD")) + 16);
    row->addWidget(colorWell_);
    row->addWidget(colorText_);
    row->addStretch(1);
    column.addLayout(row);
    applyBackground_ = new QCheckBox(tr("Fi&ll the result with it"));
    applyBackground_->setToolTip(
        tr("Lay the background colour under the result, so that it is saved too"));
    applyBackground_->setObjectName(QStringLiteral("applyBackgroundColorButton"));
    column.addWidget(applyBackground_);
    bindFlag();
}

void SettingsPanel::bindFlag() {
    connect(applyBackground_, &QCheckBox::clicked, &model_, [this](bool on) {
        model_.beginGesture(tr("Fill with Background"));
        model_.editApplyBackground(on);
        model_.endGesture();
    });
    connect(&model_, &SettingsModel::applyBackgroundChanged, applyBackground_,
            &QCheckBox::setChecked);
}

const SettingsPanel::Row& SettingsPanel::row(std::string_view key) const {
    for (std::size_t i = 0; i < kSettingRanges.size(); ++i)
        if (kSettingRanges[i].key == key) return rows_[i];
    Q_UNREACHABLE();
}

FloatSlider& SettingsPanel::slider(std::string_view key) const {
    return *row(key).slider;
}

NumberField& SettingsPanel::field(std::string_view key) const {
    return *row(key).field;
}

void SettingsPanel::commitNumbers() {
    for (const Row& row : rows_) row.field->commit();
}

void SettingsPanel::refresh() {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const float value = model_.number(kSettingRanges[i].key);
        rows_[i].slider->setFloatValue(value);
        rows_[i].field->setNumber(value);
    }
    applyBackground_->setChecked(model_.applyBackground());
}

void SettingsPanel::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    // Before anything has to be scrolled, the rows move together.
    const int wide = widget()->sizeHint().height() + (isTight_ ? saved_ : 0);
    const bool tight = wide > viewport()->height();
    if (tight == isTight_) return;
    isTight_ = tight;
    const int gap = tight ? kTightRowGap : kRowGap;
    widget()->layout()->setSpacing(gap);
    grid_->setVerticalSpacing(gap);
    saved_ = wide - widget()->sizeHint().height();
}

QSize SettingsPanel::sizeHint() const {
    const QSize sheet = widget()->sizeHint();
    return {std::max(348, sheet.width() + verticalScrollBar()->sizeHint().width()), sheet.height()};
}

}  // namespace skarnel
