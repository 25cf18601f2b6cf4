// What stands beside the road from a picture to its reflection: looks, recipes, comparing with the
// picture alone, dragging the result out, the guide.
#pragma once

#include <QObject>
#include <QString>
#include <memory>
#include <optional>

#include "imaging/cgimage.h"
#include "imaging/nsimage/nsimage.h"
#include "qt/user_presets.h"
#include "util/log/result.h"

class QAction;
class QToolBar;

namespace skarnel {

class Application;
struct ComparedPicture;
class PresetStrip;
class RecipeCommands;
class ResultDrag;

class Companions final : public QObject {
    Q_OBJECT
  public:
    /// Adds everything to the application's window and menus; the application is borrowed.
    explicit Companions(Application& application);

    PresetStrip& presets() const { return *strip_; }
    RecipeCommands& recipes() const { return *recipes_; }
    QAction& showPresetsAction() const { return *showPresets_; }
    QAction& saveLookAction() const { return *saveLook_; }
    QAction& compareAction() const { return *compare_; }
    QAction& guideAction() const { return *guide_; }

    /// The result at full resolution as a PNG under the save name, with the source's resolution, in
    /// a fresh cache folder. Empty without a result, or where it cannot be written, and then the
    /// user is told.
    QString makeResultFile();

  private:
    void addPresets();
    void addSaveLook();
    void addCompare();
    void addGuide();
    void noticeSource();
    QString dragFailed(const Error& error);
    /// The working copy's pixels, and the same small enough for thumbnails.
    std::optional<CGImage> picture() const;
    std::optional<CGImage> smallPicture() const;
    std::optional<ComparedPicture> comparedPicture() const;

    Application& application_;
    UserPresets userPresets_;
    RecipeCommands* recipes_;
    PresetStrip* strip_ = nullptr;
    QToolBar* presetBar_ = nullptr;
    QAction* showPresets_ = nullptr;
    QAction* saveLook_ = nullptr;
    QAction* compare_ = nullptr;
    QAction* guide_ = nullptr;
    std::optional<NSImage> known_;  // the working copy that the thumbnails were made of
};

}  // namespace skarnel
