#include "qt/page/page_engine.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFontInfo>
#include <QRandomGenerator>
#include <QTimer>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInfo>
#include <QWebEngineView>
#include <algorithm>

#include "qt/page/page_patience.h"
#include "util/log/message.h"

namespace skarnel {
namespace {

constexpr int kLargestLoadSide = 2048;  // pixels of the view while a page loads
constexpr int kSentinelSide = 4;        // pixels
constexpr int kRedrawMilliseconds = 4;  // between two looks at the sentinel
constexpr int kTriesASentinel = 50;     // looks after which it is put there again

/// Pages of our own need nothing and open nothing.
class ClosedPage final : public QWebEnginePage {
  public:
    ClosedPage(QWebEngineProfile* profile, QObject* parent) : QWebEnginePage(profile, parent) {}

  protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override {
        return isMainFrame && type == NavigationTypeTyped && url.isLocalFile();
    }
    QWebEnginePage* createWindow(WebWindowType) override { return nullptr; }
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString&, int,
                                  const QString&) override {}
};

// The body's box with its margins, which is not stretched by the view as the root's scroll size is;
// where something reaches beyond both, the scroll size.
constexpr const char* kMeasureScript = R"(
(function() {
    const root = document.documentElement, body = document.body;
    if (!body) return [root.scrollWidth, root.scrollHeight];
    const box = body.getBoundingClientRect(), style = getComputedStyle(body);
    const width = box.right + scrollX + parseFloat(style.marginRight);
    const height = box.bottom + scrollY + parseFloat(style.marginBottom);
    return [root.scrollWidth > innerWidth ? Math.max(width, root.scrollWidth) : width,
            root.scrollHeight > innerHeight ? Math.max(height, root.scrollHeight) : height];
})())";

constexpr const char* kSentinelScript = R"(
(function(side, color) {
    let box = document.getElementById('skarnel-sentinel');
    if (!box) {
        box = document.createElement('div');
        box.id = 'skarnel-sentinel';
        document.documentElement.appendChild(box);
    }
    box.style.cssText = 'position:fixed;left:0;bottom:0;width:' + side + 'px;height:' + side +
                        'px;z-index:2147483647;background:' + color;
})(%1, '%2'))";

bool hasColor(const QImage& image, const QColor& color, int bottomRow) {
    for (int y = bottomRow - kSentinelSide; y < bottomRow; ++y)
        for (int x = 0; x < kSentinelSide; ++x)
            if (image.pixelColor(x, y) != color) return false;
    return true;
}

}  // namespace

void OwnPageOnly::interceptRequest(QWebEngineUrlRequestInfo& info) {
    const QUrl url = info.requestUrl();
    const bool isPage = url == page_ && info.requestMethod() == "GET" &&
                        info.resourceType() == QWebEngineUrlRequestInfo::ResourceTypeMainFrame;
    const bool isAllowed = isPage || url.scheme() == "data";
    if (!isAllowed) info.block(true);
    emit requested(url, isAllowed);
}

PageEngine::PageEngine(QWebEngineProfile& profile, Log log)
    : profile_(profile), log_(std::move(log)), interceptor_(new OwnPageOnly(this)) {
    connect(interceptor_, &OwnPageOnly::requested, this, &PageEngine::requested);
    makeView();
}

PageEngine::~PageEngine() = default;

void PageEngine::makeView() {
    view_ = std::make_unique<QWebEngineView>();
    view_->setAttribute(Qt::WA_DontShowOnScreen);
    view_->setAttribute(Qt::WA_ShowWithoutActivating);
    view_->setAttribute(Qt::WA_QuitOnClose, false);
    view_->setFocusPolicy(Qt::NoFocus);
    page_ = new ClosedPage(&profile_, view_.get());
    view_->setPage(page_);
    page_->setUrlRequestInterceptor(interceptor_);
    applySettings();
    connect(page_, &QWebEnginePage::loadStarted, this, &PageEngine::started);
    connect(page_, &QWebEnginePage::titleChanged, this, &PageEngine::titleReceived);
    connect(page_, &QWebEnginePage::loadFinished, this, &PageEngine::loadEnded);
    connect(page_, &QWebEnginePage::renderProcessTerminated, this, &PageEngine::died);
}

void PageEngine::applySettings() {
    QWebEngineSettings& settings = *page_->settings();
    for (const QWebEngineSettings::WebAttribute off :
         {QWebEngineSettings::JavascriptEnabled, QWebEngineSettings::ShowScrollBars,
          QWebEngineSettings::LocalStorageEnabled, QWebEngineSettings::PluginsEnabled,
          QWebEngineSettings::LocalContentCanAccessRemoteUrls,
          QWebEngineSettings::LocalContentCanAccessFileUrls, QWebEngineSettings::ErrorPageEnabled,
          QWebEngineSettings::AutoLoadIconsForPage, QWebEngineSettings::DnsPrefetchEnabled,
          QWebEngineSettings::WebGLEnabled, QWebEngineSettings::Accelerated2dCanvasEnabled,
          QWebEngineSettings::FocusOnNavigationEnabled, QWebEngineSettings::PdfViewerEnabled})
        settings.setAttribute(off, false);
    settings.setUnknownUrlSchemePolicy(QWebEngineSettings::DisallowUnknownUrlSchemes);
    settings.setFontSize(QWebEngineSettings::MinimumFontSize, 0);
    settings.setFontSize(QWebEngineSettings::MinimumLogicalFontSize, 0);
    // A family that is not installed falls back to the same face as in the text view.
    settings.setFontFamily(QWebEngineSettings::StandardFont,
                           QFontInfo(QFont("no such family")).family());
}

void PageEngine::load(const QUrl& url, QSize size) {
    interceptor_->setPage(url);
    documentSize_ = QSizeF(size);
    isLoading_ = true;
    ++loadRound_;
    view_->resize(std::clamp(size.width(), 1, kLargestLoadSide),
                  std::clamp(size.height(), 1, kLargestLoadSide));
    view_->show();
    page_->load(url);
}

void PageEngine::loadEnded(bool ok) {
    if (!isLoading_) return;
    const int round = loadRound_;
    page_->runJavaScript(kMeasureScript, QWebEngineScript::ApplicationWorld,
                         [this, round, ok](const QVariant& answer) {
                             if (round != loadRound_ || !isLoading_) return;
                             const QVariantList sides = answer.toList();
                             if (sides.size() == 2)
                                 documentSize_ = {sides[0].toDouble(), sides[1].toDouble()};
                             finish(ok);
                         });
}

void PageEngine::finish(bool ok) {
    isLoading_ = false;
    emit finished(ok);
}

void PageEngine::showSentinel(const QColor& color) {
    page_->runJavaScript(QString(kSentinelScript).arg(kSentinelSide).arg(color.name()),
                         QWebEngineScript::ApplicationWorld);
}

bool PageEngine::drawUntilSentinel(QImage& image, const QColor& sentinel, int limitMilliseconds) {
    QElapsedTimer clock;
    clock.start();
    QElapsedTimer sign;
    sign.start();
    for (int tries = 1; clock.elapsed() <= limitMilliseconds; ++tries) {
        // A page that began to load only now has lost its sentinel.
        if (tries % kTriesASentinel == 0) showSentinel(sentinel);
        view_->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        if (hasColor(image, sentinel, image.height())) return true;
        if (sign.hasExpired(kSignMilliseconds)) {
            emit drawing();
            sign.start();
        }
        QEventLoop round;
        QTimer::singleShot(kRedrawMilliseconds, &round, &QEventLoop::quit);
        round.exec();
    }
    return false;
}

QImage PageEngine::capture(QSize size) {
    const QSize wanted(std::max(size.width(), kSentinelSide), size.height() + kSentinelSide);
    // Fresh for each capture, so that no frame of an earlier one can pass for this one's.
    const QColor sentinel = QColor::fromRgb(QRandomGenerator::global()->generate() | 0xFF000000U);
    view_->resize(wanted);
    view_->show();
    showSentinel(sentinel);
    QImage image(wanted, QImage::Format_RGBA8888_Premultiplied);
    if (image.isNull()) {
        log_("There is no memory for a picture of the page");
        return {};
    }
    if (!drawUntilSentinel(image, sentinel, paintPatience(wanted))) {
        log_(marked("The page was not painted in time"));
        return {};
    }
    return image.copy(QRect(QPoint(0, 0), size));
}

}  // namespace skarnel
