#include "qt/page/remote_page.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <utility>

#include "qt/page/page_messages.h"
#include "qt/page/page_patience.h"
#include "util/log/message.h"

namespace skarnel {

RemotePage::RemotePage(std::string program, Log log)
    : program_(std::move(program)), log_(std::move(log)) {
    QCoreApplication::instance()->installEventFilter(this);
    silence_.setSingleShot(true);
    connect(&silence_, &QTimer::timeout, this, &RemotePage::ended);
    start();
}

RemotePage::~RemotePage() = default;

void RemotePage::start() {
    auto process = PageProcess::start(program_);
    if (!process) return log_(process.error().message);
    process_ = *std::move(process);
    ear_ = std::make_unique<QSocketNotifier>(process_->line(), QSocketNotifier::Read);
    connect(ear_.get(), &QSocketNotifier::activated, this, &RemotePage::hear);
}

void RemotePage::stop() {
    if (ear_ != nullptr) {
        ear_->setEnabled(false);
        ear_.release()->deleteLater();  // it may be the one that called
    }
    process_.reset();
    silence_.stop();
}

void RemotePage::load(const QString& address, QSize size) {
    address_ = address;
    viewSize_ = size;
    documentSize_ = QSizeF(size);
    isLoading_ = true;
    hasRetried_ = false;
    if (process_ == nullptr) {
        // Not from within the caller's own call.
        QTimer::singleShot(0, this, [this] {
            if (isLoading_) finish(false);
        });
        return;
    }
    send(pageMessage(PageMessageKind::Load, address_, viewSize_));
}

void RemotePage::send(const PageMessage& message) {
    if (process_ != nullptr) (void)sendPageMessage(process_->line(), message);
    // Where it is gone, the line is readable and tells so.
}

void RemotePage::hear() {
    while (process_ != nullptr) {
        bool isOpen = true;
        auto message = receivePageMessage(process_->line(), isOpen);
        if (!isOpen) return ended();
        if (!message) return;
        const bool isUnderstood = take(*message);
        if (message->descriptor >= 0) ::close(message->descriptor);
        if (!isUnderstood) return ended();
    }
}

bool RemotePage::take(PageMessage& message) {
    QString text;
    QByteArray line;
    bool flag = false;
    switch (message.kind) {
        case PageMessageKind::Requested:
            if (!readValues(message, text, flag)) return false;
            if (isLoading_) emit requested(text, flag);
            return true;
        case PageMessageKind::Started:
            if (isLoading_) emit started();
            return true;
        case PageMessageKind::TitleReceived:
            if (!readValues(message, text)) return false;
            if (isLoading_) emit titleReceived(text);
            return true;
        case PageMessageKind::Finished: {
            QSizeF size;
            if (!readValues(message, flag, size)) return false;
            documentSize_ = size;
            if (isLoading_)
                finish(flag);
            else if (wanted_)
                askForPicture();
            return true;
        }
        case PageMessageKind::Drawing:
            if (silence_.isActive()) silence_.start();
            return true;
        case PageMessageKind::Picture:
            return takePicture(message);
        case PageMessageKind::Said:
            if (!readValues(message, line)) return false;
            log_({line.constData(), static_cast<std::size_t>(line.size())});
            return true;
        default:
            return false;
    }
}

bool RemotePage::takePicture(PageMessage& message) {
    QSize size;
    if (!readValues(message, size) || !wanted_) return false;
    if (!size.isEmpty()) {
        if (size != *wanted_) return false;
        picture_ = imageOfSharedRows(std::exchange(message.descriptor, -1), size);
    }
    wanted_.reset();
    silence_.stop();
    emit answered();
    return true;
}

void RemotePage::ended() {
    stop();
    if (isQuitting_) return;
    if ((isLoading_ || wanted_) && startAgain()) return;
    log_(marked("The page renderer ended"));
    if (std::exchange(wanted_, std::nullopt)) emit answered();
    if (isLoading_) finish(false);
}

bool RemotePage::startAgain() {
    if (std::exchange(hasRetried_, true)) return false;
    log_(marked("The page renderer ended in the middle of a page; it is started again"));
    start();
    if (process_ == nullptr) return false;
    send(pageMessage(PageMessageKind::Load, address_, viewSize_));
    return true;
}

void RemotePage::finish(bool ok) {
    isLoading_ = false;
    emit finished(ok);
}

bool RemotePage::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Quit && watched == QCoreApplication::instance()) {
        isQuitting_ = true;
        if (std::exchange(wanted_, std::nullopt)) emit answered();
        if (isLoading_) finish(false);
    }
    return QObject::eventFilter(watched, event);
}

void RemotePage::askForPicture() {
    send(pageMessage(PageMessageKind::Capture, *wanted_));
    silence_.start(silencePatience(*wanted_));
}

QImage RemotePage::capture(QSize size) {
    if (isQuitting_ || wanted_) return {};
    picture_ = {};
    wanted_ = size;
    // One that is started again is asked when it has loaded.
    if (process_ != nullptr) {
        askForPicture();
    } else if (!startAgain()) {
        wanted_.reset();
        return {};
    }
    QEventLoop wait;
    connect(this, &RemotePage::answered, &wait, &QEventLoop::quit);
    QTimer::singleShot(paintPatience(size) + kAnswerMilliseconds, &wait, &QEventLoop::quit);
    wait.exec(QEventLoop::ExcludeUserInputEvents);
    if (std::exchange(wanted_, std::nullopt) && !isQuitting_) {
        // It does not even say that it has no picture.
        stop();
        log_(marked("The page was not painted in time"));
    }
    return std::exchange(picture_, {});
}

}  // namespace skarnel
