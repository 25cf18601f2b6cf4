// The panel beside the picture: the seven settings, the background, and reset.
#pragma once

#include <QScrollArea>
#include <array>

#include "qt/setting_ranges.h"

class QCheckBox;
class QGridLayout;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace skarnel {

class ColorWell;
class FloatSlider;
class NumberField;
class SettingsModel;

class SettingsPanel final : public QScrollArea {
    Q_OBJECT
  public:
    explicit SettingsPanel(SettingsModel& model, QWidget* parent = nullptr);

    /// By the setting's key, which is one of the table's.
    FloatSlider& slider(std::string_view key) const;
    NumberField& field(std::string_view key) const;
    QCheckBox& applyBackground() const { return *applyBackground_; }
    ColorWell& colorWell() const { return *colorWell_; }
    QLineEdit& colorText() const { return *colorText_; }
    QPushButton& resetButton() const { return *reset_; }

    /// Takes the numbers that are typed and wait in their fields.
    void commitNumbers();
    /// Shows what is stored.
    void refresh();

    QSize sizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    struct Row {
        FloatSlider* slider = nullptr;
        NumberField* field = nullptr;
    };
    void addRow(QGridLayout& grid, int line, const SettingRange& range, Row& row);
    void bindRow(const SettingRange& range, const Row& row);
    void addSettings(QVBoxLayout& column);
    void addBackground(QVBoxLayout& column);
    void bindFlag();
    const Row& row(std::string_view key) const;

    SettingsModel& model_;
    std::array<Row, kSettingRanges.size()> rows_;
    QCheckBox* applyBackground_ = nullptr;
    ColorWell* colorWell_ = nullptr;
    QLineEdit* colorText_ = nullptr;
    QPushButton* reset_ = nullptr;
    QGridLayout* grid_ = nullptr;
    bool isTight_ = false;
    int saved_ = 0;  // pixels of height, while the rows stand closer
};

}  // namespace skarnel
