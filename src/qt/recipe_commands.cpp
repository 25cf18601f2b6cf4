#include "qt/recipe_commands.h"

#include <QAction>
#include <QApplication>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>
#include <algorithm>
#include <cerrno>

#include "qt/application.h"
#include "qt/cause_text.h"
#include "qt/file_names.h"
#include "qt/page_refusal.h"
#include "qt/portal_file_dialog.h"
#include "qt/settings_panel.h"
#include "qt/styled_document.h"
#include "qt/text_bar.h"
#include "qt/text_editor.h"
#include "qt/viewer.h"
#include "recipe/recipe_file.h"
#include "storage/safe_file.h"
#include "util/log/system_error.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr double kSmallestSize = 1;      // points, of a text
constexpr double kLargestSize = 10'000;  // points
constexpr std::size_t kRecipesWithPictures = 3;

QString suffix() {
    return QLatin1Char('.') + QString::fromLatin1(kRecipeExtension.data(),
                                                  static_cast<qsizetype>(kRecipeExtension.size()));
}

std::uint8_t byteOf(int component) {
    return static_cast<std::uint8_t>(component);
}

/// The one local file of a drop; empty for anything else.
QString droppedFile(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    return urls.size() == 1 ? pathOfAddress(urls.front()) : QString();
}

Result<Recipe> recipeOf(const QString& path) {
    const auto bytes = bytesOfPath(path);
    if (!bytes) return {ErrorCode::CannotRead, describeError(EILSEQ)};
    return readRecipeFile(*bytes);
}

/// The text with its sizes brought into the range that the command line takes.
StyledText withPossibleSizes(StyledText text) {
    std::size_t place = 0;
    for (const TextRun& run : std::vector<TextRun>(text.runs())) {
        TextStyle style = run.style;
        style.size = std::clamp(style.size, kSmallestSize, kLargestSize);
        text.setStyle({place, run.length}, style);
        place += run.length;
    }
    return text;
}

QColor colorOf(const Recipe& recipe) {
    const TextColor& color = recipe.background;
    return {color.red, color.green, color.blue, color.alpha};
}

SettingsState stateOf(const Recipe& recipe) {
    return {recipe.settings, recipe.applyBackgroundColor};
}

/// Something of this window, such as the result that is being dragged out.
bool isOwn(const QDropEvent& event) {
    return event.source() != nullptr;
}

}  // namespace

RecipeCommands::RecipeCommands(Application& application)
    : QObject(&application), application_(application) {
    makeActions();
    QWidget* panel = application_.window().settings().viewport();
    panel->setAcceptDrops(true);
    panel->installEventFilter(this);
    // After the application's own connections, which have made the picture by then.
    connect(application_.actions().imageText, &QAction::triggered, this,
            &RecipeCommands::noticeTextPicture);
    connect(&application_.window().textBar().imageButton(), &QPushButton::clicked, this,
            &RecipeCommands::noticeTextPicture);
    tellLeftOut();
}

void RecipeCommands::tellLeftOut() {
    application_.toolkit().setRecipeLeftOut([this](const std::string& path, const Error& cause) {
        const QString message =
            tr("“%1” was saved without its settings: %2.")
                .arg(QFileInfo(QString::fromStdString(path)).fileName(), causeText(cause));
        // After the save, whose end takes its own note away.
        QMetaObject::invokeMethod(
            this, [this, message] { application_.window().tell(message); }, Qt::QueuedConnection);
    });
}

void RecipeCommands::makeActions() {
    MainWindow& window = application_.window();
    save_ = new QAction(tr("Save Reci&pe…"), &window);
    save_->setToolTip(tr("Save the settings, the background and the text as a file"));
    open_ = new QAction(tr("Ope&n Recipe…"), &window);
    open_->setToolTip(tr("Use the settings, the background and the text of a recipe"));
    take_ = new QAction(tr("&Take Settings From…"), &window);
    take_->setToolTip(tr("Use the settings of a recipe, or of a picture that carries one"));
    connect(save_, &QAction::triggered, this, [this] {
        const QString proposed =
            QString::fromStdString(application_.controller().saveFilename) + suffix();
        if (const FilePortal& portal = application_.toolkit().filePortal()) {
            // Exactly the path that comes back can be written.
            const QString granted =
                PortalFileDialog::pick(*portal, PortalFileDialog::Purpose::Save, tr("Save Recipe"),
                                       tr("Recipes (*.skarnel)"), proposed, &application_.window());
            if (!granted.isEmpty()) saveTo(granted);
            return;
        }
        QFileDialog dialog(&application_.window(), tr("Save Recipe"), {},
                           inAnyCase(tr("Recipes (*.skarnel)")));
        dialog.setOption(QFileDialog::HideNameFilterDetails);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        // Known to the dialog, so that it asks about the file that will be written.
        dialog.setDefaultSuffix(suffix().mid(1));
        dialog.selectFile(proposed);
        if (dialog.exec() == QDialog::Accepted) saveAs(dialog.selectedFiles().value(0));
    });
    connect(open_, &QAction::triggered, this, [this] {
        const QString path = chosenFile(tr("Open Recipe"), tr("Recipes (*.skarnel)"));
        if (!path.isEmpty()) openFrom(path);
    });
    connect(take_, &QAction::triggered, this, [this] {
        const QString path =
            chosenFile(tr("Take Settings From"),
                       tr("Recipes and pictures (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)"));
        if (!path.isEmpty()) takeFrom(path);
    });
    const QList<QObject*> places = application_.actions().saveAndEdit->associatedObjects();
    for (QObject* place : places) {
        auto* menu = qobject_cast<QMenu*>(place);
        if (menu == nullptr) continue;
        const QList<QAction*> all = menu->actions();
        const qsizetype at = all.indexOf(application_.actions().saveAndEdit) + 1;
        QAction* before = at < all.size() ? all.at(at) : nullptr;
        menu->insertSeparator(before);
        menu->insertActions(before, {save_, open_, take_});
    }
}

QString RecipeCommands::chosenFile(const QString& title, const QString& filter) {
    if (const FilePortal& portal = application_.toolkit().filePortal())
        return PortalFileDialog::pick(*portal, PortalFileDialog::Purpose::Open, title, filter, {},
                                      &application_.window());
    return QFileDialog::getOpenFileName(&application_.window(), title, {}, inAnyCase(filter),
                                        nullptr, QFileDialog::HideNameFilterDetails);
}

bool RecipeCommands::isRecipeName(const QString& path) {
    return path.endsWith(suffix(), Qt::CaseInsensitive);
}

void RecipeCommands::noticeTextPicture() {
    const std::optional<NSImage>& now = application_.controller().image;
    if (!now || (textPicture_ && textPicture_->isSame(*now))) return;
    textPicture_ = now;
    imagedText_ = application_.window().textEditor().text();
}

Recipe RecipeCommands::current() const {
    const SettingsState state = readSettings(application_.defaults());
    const QColor color = application_.window().viewer().background();
    Recipe recipe;
    recipe.settings = state.numbers;
    recipe.applyBackgroundColor = state.applyBackgroundColor;
    recipe.background = {byteOf(color.red()), byteOf(color.green()), byteOf(color.blue()),
                         byteOf(color.alpha())};
    const std::optional<NSImage>& now = application_.controller().image;
    if (textPicture_ && now && textPicture_->isSame(*now)) recipe.text = imagedText_;
    return recipe;
}

std::string RecipeCommands::currentText() const {
    const Result<std::string> text = serializeRecipe(current());
    return text ? *text : std::string();
}

bool RecipeCommands::saveAs(const QString& path) {
    if (path.isEmpty()) return false;
    // About a name that is changed here nobody was asked.
    return isRecipeName(path) ? saveTo(path) : saveTo(path + suffix(), Overwrite::Refuse);
}

bool RecipeCommands::saveTo(const QString& path, Overwrite overwrite) {
    application_.takeTyped();
    const Result<std::string> text = serializeRecipe(current());
    const Result<void> written =
        text ? writeFileSafely(path.toStdString(),
                               {reinterpret_cast<const std::uint8_t*>(text->data()), text->size()},
                               overwrite)
             : Result<void>(text.error());
    if (!written) {
        systemLog("Couldn't save " + path.toStdString() + ": " + written.error().message);
        application_.window().tell(
            tr("The recipe cannot be saved: %1.").arg(causeText(written.error())));
    }
    return written.hasValue();
}

std::optional<Recipe> RecipeCommands::read(const QString& path) {
    Result<Recipe> recipe = recipeOf(path);
    if (recipe) return *std::move(recipe);
    tellUnread(path, recipe.error());
    return std::nullopt;
}

void RecipeCommands::tellUnread(const QString& path, const Error& cause) {
    application_.window().tell(tr("“%1”: %2.").arg(QFileInfo(path).fileName(), causeText(cause)));
}

void RecipeCommands::takeDropped(const QString& path) {
    const Result<Recipe> recipe = recipeOf(path);
    const bool carriesNone = !recipe && recipe.error().code == ErrorCode::NotFound;
    if (carriesNone && !isRecipeName(path)) return application_.openPictures({path});
    if (!recipe) return tellUnread(path, recipe.error());
    // The file that a save panel is about gets the settings as they stand under it.
    if (QApplication::activeModalWidget() != nullptr)
        application_.window().tell(tr("The settings stay as they are while a panel is open."));
    else
        takeSettings(*recipe, tr("Taken Settings"));
}

bool RecipeCommands::openFrom(const QString& path) {
    const std::optional<Recipe> recipe = read(path);
    if (!recipe) return false;
    if (!recipe->text) {
        takeSettings(*recipe, tr("Recipe"));
        return true;
    }
    application_.model().endGesture();
    const std::shared_ptr<Shown> before = shown();
    showSettings(colorOf(*recipe), stateOf(*recipe));
    const bool pictured = applyText(*recipe->text, QFileInfo(path).fileName());
    const std::shared_ptr<Shown> after = shown();
    application_.model().recordDone(
        tr("Recipe"), [=, this] { showAgain(*before, *after); },
        [=, this] { showAgain(*after, *before); });
    keepPicturesOf(before, after);
    return pictured;
}

bool RecipeCommands::takeFrom(const QString& path) {
    const std::optional<Recipe> recipe = read(path);
    if (!recipe) return false;
    takeSettings(*recipe, tr("Taken Settings"));
    return true;
}

void RecipeCommands::takeSettings(const Recipe& recipe, const QString& undoName) {
    const QColor color = colorOf(recipe);
    const QColor colorBefore = application_.window().viewer().background();
    SettingsModel& model = application_.model();
    const SettingsState state = stateOf(recipe);
    if (color == colorBefore) return model.changeAll(undoName, state);
    const SettingsState before = readSettings(application_.defaults());
    model.recordAction(
        undoName, [=, this] { showSettings(colorBefore, before); },
        [=, this] { showSettings(color, state); });
}

void RecipeCommands::showSettings(const QColor& background, const SettingsState& settings) {
    setBackground(background);
    application_.model().write(settings);
}

std::shared_ptr<RecipeCommands::Shown> RecipeCommands::shown() const {
    const Viewer& viewer = application_.window().viewer();
    const VanteraDesktopController& controller = application_.controller();
    return std::make_shared<Shown>(
        Shown{viewer.background(), readSettings(application_.defaults()),
              application_.window().textEditor().text(), controller.image, controller.saveFilename,
              viewer.pictureName(), viewer.sheet(), textPicture_, imagedText_});
}

void RecipeCommands::keepPicturesOf(const std::shared_ptr<Shown>& before,
                                    const std::shared_ptr<Shown>& after) {
    withPictures_.insert(withPictures_.end(), {before, after});
    while (withPictures_.size() > 2 * kRecipesWithPictures) {
        withPictures_.front()->picture.reset();
        withPictures_.front()->textPicture.reset();
        withPictures_.pop_front();
    }
}

void RecipeCommands::showAgain(const Shown& to, Shown& from) {
    Viewer& viewer = application_.window().viewer();
    const std::optional<NSImage>& now = application_.controller().image;
    const bool isShown = now && from.picture && now->isSame(*from.picture);
    // In the size that the picture has under the settings of `from`.
    if (isShown) from.edits = viewer.sheet();
    showSettings(to.background, to.settings);
    if (application_.window().textEditor().text() == from.text) showText(to.text);
    if (!isShown || !to.picture || to.picture->isSame(*now)) return;
    textPicture_ = to.textPicture;
    imagedText_ = to.imagedText;
    application_.showSource(*to.picture, to.saveName, to.title);
    viewer.takeEdits(to.edits);
}

void RecipeCommands::setBackground(const QColor& color) {
    // The way of a colour that the user picks, for the viewer whatever has the focus.
    QtColorPanel& panel = application_.toolkit().colorPanel();
    application_.resultWindow().setStandIn(&application_.imageView());
    panel.showColor(application_.window().viewer().background());
    panel.pick(color);
    application_.resultWindow().setStandIn(nullptr);
}

void RecipeCommands::showText(const StyledText& text) {
    TextEditor& editor = application_.window().textEditor();
    // As an edit by the user: a placeholder gives way, and its timer with it.
    application_.controller().textViewShouldChangeTextInRanges(
        application_.textView(), {{0, editor.text().length()}}, {text.characters()});
    editor.setText(text);
}

bool RecipeCommands::applyText(const StyledText& text, const QString& recipeName) {
    showText(withPossibleSizes(text));
    const std::optional<NSImage> before = application_.controller().image;
    const std::string logged = loggedWhile([this] { application_.actions().imageText->trigger(); });
    const std::optional<NSImage>& now = application_.controller().image;
    if (now && (!before || !now->isSame(*before))) return true;
    // The command's own alert has said it already.
    if (QApplication::activeModalWidget() != nullptr) return false;
    const auto cause = whyNoPage(logged);
    application_.window().tell(
        cause ? tr("“%1”: %2.").arg(recipeName, causeText(*cause))
              : tr("The text of “%1” cannot be made a picture.").arg(recipeName));
    return false;
}

bool RecipeCommands::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove) {
        auto* drag = static_cast<QDropEvent*>(event);
        if (isOwn(*drag) || droppedFile(*drag->mimeData()).isEmpty()) return false;
        drag->setDropAction(Qt::CopyAction);
        drag->accept();
        return true;
    }
    if (event->type() != QEvent::Drop) return false;
    auto* drop = static_cast<QDropEvent*>(event);
    const QString path = isOwn(*drop) ? QString() : droppedFile(*drop->mimeData());
    if (path.isEmpty()) return false;
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    takeDropped(path);
    return true;
}

}  // namespace skarnel
