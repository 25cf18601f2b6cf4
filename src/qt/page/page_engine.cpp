#include "qt/page/page_engine.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QFontInfo>
#include <QRandomGenerator>
#include <QScreen>
#include <QTimer>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInfo>
#include <QWebEngineView>
#include <algorithm>
#include <cmath>

namespace skarnel {
namespace {

constexpr int kLargestLoadSide = 2048;             // pixels of the view while a page loads
constexpr int kSentinelSide = 4;                   // pixels
constexpr int kRedrawMilliseconds = 4;             // between two looks at the sentinel
constexpr int kTriesASentinel = 50;                // looks after which it is put there again
constexpr int kPaintMilliseconds = 15'000;         // of waiting for a page of ordinary size ...
constexpr double kPaintPixelsAMillisecond = 2000;  // ... and more for one of many pixels

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

// A logical length that covers the device pixels and is, of the lengths near by, the one closest
// to a whole number of them.
int logicalLength(int devicePixels, double scale) {
    constexpr int kTries = 16;
    const int least = std::max(1, static_cast<int>(std::ceil(devicePixels / scale - 1e-9)));
    int best = least;
    double bestError = 1;
    for (int length = least; length < least + kTries; ++length) {
        const double error = std::abs(length * scale - std::round(length * scale));
        if (error > bestError - 1e-9 || std::round(length * scale) < devicePixels) continue;
        best = length;
        bestError = error;
    }
    return best;
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
    QCoreApplication::instance()->installEventFilter(this);
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
    connect(page_, &QWebEnginePage::renderProcessTerminated, this, &PageEngine::rendererEnded);
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

double PageEngine::scale() const {
    return view_->screen()->devicePixelRatio();
}

void PageEngine::resizeView(QSize devicePixels) {
    view_->resize(logicalLength(devicePixels.width(), scale()),
                  logicalLength(devicePixels.height(), scale()));
    page_->setZoomFactor(1 / scale());
}

void PageEngine::load(const QUrl& url, QSize size) {
    url_ = url;
    interceptor_->setPage(url);
    documentSize_ = QSizeF(size);
    isLoading_ = true;
    hasRetried_ = false;
    isDead_ = false;
    ++loadRound_;
    resizeView({std::clamp(size.width(), 1, kLargestLoadSide),
                std::clamp(size.height(), 1, kLargestLoadSide)});
    view_->show();
    page_->load(url);
}

void PageEngine::loadEnded(bool ok) {
    if (!isLoading_) return;
    if (isQuitting_ || isDead_) return finish(false);
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

void PageEngine::rendererEnded() {
    if (isQuitting_) return;
    if (isLoading_ && !hasRetried_) {
        hasRetried_ = true;
        ++loadRound_;
        log_("The page renderer ended in the middle of a page; it is started again");
        // Not from within the engine's own report of the end.
        QTimer::singleShot(0, this, [this, round = loadRound_] {
            if (round == loadRound_ && isLoading_) page_->load(url_);
        });
        return;
    }
    isDead_ = true;
    log_("The page renderer ended");
    if (isLoading_) finish(false);
}

void PageEngine::finish(bool ok) {
    isLoading_ = false;
    emit finished(ok);
}

bool PageEngine::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Quit && watched == QCoreApplication::instance()) {
        isQuitting_ = true;
        if (isLoading_) finish(false);
    }
    return QObject::eventFilter(watched, event);
}

void PageEngine::showSentinel(const QColor& color) {
    page_->runJavaScript(QString(kSentinelScript).arg(kSentinelSide).arg(color.name()),
                         QWebEngineScript::ApplicationWorld);
}

bool PageEngine::waitFor(const std::function<bool()>& isDone, int limitMilliseconds) {
    QElapsedTimer clock;
    clock.start();
    while (!isDead_ && !isQuitting_) {
        if (isDone()) return true;
        if (clock.elapsed() > limitMilliseconds) return false;
        QEventLoop round;
        QTimer::singleShot(kRedrawMilliseconds, &round, &QEventLoop::quit);
        round.exec(QEventLoop::ExcludeUserInputEvents);
    }
    return false;
}

bool PageEngine::drawUntilSentinel(QImage& image, QSize wanted, const QColor& sentinel) {
    const double pixels = double(wanted.width()) * wanted.height();
    const int limit = kPaintMilliseconds + static_cast<int>(pixels / kPaintPixelsAMillisecond);
    int tries = 0;
    return waitFor(
        [&] {
            // A page that began to load only now has lost its sentinel.
            if (++tries % kTriesASentinel == 0) showSentinel(sentinel);
            // The view may grow by a pixel of the screen's while it is laid out, hence the size
            // now.
            const QSize device = (QSizeF(view_->size()) * scale()).toSize();
            if (image.size() != device)
                image = QImage(device, QImage::Format_RGBA8888_Premultiplied);
            image.setDevicePixelRatio(scale());
            view_->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
            image.setDevicePixelRatio(1);
            return device.height() >= wanted.height() && device.width() >= wanted.width() &&
                   hasColor(image, sentinel, image.height());
        },
        limit);
}

QImage PageEngine::capture(QSize size) {
    if (isDead_ || isQuitting_) return {};
    const QSize wanted(std::max(size.width(), kSentinelSide), size.height() + kSentinelSide);
    // Fresh for each capture, so that no frame of an earlier one can pass for this one's.
    const QColor sentinel = QColor::fromRgb(QRandomGenerator::global()->generate() | 0xFF000000U);
    resizeView(wanted);
    view_->show();
    showSentinel(sentinel);
    QImage image;
    if (!drawUntilSentinel(image, wanted, sentinel)) {
        if (!isQuitting_) log_("The page was not painted in time");
        return {};
    }
    return image.copy(QRect(QPoint(0, 0), size));
}

}  // namespace skarnel
