// One page of the web engine in a view that is never shown: load, measure, size, draw.
#pragma once

#include <QColor>
#include <QImage>
#include <QObject>
#include <QSizeF>
#include <QUrl>
#include <QWebEngineUrlRequestInterceptor>
#include <functional>
#include <memory>
#include <string_view>

class QWebEnginePage;
class QWebEngineProfile;
class QWebEngineView;

namespace skarnel {

/// Lets the one page through that was asked for, and data; everything else is blocked.
class OwnPageOnly final : public QWebEngineUrlRequestInterceptor {
    Q_OBJECT
  public:
    using QWebEngineUrlRequestInterceptor::QWebEngineUrlRequestInterceptor;
    void setPage(const QUrl& page) { page_ = page; }
    void interceptRequest(QWebEngineUrlRequestInfo& info) override;

  signals:
    void requested(const QUrl& url, bool allowed);

  private:
    QUrl page_;
};

class PageEngine final : public QObject {
    Q_OBJECT
  public:
    using Log = std::function<void(std::string_view)>;

    /// `profile` is borrowed. Sizes are pixels, one for each unit of the page.
    PageEngine(QWebEngineProfile& profile, Log log);
    ~PageEngine() override;

    /// Loads in a view of about that size (the page's layout does not depend on it, so a very large
    /// one is held down) and returns at once.
    void load(const QUrl& url, QSize size);

    /// The laid-out document, known when the load has finished.
    QSizeF documentSize() const { return documentSize_; }

    /// What the page shows in a view of that size, or a null image when it did not show its final
    /// state in a bounded time. Runs the event loop while it waits.
    QImage capture(QSize size);

  signals:
    void requested(const QUrl& url, bool allowed);
    void started();
    void titleReceived(const QString& title);
    /// Once for each load, also when it failed. The document's size has been measured where there
    /// is a document.
    void finished(bool ok);
    /// Now and then while a capture waits for the page's final state.
    void drawing();
    /// The process that draws is gone, and this engine is of no more use.
    void died();

  private:
    void makeView();
    void applySettings();
    void loadEnded(bool ok);
    void finish(bool ok);
    void showSentinel(const QColor& color);
    bool drawUntilSentinel(QImage& image, const QColor& sentinel, int limitMilliseconds);

    QWebEngineProfile& profile_;
    Log log_;
    OwnPageOnly* interceptor_;
    std::unique_ptr<QWebEngineView> view_;
    QWebEnginePage* page_ = nullptr;  // the view's child
    QSizeF documentSize_;
    int loadRound_ = 0;  // tells answers to an earlier load from those to this one
    bool isLoading_ = false;
};

}  // namespace skarnel
