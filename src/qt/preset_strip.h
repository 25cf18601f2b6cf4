// A strip of looks below the picture, each shown on the user's own picture.
#pragma once

#include <QColor>
#include <QImage>
#include <QListWidget>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "imaging/cgimage.h"
#include "recipe/presets.h"

class QToolButton;

namespace skarnel {

class SettingsModel;
class UserPresets;

/// Choosing a look is one entry of undo. The thumbnails are rendered one by one while nothing else
/// is to be done, and each is small: what is done meanwhile is shown before the next.
class PresetStrip final : public QWidget {
    Q_OBJECT
  public:
    /// A small copy of the source picture, or none; asked for when the thumbnails are made.
    using Source = std::function<std::optional<CGImage>()>;

    PresetStrip(SettingsModel& model, UserPresets& user, Source source, QWidget* parent = nullptr);

    /// The picture is another one: all thumbnails are to be made again, soon.
    void sourceChanged();
    /// The colour that lies under the thumbnails.
    void setGround(const QColor& color);

    QListWidget& list() const { return *list_; }
    /// True until every thumbnail is there.
    bool isWorking() const { return work_.isActive(); }

    /// Saves the settings as they are as a look of the user's, and lets its name be edited.
    void saveCurrent();
    /// Takes the name that is being typed, as Return would.
    void finishTyping();

  protected:
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    enum Role { kIsUserRole = Qt::UserRole, kIndexRole, kThumbnailRole };

    void build();
    void fill();
    void addItem(const QString& name, bool user, qsizetype index);
    SettingNumbers settingsOf(const QListWidgetItem& item) const;
    SettingNumbers currentSettings() const;
    void apply(QListWidgetItem& item);
    void renamed(QListWidgetItem& item);
    void nameSaved(QString& called, const QString& name);
    void rename(qsizetype index, const QString& name);
    void removeItem(QListWidgetItem& item);
    void showMenu(QPoint place);
    void markCurrent();
    void giveWay();
    void workOnce();
    void setIcon(QListWidgetItem& item, const QImage& thumbnail);

    SettingsModel& model_;
    UserPresets& user_;
    Source source_;
    QListWidget* list_;
    QToolButton* add_;
    QTimer work_;
    std::optional<CGImage> small_;
    std::vector<QListWidgetItem*> waiting_;  // the next one is the last
    QColor ground_ = Qt::black;
    /// The name of the look that was just saved, while it is being typed: undo needs it.
    std::shared_ptr<QString> unnamed_;
    bool filling_ = false;
};

}  // namespace skarnel
