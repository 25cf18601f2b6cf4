// The commands for recipes: save one, open one, take the settings out of one.
#pragma once

#include <QColor>
#include <QObject>
#include <QString>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "app/settings_undo.h"
#include "imaging/nsimage/nsimage.h"
#include "qt/viewer_tools.h"
#include "recipe/recipe.h"
#include "storage/safe_file.h"

class QAction;
class QEvent;

namespace skarnel {

class Application;

class RecipeCommands final : public QObject {
    Q_OBJECT
  public:
    /// Adds its actions to the menu that has the save command; the application is borrowed.
    explicit RecipeCommands(Application& application);

    QAction& saveAction() const { return *save_; }
    QAction& openAction() const { return *open_; }
    QAction& takeAction() const { return *take_; }

    /// What the window shows: settings, background, and the text where the picture was made of it.
    Recipe current() const;
    /// The same as a recipe's text; empty where the text has no form to keep it in.
    std::string currentText() const;

    /// Each tells the user what went wrong and gives back whether all went well.
    bool saveTo(const QString& path, Overwrite overwrite = Overwrite::Allow);
    /// Under a name that somebody typed: it gets the recipes' ending where it has none, and then
    /// replaces nothing.
    bool saveAs(const QString& path);
    bool openFrom(const QString& path);
    bool takeFrom(const QString& path);

    /// Whether the name says that a file is a recipe.
    static bool isRecipeName(const QString& path);

  protected:
    /// Drops on the settings panel.
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void makeActions();
    void noticeTextPicture();
    std::optional<Recipe> read(const QString& path);
    void tellUnread(const QString& path, const Error& cause);
    /// On the panel: settings, or a plain picture, which is opened as anywhere else.
    void takeDropped(const QString& path);
    /// What a recipe changes, as it is shown at one time.
    struct Shown {
        QColor background;
        SettingsState settings;
        StyledText text;
        std::optional<NSImage> picture;
        std::string saveName;
        QString title;
        ViewerSheet edits;  // marks, crop and turn of the picture
        std::optional<NSImage> textPicture;
        std::optional<StyledText> imagedText;
    };
    std::shared_ptr<Shown> shown() const;
    /// A picture in full size is large: the history keeps those of the last recipes alone.
    void keepPicturesOf(const std::shared_ptr<Shown>& before, const std::shared_ptr<Shown>& after);
    /// Shows the settings of `to`; its text and picture where those of `from` are still there,
    /// since what was typed or opened later is no part of the recipe. What has been drawn on the
    /// picture of `from` is noted there, for the way back.
    void showAgain(const Shown& to, Shown& from);
    void showSettings(const QColor& background, const SettingsState& settings);
    void showText(const StyledText& text);
    void takeSettings(const Recipe& recipe, const QString& undoName);
    void setBackground(const QColor& color);
    void tellLeftOut();
    /// Whether the text has become the picture; what prevented it is told.
    bool applyText(const StyledText& text, const QString& recipeName);
    QString chosenFile(const QString& title, const QString& filter);

    Application& application_;
    QAction* save_ = nullptr;
    QAction* open_ = nullptr;
    QAction* take_ = nullptr;
    std::optional<NSImage> textPicture_;  // the source picture that was made of the text
    std::optional<StyledText> imagedText_;
    std::deque<std::shared_ptr<Shown>> withPictures_;  // oldest first
};

}  // namespace skarnel
