// The format and its options, inside the save panel.
#pragma once

#include <QWidget>
#include <string>

#include "imaging/io/image_io.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QSlider;
class QSpinBox;
class QStackedWidget;
class QVBoxLayout;

namespace skarnel {

class SaveOptionsView final : public QWidget {
    Q_OBJECT
  public:
    /// Starts from the properties and the type of the source; what they hold beside the options
    /// shown here (the resolution above all) is kept as it is.
    SaveOptionsView(const ImageProperties& properties, const std::string& type,
                    QWidget* parent = nullptr);

    /// Offers to keep this recipe inside the file, for the formats that can carry one and have room
    /// for it; where they have not, a tool tip says so. Not chosen at first: it may hold what the
    /// user typed.
    void offerRecipe(const std::string& text);

    std::string type() const;
    void setType(std::string_view type);
    /// With the options of the chosen format.
    ImageProperties properties() const;

    /// The chosen format's preferred extension, without the full stop.
    QString extension() const;
    /// "TIFF (*.tiff *.tif)"
    QString nameFilter() const;
    /// The name with the extension of the chosen format in place of one of another format's.
    QString renamed(const QString& fileName) const;
    /// Chooses the format whose extension the name carries, if it carries one.
    void followName(const QString& fileName);

  signals:
    void typeChanged();
    /// The type or an option.
    void changed();

  private:
    QWidget* qualityPage();
    QWidget* tiffPage();
    QWidget* pngPage();
    QWidget* plainPage();
    void showPage();
    void showWhetherRecipeFits();
    QString resolutionText() const;

    ImageProperties initial_;
    QComboBox* types_;
    QStackedWidget* pages_;
    QSlider* quality_ = nullptr;
    QSpinBox* qualityNumber_ = nullptr;
    QComboBox* tiffCompression_ = nullptr;
    QSlider* pngLevel_ = nullptr;
    QVBoxLayout* column_;
    QCheckBox* keepRecipe_ = nullptr;
    std::string recipe_;
};

}  // namespace skarnel
