#include "qt/main_window.h"

#include <QCloseEvent>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QMimeData>
#include <QProgressBar>
#include <QScreen>
#include <QSplitter>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include "qt/announcer.h"
#include "qt/file_names.h"
#include "qt/focus_ring.h"
#include "qt/settings_panel.h"
#include "qt/text_bar.h"
#include "qt/text_editor.h"
#include "qt/toast.h"
#include "qt/viewer.h"

namespace skarnel {
namespace {

constexpr QSize kSmallest{720, 480};      // logical pixels
constexpr QSize kFrameRoom{16, 48};       // logical pixels that a window's frame may take
constexpr int kFullScreenPatience = 500;  // milliseconds until any size counts as full screen

QFrame* verticalLine() {
    auto* line = new QFrame;
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Plain);
    line->setForegroundRole(QPalette::Mid);
    line->setFixedWidth(1);
    return line;
}

}  // namespace

MainWindow::MainWindow(SettingsModel& model)
    : viewer_(new Viewer),
      textEditor_(new TextEditor),
      settings_(new SettingsPanel(model)),
      splitter_(new QSplitter(Qt::Vertical)),
      progress_(new QProgressBar(this)),
      toast_(new Toast(viewer_)),
      announcer_(new Announcer(*this)) {
    setObjectName(QStringLiteral("resultWindow"));
    new FocusRing(*viewer_);
    setAcceptDrops(true);
    progress_->hide();
    splitter_->setChildrenCollapsible(false);
    splitter_->setHandleWidth(5);
    splitter_->addWidget(viewer_);
    splitter_->addWidget(textArea());
    splitter_->setStretchFactor(0, 1);
    splitter_->setStretchFactor(1, 0);
    splitter_->setSizes({560, 170});
    settings_->setFixedWidth(settings_->sizeHint().width());

    auto* centre = new QWidget;
    auto* row = new QHBoxLayout(centre);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(splitter_, 1);
    row->addWidget(verticalLine());
    row->addWidget(settings_);
    setCentralWidget(centre);
    setMinimumSize(kSmallest);
    viewer_->setFocus();
}

QWidget* MainWindow::textArea() {
    auto* area = new QWidget;
    auto* column = new QVBoxLayout(area);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    textBar_ = new TextBar(*textEditor_);
    column->addWidget(textBar_);
    // In the text and in its bar, wherever there the focus is.
    for (QAction* style : textBar_->styleActions()) area->addAction(style);
    column->addWidget(textEditor_, 1);
    area->setMinimumHeight(110);
    return area;
}

void MainWindow::tell(const QString& message) {
    toast_->tell(message);
}

void MainWindow::endTelling() {
    toast_->hide();
}

void MainWindow::announce(const QString& message) {
    announcer_->tell(message);
}

void MainWindow::takeFirstSize() {
    resize(sizeHint().boundedTo(roomOnScreen()));
}

QSize MainWindow::roomOnScreen() const {
    return screen()->availableSize() - kFrameRoom;
}

void MainWindow::setTextShown(bool shown) {
    if (shown == textShown()) return;
    splitter_->widget(1)->setVisible(shown);
    // Its size may be the same as before; what it leaves to the picture is not.
    emit textEditor_->frameChanged();
}

bool MainWindow::textShown() const {
    return !splitter_->widget(1)->isHidden();
}

bool MainWindow::event(QEvent* event) {
    const bool taken = QMainWindow::event(event);
    // What the bars and the panel need differs from language to language; a screen may have less.
    if (event->type() == QEvent::LayoutRequest)
        setMinimumSize(
            layout()->totalMinimumSize().boundedTo(roomOnScreen()).expandedTo(kSmallest));
    return taken;
}

void MainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    emit resized();
    if (fullScreenAwaited_ && size() == screen()->size()) noticeFullScreen();
}

void MainWindow::noticeFullScreen() {
    if (std::exchange(fullScreenAwaited_, false)) emit enteredFullScreen();
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange) return;
    emit fullScreenChanged(isFullScreen());
    const auto before = static_cast<QWindowStateChangeEvent*>(event)->oldState();
    fullScreenAwaited_ = isFullScreen() && !before.testFlag(Qt::WindowFullScreen);
    if (!fullScreenAwaited_) return;
    // The state and the size arrive one after the other, in either order; and a window manager may
    // keep a part of the screen for itself.
    if (size() == screen()->size())
        noticeFullScreen();
    else
        QTimer::singleShot(kFullScreenPatience, this, &MainWindow::noticeFullScreen);
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!event->spontaneous()) emit shownChanged(true);
}

void MainWindow::hideEvent(QHideEvent* event) {
    QMainWindow::hideEvent(event);
    if (!event->spontaneous()) emit shownChanged(false);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    emit closing();
    event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    // The result on its way out is no picture to open.
    if (event->source() != nullptr) return event->ignore();
    // Taken in any case: a drop that cannot be used is answered, never swallowed.
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    if (event->source() != nullptr) return event->ignore();
    event->acceptProposedAction();
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile()) paths << pathOfAddress(url);
    if (paths.isEmpty())
        emit dropRefused();
    else
        emit picturesDropped(paths);
}

}  // namespace skarnel
