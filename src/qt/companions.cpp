#include "qt/companions.h"

#include <QAction>
#include <QDesktopServices>
#include <QDir>
#include <QMenu>
#include <QTimer>
#include <QToolBar>
#include <algorithm>
#include <cmath>

#include "qt/application.h"
#include "qt/cause_text.h"
#include "qt/compare_overlay.h"
#include "qt/drag_folder.h"
#include "qt/guide_pages.h"
#include "qt/preset_strip.h"
#include "qt/preset_thumbnail.h"
#include "qt/preview_memory.h"
#include "qt/recipe_commands.h"
#include "qt/result_drag.h"
#include "qt/viewer.h"
#include "storage/safe_file.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr int kThumbnailSource = 168;  // pixels of the longer side, twice a thumbnail's

const QString kPresetsShown = QStringLiteral("presetsShown");

/// The menu in which an action stands.
QMenu* menuOf(const QAction& action) {
    const QList<QObject*> places = action.associatedObjects();
    for (QObject* place : places) {
        if (auto* menu = qobject_cast<QMenu*>(place)) return menu;
    }
    return nullptr;
}

}  // namespace

Companions::Companions(Application& application)
    : QObject(&application),
      application_(application),
      userPresets_(application.state()),
      recipes_(new RecipeCommands(application)) {
    addPresets();
    addSaveLook();
    addGuide();
    application_.toolkit().setRecipeText([this] { return recipes_->currentText(); });
    Viewer& viewer = application_.window().viewer();
    addCompare();
    new PreviewMemory(viewer);
    new ResultDrag(viewer, [this] { return makeResultFile(); });
    connect(&viewer, &Viewer::painted, this, &Companions::noticeSource);
    QTimer::singleShot(0, this, [] { removeOldDrags(dragFolderParent()); });
}

void Companions::addPresets() {
    MainWindow& window = application_.window();
    strip_ = new PresetStrip(application_.model(), userPresets_, [this] { return smallPicture(); });
    presetBar_ = new QToolBar(tr("Looks"), &window);
    presetBar_->setObjectName(QStringLiteral("presetBar"));
    presetBar_->setMovable(false);
    presetBar_->setFloatable(false);
    presetBar_->setContextMenuPolicy(Qt::PreventContextMenu);
    presetBar_->addWidget(strip_);
    window.addToolBar(Qt::BottomToolBarArea, presetBar_);
    showPresets_ = new QAction(tr("Show &Looks"), &window);
    showPresets_->setCheckable(true);
    showPresets_->setToolTip(tr("Show the looks below the picture"));
    connect(showPresets_, &QAction::toggled, this, [this](bool shown) {
        presetBar_->setVisible(shown);
        application_.state().setValue(kPresetsShown, shown);
        if (shown) strip_->sourceChanged();
    });
    const bool shown = application_.state().value(kPresetsShown).toBool(true);
    showPresets_->setChecked(shown);
    presetBar_->setVisible(shown);
    if (QMenu* view = menuOf(*application_.actions().showText)) {
        const QList<QAction*> all = view->actions();
        const qsizetype at = all.indexOf(application_.actions().showText) + 1;
        view->insertAction(at < all.size() ? all.at(at) : nullptr, showPresets_);
    }
}

void Companions::addSaveLook() {
    saveLook_ = new QAction(tr("Save Loo&k…"), &application_.window());
    saveLook_->setToolTip(tr("Save the settings as a look"));
    connect(saveLook_, &QAction::triggered, this, [this] {
        showPresets_->setChecked(true);
        application_.takeTyped();
        strip_->saveCurrent();
    });
    QAction* reset = application_.actions().reset;
    if (QMenu* edit = menuOf(*reset)) {
        const QList<QAction*> all = edit->actions();
        const qsizetype at = all.indexOf(reset) + 1;
        edit->insertAction(at < all.size() ? all.at(at) : nullptr, saveLook_);
    }
}

/// The menu's road, for whoever cannot hold a key; its key is the viewer's own, not a shortcut of
/// the window's, in whose other parts a space is a space.
void Companions::addCompare() {
    auto* overlay =
        new CompareOverlay(application_.window().viewer(), [this] { return comparedPicture(); });
    compare_ = new QAction(tr("Pictu&re Alone") + QLatin1Char('\t') + tr("Space, held"),
                           &application_.window());
    compare_->setToolTip(tr("Show the picture without its reflection"));
    compare_->setCheckable(true);
    connect(compare_, &QAction::toggled, overlay, &CompareOverlay::setPinned);
    connect(overlay, &CompareOverlay::pinnedChanged, compare_, &QAction::setChecked);
    if (QMenu* view = menuOf(*application_.actions().checkerboard))
        view->insertAction(application_.actions().checkerboard, compare_);
}

void Companions::addGuide() {
    guide_ = new QAction(tr("User's &Guide"), &application_.window());
    guide_->setToolTip(tr("Open the guide that came with the program"));
    const auto page = guidePage(application_.catalogue());
    guide_->setEnabled(page.has_value());
    connect(guide_, &QAction::triggered, this, [page] { QDesktopServices::openUrl(*page); });
    if (QMenu* help = menuOf(*application_.actions().about)) {
        help->insertAction(application_.actions().about, guide_);
    }
}

void Companions::noticeSource() {
    const std::optional<NSImage>& now = application_.controller().scaledImage;
    strip_->setGround(application_.window().viewer().background());
    if (!now || (known_ && known_->isSame(*now))) return;
    known_ = now;
    strip_->sourceChanged();
}

std::optional<CGImage> Companions::picture() const {
    const std::optional<NSImage>& now = application_.controller().scaledImage;
    return now ? ImageOperations().getCGImageRef(*now) : std::nullopt;
}

std::optional<ComparedPicture> Companions::comparedPicture() const {
    const std::optional<CGImage> whole = picture();
    if (!whole) return std::nullopt;
    const SettingsModel& model = application_.model();
    const auto place =
        picturePlacement(whole->width(), whole->height(), model.number("perspectiveWidth"),
                         model.number("perspectiveHeight"), model.number("offset"),
                         application_.controller().imagePerspectiveSlider->floatValue());
    // Without a result the viewer still shows one of other settings.
    const CGSize own{1.0 * whole->width(), 1.0 * whole->height()};
    return ComparedPicture{*whole,
                           place.value_or(PicturePlacement{own, {0, 0, own.width, own.height}})};
}

std::optional<CGImage> Companions::smallPicture() const {
    const std::optional<CGImage> whole = picture();
    if (!whole) return std::nullopt;
    const int longer = std::max(whole->width(), whole->height());
    if (longer <= kThumbnailSource) return whole;
    const auto reduced = [&](int side) {
        return std::max(1, static_cast<int>(std::lround(1.0 * side * kThumbnailSource / longer)));
    };
    return resizedPicture(*whole, reduced(whole->width()), reduced(whole->height()));
}

QString Companions::makeResultFile() {
    application_.takeTyped();
    VanteraDesktopController& controller = application_.controller();
    if (!controller.image) return {};
    const auto source = ImageOperations().getCGImageRef(*controller.image);
    const auto result = source ? controller.reflectedImage(*source) : std::nullopt;
    // With the source picture's properties, its resolution above all, as saving writes them.
    const auto bytes = result ? encodeImage(*result, kUTTypePNG, controller.image->properties())
                              : Result<Bytes>(ErrorCode::Failed, "Out of memory");
    if (!bytes) return dragFailed(bytes.error());
    removeOldDrags(dragFolderParent());
    const auto folder = freshDragFolder(dragFolderParent());
    if (!folder) return dragFailed(folder.error());
    QString name = QString::fromStdString(controller.saveFilename);
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    QString path = *folder + QLatin1Char('/') + name + QStringLiteral(".png");
    const auto written = writeFileSafely(path.toStdString(), *bytes, Overwrite::Allow);
    if (written) return path;
    QDir(*folder).removeRecursively();
    return dragFailed(written.error());
}

QString Companions::dragFailed(const Error& error) {
    systemLog("Couldn't make the file of a drag: " + error.message);
    application_.window().tell(tr("The result cannot be dragged: %1.").arg(causeText(error)));
    return {};
}

}  // namespace skarnel
