#include "qt/page/page_server.h"

#include <unistd.h>

#include <QUrl>

#include "qt/page/renderer_alarm.h"

namespace skarnel {
namespace {

// Nothing here is worth an orderly end, which might not come: the engine is told by its own line.
[[noreturn]] void leave() {
    ::_exit(0);
}

QString shortened(const QString& text) {
    return text.left(kLongestPageText);
}

}  // namespace

PageServer::PageServer(QWebEngineProfile& profile, int loadPatience)
    : loadPatience_(loadPatience),
      ear_(kPageLineDescriptor, QSocketNotifier::Read),
      engine_(profile, [this](std::string_view line) { say(line); }) {
    connect(&ear_, &QSocketNotifier::activated, this, &PageServer::hear);
    connect(&engine_, &PageEngine::requested, this, [this](const QUrl& url, bool allowed) {
        if (isLoading_) goOn();
        send(pageMessage(PageMessageKind::Requested, shortened(url.toString(QUrl::FullyEncoded)),
                         allowed));
    });
    connect(&engine_, &PageEngine::started, this, [this] {
        goOn();
        send(pageMessage(PageMessageKind::Started));
    });
    connect(&engine_, &PageEngine::titleReceived, this, [this](const QString& title) {
        send(pageMessage(PageMessageKind::TitleReceived, shortened(title)));
    });
    connect(&engine_, &PageEngine::finished, this, [this](bool ok) {
        isLoading_ = false;
        endUnlessCalledWithin(0);
        send(pageMessage(PageMessageKind::Finished, ok, engine_.documentSize()));
    });
    connect(&engine_, &PageEngine::drawing, this,
            [this] { send(pageMessage(PageMessageKind::Drawing)); });
    connect(&engine_, &PageEngine::died, this, [] { leave(); });
}

// A sign of life in a load.
void PageServer::goOn() const {
    endUnlessCalledWithin(loadPatience_);
}

void PageServer::hear() {
    bool isOpen = true;
    const auto message = receivePageMessage(kPageLineDescriptor, isOpen);
    if (!isOpen) leave();
    if (message) take(*message);
}

void PageServer::take(const PageMessage& message) {
    QString address;
    QSize size;
    if (message.kind == PageMessageKind::Load && readValues(message, address, size)) {
        isLoading_ = true;
        goOn();
        engine_.load(QUrl::fromEncoded(address.toUtf8(), QUrl::StrictMode), size);
    } else if (message.kind == PageMessageKind::Capture && readValues(message, size)) {
        answerWith(engine_.capture(size));
    } else {
        leave();
    }
}

void PageServer::answerWith(const QImage& picture) {
    const int rows = picture.isNull() ? -1 : sharedRows(picture);
    PageMessage answer = pageMessage(PageMessageKind::Picture, rows < 0 ? QSize() : picture.size());
    answer.descriptor = rows;
    send(answer);
    if (rows >= 0) ::close(rows);
}

void PageServer::say(std::string_view line) {
    send(pageMessage(PageMessageKind::Said,
                     QByteArray(line.data(), static_cast<qsizetype>(line.size()))));
}

void PageServer::send(const PageMessage& message) {
    if (!sendPageMessage(kPageLineDescriptor, message)) leave();
}

}  // namespace skarnel
