// One page in the page renderer's process: load, measure, size, draw. When that process ends it is
// started again, once a page; whatever becomes of it, this one goes on.
#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QSizeF>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "qt/page/page_process.h"

namespace skarnel {

struct PageMessage;

class RemotePage final : public QObject {
    Q_OBJECT
  public:
    using Log = std::function<void(std::string_view)>;

    /// Starts the program at once, since it takes as long as the text to lay out; where it does not
    /// start, pages fail to load. Sizes are pixels.
    RemotePage(std::string program, Log log);
    ~RemotePage() override;

    /// Loads in a view of about that size and returns at once.
    void load(const QString& address, QSize size);

    /// The laid-out document, known when the load has finished.
    QSizeF documentSize() const { return documentSize_; }

    /// What the page shows in a view of that size, or a null image when it did not show its final
    /// state in a bounded time, its renderer ended again, or the program is quitting. A renderer
    /// that says nothing for some seconds is ended. Lets no user input in while it waits.
    QImage capture(QSize size);

    /// Whether another page can be loaded as into a new renderer.
    bool isReusable() const { return process_ != nullptr && !isLoading_ && !isQuitting_; }

  signals:
    void requested(const QString& address, bool allowed);
    void started();
    void titleReceived(const QString& title);
    /// Once for each load, also when it failed, its renderer ended a second time, or the program
    /// quits.
    void finished(bool ok);
    /// While a capture waits: there is an answer, or there will be none.
    void answered();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void start();
    void hear();
    bool take(PageMessage& message);
    bool takePicture(PageMessage& message);
    void send(const PageMessage& message);
    void ended();
    bool startAgain();
    void askForPicture();
    void stop();
    void finish(bool ok);

    std::string program_;
    Log log_;
    std::unique_ptr<PageProcess> process_;  // null when it has ended
    std::unique_ptr<QSocketNotifier> ear_;
    QString address_;
    QSize viewSize_;
    QSizeF documentSize_;
    std::optional<QSize> wanted_;  // of a capture that waits for its answer
    QTimer silence_;               // runs while the renderer draws
    QImage picture_;
    bool isLoading_ = false;
    bool hasRetried_ = false;
    bool isQuitting_ = false;
};

}  // namespace skarnel
