#include "qt/toolkit_panels.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <algorithm>
#include <utility>

#include "qt/file_names.h"
#include "qt/portal_file_dialog.h"
#include "qt/portal_save_sheet.h"
#include "qt/save_dialog.h"
#include "qt/save_options_view.h"
#include "qt/toolkit_views.h"
#include "qt/wait_cursor.h"

namespace skarnel {
namespace {

QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// The remembered folder while it is there, else the user's pictures.
QString startFolder(const QString& remembered) {
    if (!remembered.isEmpty() && QFileInfo(remembered).isDir()) return remembered;
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QFileInfo(pictures).isDir() ? pictures : QDir::homePath();
}

QWidget* widgetOf(NSWindow& window) {
    auto* own = dynamic_cast<QtWindow*>(&window);
    return own == nullptr ? nullptr : &own->widget();
}

}  // namespace

// Open ---------------------------------------------------------------------------------------

void QtOpenPanel::configure(QFileDialog& dialog, const std::vector<std::string>& types) const {
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(!files_ && directories_ ? QFileDialog::Directory
                       : multiple_             ? QFileDialog::ExistingFiles
                                               : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::ReadOnly, !createDirectories_);
    QStringList patterns;
    for (const std::string& type : types) patterns << QStringLiteral("*.%1").arg(toQt(type));
    dialog.setNameFilter(inAnyCase(QStringLiteral("%1 (%2)").arg(
        QCoreApplication::translate("OpenPanel", "Pictures"), patterns.join(QLatin1Char(' ')))));
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    if (!prompt_.empty()) dialog.setLabelText(QFileDialog::Accept, toQt(prompt_));
    dialog.setDirectory(startFolder(state_.openFolder()));
}

int QtOpenPanel::runPortalForTypes(const std::vector<std::string>& types) {
    using Purpose = PortalFileDialog::Purpose;
    const Purpose purpose = !files_ && directories_ ? Purpose::OpenFolder
                            : multiple_             ? Purpose::OpenSeveral
                                                    : Purpose::Open;
    PortalFileDialog dialog(*portal_, purpose, toQt(title_), parent_);
    dialog.setWindowModality(Qt::ApplicationModal);
    QStringList patterns;
    for (const std::string& type : types) patterns << QStringLiteral("*.%1").arg(toQt(type));
    dialog.setNameFilter(QStringLiteral("%1 (%2)").arg(
        QCoreApplication::translate("OpenPanel", "Pictures"), patterns.join(QLatin1Char(' '))));
    dialog.setAcceptLabel(toQt(prompt_));
    if (dialog.exec() != QDialog::Accepted) return NSCancelButton;
    const QStringList paths = dialog.paths();
    for (const QString& path : paths) filenames_.push_back(path.toStdString());
    state_.setChosen(paths);
    return NSOKButton;
}

int QtOpenPanel::runModalForTypes(const std::vector<std::string>& types) {
    filenames_.clear();
    if (portal_) return runPortalForTypes(types);
    QFileDialog dialog(parent_, toQt(title_));
    dialog.setWindowModality(Qt::ApplicationModal);
    configure(dialog, types);
    if (dialog.exec() != QDialog::Accepted) return NSCancelButton;
    // The controller leaves an empty path out.
    for (const QString& path : dialog.selectedFiles())
        filenames_.push_back(bytesOfPath(path).value_or(std::string()));
    // The folder listed is another one when a whole path was typed.
    state_.setOpenFolder(QFileInfo(dialog.selectedFiles().value(0)).absolutePath());
    state_.setChosen(dialog.selectedFiles());
    return NSOKButton;
}

// Save ---------------------------------------------------------------------------------------

void QtSavePanel::beginSheet(const std::optional<std::string>& directory, std::string_view file,
                             NSWindow& modalForWindow, DidEnd didEnd, void* contextInfo) {
    if (portal_) return beginPortalSheet(toQt(file), modalForWindow, didEnd, contextInfo);
    auto* dialog = new SaveDialog(widgetOf(modalForWindow),
                                  QCoreApplication::translate("SavePanel", "Save Result"));
    dialog->setObjectName(QStringLiteral("savePanel"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setLabelText(QFileDialog::LookIn, QCoreApplication::translate("SavePanel", "Save in:"));
    dialog->setDirectory(startFolder(directory ? toQt(*directory) : state_.saveFolder()));
    dialog->selectFile(toQt(file));
    follow(*dialog);
    QObject::connect(dialog, &QDialog::finished, dialog,
                     [self = shared_from_this(), dialog, didEnd, contextInfo](int result) {
                         self->ended(*dialog, result, didEnd, contextInfo);
                     });
    dialog->open();
}

void QtSavePanel::beginPortalSheet(const QString& file, NSWindow& modalForWindow,
                                   const DidEnd& didEnd, void* contextInfo) {
    auto* sheet = new PortalSaveSheet(*portal_, accessory_, file, widgetOf(modalForWindow));
    sheet->setWindowTitle(QCoreApplication::translate("SavePanel", "Save Result"));
    sheet->setObjectName(QStringLiteral("savePanel"));
    sheet->setWindowModality(Qt::WindowModal);
    QObject::connect(sheet, &QDialog::finished, sheet,
                     [self = shared_from_this(), sheet, didEnd, contextInfo](int result) {
                         self->filename_ = sheet->chosen().toStdString();
                         sheet->deleteLater();
                         self->concluded(result == QDialog::Accepted, didEnd, contextInfo);
                     });
    sheet->open();
}

void QtSavePanel::follow(SaveDialog& dialog) {
    if (accessory_ == nullptr || accessoryGuard_ != nullptr) return;
    SaveOptionsView* view = accessory_;
    accessoryGuard_ = view;
    if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout()))
        grid->addWidget(view, grid->rowCount(), 0, 1, grid->columnCount());
    // The format is chosen in our view; a second list of it would only contradict.
    for (const char* second : {"fileTypeLabel", "fileTypeCombo"})
        if (auto* widget = dialog.findChild<QWidget*>(QString::fromLatin1(second))) widget->hide();
    auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    const auto showType = [&dialog, view] { dialog.setNameFilter(view->nameFilter()); };
    showType();
    dialog.setComplete([view](const QString& path) {
        view->followName(path);
        return view->renamed(path);
    });
    QObject::connect(view, &SaveOptionsView::typeChanged, &dialog, [view, name, showType] {
        const QString renamed = name != nullptr ? view->renamed(name->text()) : QString();
        showType();
        if (name != nullptr && name->text() != renamed) name->setText(renamed);
    });
    if (name != nullptr)
        QObject::connect(name, &QLineEdit::textEdited, view, &SaveOptionsView::followName);
}

void QtSavePanel::ended(SaveDialog& dialog, int result, const DidEnd& didEnd, void* contextInfo) {
    const bool saved = result == QDialog::Accepted && !dialog.chosen().isEmpty();
    if (saved) {
        filename_ = dialog.chosen().toStdString();
        state_.setSaveFolder(QFileInfo(dialog.chosen()).absolutePath());
        state_.save();  // what a killed save leaves there the next start removes
    }
    concluded(saved, didEnd, contextInfo);
}

void QtSavePanel::concluded(bool saved, const DidEnd& didEnd, void* contextInfo) {
    // The sheet is off the screen by now; a large picture takes seconds to write.
    const WaitCursor atWork;
    if (saved && notes_.begins) notes_.begins(QString::fromStdString(filename_));
    if (didEnd) didEnd(*this, saved ? NSOKButton : NSCancelButton, contextInfo);
    if (saved && notes_.ends) notes_.ends();
}

void QtSaveOptions::addSaveOptionsAccessoryViewToSavePanel(NSSavePanel& panel) {
    auto* own = dynamic_cast<QtSavePanel*>(&panel);
    if (own == nullptr) return;
    auto* view = new SaveOptionsView(properties_, type_);
    view->offerRecipe(recipe_);
    // The view belongs to the sheet, which may outlive these options by a moment.
    QObject::connect(view, &SaveOptionsView::changed, view, [weak = weak_from_this(), view] {
        const auto self = weak.lock();
        if (!self) return;
        self->type_ = view->type();
        self->properties_ = view->properties();
    });
    type_ = view->type();
    properties_ = view->properties();
    own->setAccessoryView(view);
}

ImageProperties QtSaveOptions::imageProperties() const {
    ImageProperties properties = properties_;
    if (background_) properties.insert_or_assign(std::string(kPropertyMatteColor), background_());
    return properties;
}

// Colours ------------------------------------------------------------------------------------

namespace {

/// In the window's lower right corner, over its settings: the picture, which follows the panel at
/// once, stays in sight.
void placeBeside(QWidget& panel, const QWidget* window) {
    if (window == nullptr) return;
    panel.adjustSize();
    const QRect room = window->frameGeometry();
    panel.move(std::max(room.left(), room.right() - panel.width()),
               std::max(room.top(), room.bottom() - panel.height()));
}

}  // namespace

QtColorPanel::QtColorPanel(NSNotificationCenter& center, QWidget* parent)
    : center_(center), parent_(parent) {}

QColorDialog& QtColorPanel::made() {
    if (!dialog_) {
        dialog_ = new QColorDialog(color_, parent_);
        dialog_->setObjectName(QStringLiteral("colorPanel"));
        dialog_->setWindowTitle(QCoreApplication::translate("ColorPanel", "Colours"));
        dialog_->setOptions(QColorDialog::ShowAlphaChannel | QColorDialog::NoButtons |
                            QColorDialog::DontUseNativeDialog);
        dialog_->setModal(false);
        dialog_->setAttribute(Qt::WA_QuitOnClose, false);
        placeBeside(*dialog_, parent_);
        QObject::connect(dialog_, &QColorDialog::currentColorChanged, dialog_,
                         [this](const QColor& color) { changed(color); });
    }
    return *dialog_;
}

void QtColorPanel::changed(const QColor& color) {
    if (!color.isValid() || color == color_) return;
    color_ = color;
    if (colorText_) colorText_(color);
    center_.postNotification({NSColorPanelColorDidChangeNotification, this});
}

NSColor QtColorPanel::color() const {
    return toNSColor(color_);
}

void QtColorPanel::orderFront(const NSObject* /*sender*/) {
    made().show();
    made().raise();
    made().activateWindow();
}

void QtColorPanel::followWindow(bool shown) {
    if (!dialog_) return;
    if (shown) {
        if (std::exchange(waits_, false)) dialog_->show();
        return;
    }
    waits_ = dialog_->isVisible();
    dialog_->hide();
}

void QtColorPanel::showColor(const QColor& color) {
    color_ = color;
    if (!dialog_) return;
    const QSignalBlocker quiet(dialog_);
    dialog_->setCurrentColor(color);
}

void QtColorPanel::pick(const QColor& color) {
    if (dialog_) {
        const QSignalBlocker quiet(dialog_);
        dialog_->setCurrentColor(color);
    }
    changed(color);
}

// Alerts -------------------------------------------------------------------------------------

std::unique_ptr<QMessageBox> QtAlert::box(QWidget* parent) const {
    auto made = std::make_unique<QMessageBox>(parent);
    made->setObjectName(QStringLiteral("alert"));
    made->setWindowTitle(QStringLiteral("Skarnel"));
    made->setText(toQt(message_));
    made->setInformativeText(toQt(informative_));
    made->setIcon(style_ == NSAlertStyle::Critical        ? QMessageBox::Critical
                  : style_ == NSAlertStyle::Informational ? QMessageBox::Information
                                                          : QMessageBox::Warning);
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        made->addButton(toQt(buttons_[i]),
                        i == 0 ? QMessageBox::AcceptRole : QMessageBox::RejectRole);
    return made;
}

int QtAlert::runModal() {
    const auto shown = box(nullptr);
    shown->setWindowModality(Qt::ApplicationModal);
    shown->exec();
    return shown->clickedButton() == shown->buttons().value(0) ? NSOKButton : NSCancelButton;
}

void QtAlert::beginSheet(NSWindow& modalForWindow, const NSObject* /*modalDelegate*/, DidEnd didEnd,
                         void* contextInfo) {
    QMessageBox* sheet = box(widgetOf(modalForWindow)).release();
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    QObject::connect(sheet, &QDialog::finished, sheet,
                     [self = shared_from_this(), didEnd, contextInfo](int /*result*/) {
                         if (didEnd) didEnd(*self, NSOKButton, contextInfo);
                     });
    sheet->show();
}

}  // namespace skarnel
