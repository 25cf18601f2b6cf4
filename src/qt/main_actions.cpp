#include "qt/main_actions.h"

#include <QAction>
#include <QActionGroup>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QToolBar>
#include <QToolButton>

#include "qt/icons.h"
#include "qt/main_window.h"
#include "qt/settings_model.h"
#include "qt/text_bar.h"

namespace skarnel {
namespace {

/// A platform's standard key may be one that is named besides; given twice, it would do nothing.
void setKeys(QAction* action, QList<QKeySequence> keys) {
    for (qsizetype i = keys.size() - 1; i > 0; --i)
        if (keys.indexOf(keys[i]) < i) keys.removeAt(i);
    action->setShortcuts(keys);
    if (keys.isEmpty()) return;
    action->setToolTip(QStringLiteral("%1 (%2)").arg(
        action->toolTip(), keys.front().toString(QKeySequence::NativeText)));
}

/// The name alone: in Chinese and Japanese the key stands behind it, as in "X(&O)…".
QString withoutMnemonic(QString text) {
    static const QRegularExpression marks(QStringLiteral("\\s*\\(&.\\)|&|…"));
    return text.remove(marks);
}

QKeySequence key(QKeyCombination combination) {
    return QKeySequence(combination);
}

}  // namespace

MainActions::MainActions(MainWindow& window) : QObject(&window), window_(window) {
    makeFile();
    makeEdit();
    makeView();
    makeTools();
    makeText();
    fillMenus();
    fillToolBar();
}

QAction* MainActions::make(const QString& text, const QString& icon, const QString& tip) {
    auto* action = new QAction(text, &window_);
    if (!icon.isEmpty()) action->setIcon(themedIcon(icon));
    action->setToolTip(tip);
    action->setIconVisibleInMenu(false);
    return action;
}

void MainActions::makeFile() {
    open = make(tr("&Open…"), "open", tr("Open a photo"));
    setKeys(open, {QKeySequence::Open});
    save = make(tr("&Save…"), "save", tr("Save the result"));
    setKeys(save, {QKeySequence::Save});
    saveAndEdit = make(tr("Save and &Edit…"), "save-edit", tr("Save the result and edit"));
    setKeys(saveAndEdit, {key(Qt::CTRL | Qt::SHIFT | Qt::Key_S)});
    closeNoSave = make(tr("&Close Without Saving"), {},
                       tr("Hide the window; starting the program again shows it"));
    setKeys(closeNoSave, {key(Qt::CTRL | Qt::Key_W)});
    quit = make(tr("&Quit"), {}, tr("Quit"));
    setKeys(quit, {QKeySequence::Quit, key(Qt::CTRL | Qt::Key_Q)});
    quit->setMenuRole(QAction::QuitRole);
}

void MainActions::makeEdit() {
    undo = make(tr("&Undo"), "undo", tr("Undo the last change of the settings"));
    setKeys(undo, {QKeySequence::Undo});
    redo = make(tr("&Redo"), "redo", tr("Redo the change of the settings"));
    setKeys(redo, {key(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), key(Qt::CTRL | Qt::Key_Y)});
    copy = make(tr("&Copy"), "copy", tr("Copy the result"));
    setKeys(copy, {QKeySequence::Copy});
    copyAsPng =
        make(tr("Copy as &PNG"), "copy-png", tr("Copy the result for programs that take no TIFF"));
    setKeys(copyAsPng, {key(Qt::CTRL | Qt::ALT | Qt::Key_C)});
    copySelection = make(tr("Copy Se&lection"), {}, tr("Copy the selected part of what is shown"));
    setKeys(copySelection, {key(Qt::CTRL | Qt::SHIFT | Qt::Key_C)});
    copySelection->setEnabled(false);
    paste = make(tr("Pas&te Picture"), {}, tr("Make the picture on the clipboard the source"));
    setKeys(paste, {QKeySequence::Paste});
    selectAll = make(tr("Select &All"), {}, tr("Select the whole picture"));
    setKeys(selectAll, {QKeySequence::SelectAll});
    reset = make(tr("Re&set Settings"), "reset", tr("Return every setting to its default"));
    setKeys(reset, {key(Qt::CTRL | Qt::SHIFT | Qt::Key_R)});
    playCue = make(tr("Play a S&ound After Copying"), {}, tr("Play a sound after copying"));
    playCue->setCheckable(true);
}

void MainActions::makeView() {
    zoom[0] = make(tr("Zoom &Out"), "zoom-out", tr("Zoom out"));
    setKeys(zoom[0], {key(Qt::CTRL | Qt::Key_Minus)});
    zoom[1] = make(tr("Zoom &In"), "zoom-in", tr("Zoom in"));
    setKeys(zoom[1], {key(Qt::CTRL | Qt::Key_Plus), key(Qt::CTRL | Qt::Key_Equal)});
    zoom[2] = make(tr("&Actual Size"), "zoom-actual", tr("One image pixel on one screen pixel"));
    setKeys(zoom[2], {key(Qt::CTRL | Qt::Key_0)});
    zoom[3] = make(tr("&Fit to Window"), "zoom-fit", tr("Show the whole picture"));
    setKeys(zoom[3], {key(Qt::CTRL | Qt::Key_9)});
    checkerboard = make(tr("&Checkerboard"), "checkerboard",
                        tr("Show a checkerboard where the result is transparent"));
    setKeys(checkerboard, {key(Qt::CTRL | Qt::Key_K)});
    showText = make(tr("Show &Text"), {}, tr("Show the text below the picture"));
    setKeys(showText, {key(Qt::CTRL | Qt::Key_T)});
    fullScreen = make(tr("F&ull Screen"), {}, tr("Full screen"));
    setKeys(fullScreen, {key(Qt::Key_F11)});
    for (QAction* action : {checkerboard, showText, fullScreen}) action->setCheckable(true);
    connect(&window_, &MainWindow::fullScreenChanged, fullScreen, &QAction::setChecked);
    const QString names[] = {tr("As the &System"), tr("&Light"), tr("&Dark")};
    auto* group = new QActionGroup(&window_);
    for (std::size_t i = 0; i < appearance.size(); ++i) {
        appearance[i] = make(names[i], {}, {});
        appearance[i]->setCheckable(true);
        group->addAction(appearance[i]);
    }
}

void MainActions::makeTools() {
    const struct {
        QString text;
        const char* icon;
        QString tip;
    } kinds[] = {
        {tr("&Move"), "tool-move", tr("Move the picture by dragging")},
        {tr("&Select"), "tool-select", tr("Select a part by dragging")},
        {tr("&Crop"), "tool-crop", tr("Show only the part that is dragged over; Escape shows all")},
        {tr("&Rotate"), "tool-rotate", tr("Turn what is shown by dragging; Shift turns in steps")},
        {tr("&Annotate"), "tool-annotate", tr("Put marks on what is shown")},
    };
    auto* group = new QActionGroup(&window_);
    for (std::size_t i = 0; i < tools.size(); ++i) {
        tools[i] = make(kinds[i].text, QString::fromLatin1(kinds[i].icon), kinds[i].tip);
        tools[i]->setCheckable(true);
        setKeys(tools[i], {key(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + static_cast<int>(i)))});
        group->addAction(tools[i]);
    }
    tools[0]->setChecked(true);
    discardEdits =
        make(tr("Show the &Whole Picture"), {}, tr("Forget crop, turn, selection and marks"));
    setKeys(discardEdits, {key(Qt::CTRL | Qt::Key_Backspace)});
}

void MainActions::makeText() {
    imageText = make(tr("&Image Text"), "image-text", tr("Make the text the picture"));
    setKeys(imageText, {key(Qt::CTRL | Qt::Key_Return), key(Qt::CTRL | Qt::Key_Enter)});
    backgroundColor =
        make(tr("&Background Colour…"), "color-panel", tr("Choose the background colour"));
    setKeys(backgroundColor, {key(Qt::CTRL | Qt::SHIFT | Qt::Key_B)});
    textColor = make(tr("Text &Colour…"), "text-color", tr("Choose the colour of the text"));
    setKeys(textColor, {key(Qt::CTRL | Qt::SHIFT | Qt::Key_T)});
    help = make(tr("Skarnel &Help"), "help", tr("Open the product's page"));
    setKeys(help, {QKeySequence::HelpContents});
    about = make(tr("&About Skarnel"), {}, {});
    about->setMenuRole(QAction::AboutRole);
}

void MainActions::fillMenus() {
    QMenuBar* bar = window_.menuBar();
    QMenu* file = bar->addMenu(tr("&File"));
    file->addAction(open);
    recent = file->addMenu(tr("Open &Recent"));
    file->addSeparator();
    file->addActions({save, saveAndEdit});
    file->addSeparator();
    file->addActions({closeNoSave, quit});

    QMenu* edit = bar->addMenu(tr("&Edit"));
    edit->addActions({undo, redo});
    edit->addSeparator();
    edit->addActions({copy, copyAsPng, copySelection, paste, selectAll});
    edit->addSeparator();
    edit->addAction(reset);
    edit->addSeparator();
    edit->addAction(playCue);

    QMenu* view = bar->addMenu(tr("&View"));
    view->addActions({zoom[1], zoom[0], zoom[2], zoom[3]});
    view->addSeparator();
    view->addActions({checkerboard, showText});
    view->addMenu(tr("A&ppearance"))->addActions({appearance[0], appearance[1], appearance[2]});
    view->addSeparator();
    view->addAction(fullScreen);

    QMenu* toolMenu = bar->addMenu(tr("&Tools"));
    for (QAction* tool : tools) toolMenu->addAction(tool);
    toolMenu->addSeparator();
    toolMenu->addAction(discardEdits);

    QMenu* text = bar->addMenu(tr("Te&xt"));
    text->addAction(imageText);
    text->addSeparator();
    for (QAction* style : window_.textBar().styleActions()) text->addAction(style);
    text->addSeparator();
    for (QAction* alignment : window_.textBar().alignmentActions()) text->addAction(alignment);
    text->addSeparator();
    text->addActions({textColor, backgroundColor});

    bar->addMenu(tr("&Help"))->addActions({help, about});
}

void MainActions::fillToolBar() {
    toolBar = window_.addToolBar(tr("Tools"));
    toolBar->setObjectName(QStringLiteral("toolBar"));
    toolBar->setMovable(false);
    toolBar->setFloatable(false);
    toolBar->setContextMenuPolicy(Qt::PreventContextMenu);
    toolBar->setIconSize({22, 22});
    toolBar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    toolBar->addActions({open, save, saveAndEdit, copy});
    toolBar->addSeparator();
    toolBar->addActions({zoom[0], zoom[1], zoom[2], zoom[3]});
    zoomLabel_ = new QLabel;
    zoomLabel_->setAccessibleName(tr("Zoom"));
    zoomLabel_->setAlignment(Qt::AlignCenter);
    zoomLabel_->setMinimumWidth(
        zoomLabel_->fontMetrics().horizontalAdvance(QStringLiteral("00000 %")) + 8);
    toolBar->addWidget(zoomLabel_);
    toolBar->addSeparator();
    for (QAction* tool : tools) toolBar->addAction(tool);
    auto* gap = new QWidget;
    gap->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    toolBar->addWidget(gap);
    toolBar->addActions({undo, redo});
    toolBar->addSeparator();
    toolBar->addAction(help);
    for (QAction* action : toolBar->actions()) {
        auto* button = qobject_cast<QToolButton*>(toolBar->widgetForAction(action));
        if (button == nullptr) continue;
        button->setFocusPolicy(Qt::TabFocus);
        button->setAccessibleName(withoutMnemonic(action->text()));
    }
}

void MainActions::showHistory(const SettingsModel& model) {
    const SettingsUndo& history = model.history();
    const bool changing = history.isGestureOpen();
    undo->setEnabled(history.canUndo() || changing);
    redo->setEnabled(history.canRedo() && !changing);
    // A look's name may have the sign that marks a key.
    const auto shown = [](const std::string& label) {
        return QString::fromStdString(label).replace(QLatin1Char('&'), QLatin1String("&&"));
    };
    const QString undone = shown(history.undoLabel());
    const QString redone = shown(history.redoLabel());
    undo->setText(undone.isEmpty() ? tr("&Undo") : tr("&Undo %1").arg(undone));
    redo->setText(redone.isEmpty() ? tr("&Redo") : tr("&Redo %1").arg(redone));
}

void MainActions::showZoom(double factor) {
    const double percent = factor * 100;
    const QString number = QLocale().toString(percent, 'f', percent < 10 ? 1 : 0);
    zoomLabel_->setText(tr("%1 %").arg(number));
    zoomLabel_->setAccessibleName(tr("Zoom: %1 %").arg(number));
}

}  // namespace skarnel
