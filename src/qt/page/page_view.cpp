#include "qt/page/page_view.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "qt/page/page_messages.h"
#include "util/geometry/integers.h"
#include "util/log/message.h"

namespace skarnel {
namespace {

QSize wholeSize(CGSize size) {
    return {std::max(0, toInt32(size.width)), std::max(0, toInt32(size.height))};
}

// The engine's blending of a colour over itself is a step off in some pixels. They are the ground's
// again here, so that text in the colour of the ground is no text; the first pixel is the ground.
void settleOnGround(MutablePixelView page) {
    const std::uint8_t* ground = page.bytes;
    const auto isStepOff = [&](const std::uint8_t* pixel) {
        for (int k = 0; k < 3; ++k)
            if (std::abs(pixel[k] - ground[k]) > 1) return false;
        return true;
    };
    for (int y = 0; y < page.height; ++y)
        for (int x = 0; x < page.width; ++x) {
            std::uint8_t* pixel = page.row(y) + std::ptrdiff_t{4} * x;
            if (isStepOff(pixel)) std::memcpy(pixel, ground, 3);
        }
}

}  // namespace

PageView::PageView(std::unique_ptr<RemotePage> page, GiveBack giveBack,
                   const PageModuleContext& context, const CGRect& frame)
    : page_(std::move(page)), giveBack_(std::move(giveBack)), context_(context), frame_(frame) {
    QObject::connect(
        page_.get(), &RemotePage::requested, page_.get(),
        [this](const QString& address, bool allowed) { resourceRequested(address, allowed); });
    QObject::connect(page_.get(), &RemotePage::started, page_.get(), [this] {
        if (frameLoadDelegate_ != nullptr)
            frameLoadDelegate_->webViewDidStartProvisionalLoad(*this);
    });
    QObject::connect(page_.get(), &RemotePage::titleReceived, page_.get(),
                     [this](const QString& title) {
                         if (frameLoadDelegate_ != nullptr)
                             frameLoadDelegate_->webViewDidReceiveTitle(*this, title.toStdString());
                     });
    QObject::connect(page_.get(), &RemotePage::finished, page_.get(),
                     [this](bool ok) { loadFinished(ok); });
}

PageView::~PageView() {
    page_->disconnect(page_.get());
    giveBack_(std::move(page_));
}

void PageView::setFrameLoadDelegate(WebFrameLoadDelegate* delegate) {
    frameLoadDelegate_ = delegate;
}

// None of what it could be asked is asked.
void PageView::setUIDelegate(WebUIDelegate*) {}

void PageView::setResourceLoadDelegate(WebResourceLoadDelegate* delegate) {
    resourceLoadDelegate_ = delegate;
}

void PageView::loadRequest(const NSURLRequest& request) {
    page_->load(QString::fromStdString(request.url), wholeSize(frame_.size()));
}

CGRect PageView::frameViewDocumentViewFrame() {
    if (!hasLoaded_) return rectFromSize(frame_.size());
    const QSizeF size = page_->documentSize();
    return {0, 0, size.width(), size.height()};
}

void PageView::resourceRequested(const QString& address, bool allowed) {
    if (resourceLoadDelegate_ == nullptr) return;
    const NSURLRequest request{address.toStdString()};
    const std::int32_t identifier =
        resourceLoadDelegate_->webViewIdentifierForInitialRequest(*this, request);
    resourceLoadDelegate_->webViewResourceWillSendRequest(*this, identifier, request);
    if (allowed) {
        loading_.push_back(identifier);
    } else {
        context_.log("Blocked: " + request.url);
        resourceLoadDelegate_->webViewResourceDidFailLoading(
            *this, identifier, Error{ErrorCode::Unsupported, "Pages load nothing but themselves"});
    }
}

void PageView::loadFinished(bool ok) {
    hasLoaded_ = true;
    for (const std::int32_t resource : std::exchange(loading_, {})) {
        if (resourceLoadDelegate_ == nullptr) break;
        if (ok)
            resourceLoadDelegate_->webViewResourceDidFinishLoading(*this, resource);
        else
            resourceLoadDelegate_->webViewResourceDidFailLoading(
                *this, resource, Error{ErrorCode::CannotRead, "The page did not load"});
    }
    if (ok && frameLoadDelegate_ != nullptr) frameLoadDelegate_->webViewDidFinishLoad(*this);
    context_.notificationCenter->postNotification({WebViewProgressFinishedNotification, this});
}

void PageView::setFrame(const CGRect& frame) {
    frame_ = frame;
}

CGRect PageView::visibleRect() {
    return rectFromSize(frame_.size());
}

std::optional<PixelBuffer> PageView::bitmapImageRepForCachingDisplayInRect(const CGRect& rect) {
    const QSize size = wholeSize(rect.size());
    if (size.width() > kLargestCaptureSide || size.height() > kLargestCaptureSide) {
        context_.log(
            filled("A page of %1 by %2 pixels is too large to capture; at most %3 by %3 are",
                   {std::to_string(size.width()), std::to_string(size.height()),
                    std::to_string(kLargestCaptureSide)}));
        return std::nullopt;
    }
    return PixelBuffer::zeroed(size.width(), size.height());
}

PaintOutcome PageView::cacheDisplayInRect(const CGRect& rect, PixelBuffer& bitmap) {
    // The engine draws the whole view; every rectangle that is asked for is the visible one.
    const QImage image = page_->capture(wholeSize(rect.size()));
    const MutablePixelView target = bitmap.view();
    if (image.width() != target.width || image.height() != target.height)
        return PaintOutcome::NotPainted;
    for (int y = 0; y < target.height; ++y)
        std::memcpy(target.row(y), image.constScanLine(y), std::size_t{4} * target.width);
    settleOnGround(target);
    return PaintOutcome::Painted;
}

}  // namespace skarnel
