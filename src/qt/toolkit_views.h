// The viewer, the text view and the main window as the controller sees them.
#pragma once

#include <QColor>
#include <functional>
#include <map>

#include "platform/image_view.h"
#include "platform/notification_center.h"
#include "platform/text_view.h"
#include "platform/window.h"

class QWidget;

namespace skarnel {

class TextEditor;
class Viewer;

QColor toQColor(const NSColor& color);
NSColor toNSColor(const QColor& color);

class QtImageView final : public IKImageView {
  public:
    explicit QtImageView(Viewer& viewer) : viewer_(viewer) {}

    /// The viewer has no edit panel: a double click goes between fitting and actual size.
    void setDoubleClickOpensImageEditPanel(bool /*opens*/) override {}
    void setAutohidesScrollers(bool hides) override;
    void setAutoresizes(bool resizes) override;
    void setBackgroundColor(const NSColor& color) override;
    void setCurrentToolMode(IKToolMode mode) override;
    CGRect visibleRect() const override;
    void setImage(const CGImage& image, const ImageProperties* imageProperties) override;
    double zoomFactor() const override;
    void setZoomFactor(double factor) override;
    void zoomImageToFit(const NSObject* sender) override;
    void zoomImageToActualSize(const NSObject* sender) override;

    /// Also told of each new background colour: the text view's ground is the same.
    void followBackground(std::function<void(const QColor&)> follower) {
        follower_ = std::move(follower);
    }

  private:
    Viewer& viewer_;
    std::function<void(const QColor&)> follower_;
};

class QtTextView final : public NSTextView {
  public:
    QtTextView(TextEditor& editor, NSNotificationCenter& center);

    void setPostsBoundsChangedNotifications(bool posts) override { postsBounds_ = posts; }
    void setFont(const NSFont& font) override;
    void insertText(std::u16string_view text) override;
    void setTextColor(const NSColor& color, NSRange range) override;
    void setString(std::u16string_view text) override;
    const NSAttributedString& textStorage() const override;

  private:
    TextEditor& editor_;
    bool postsBounds_ = false;
    mutable NSAttributedString storage_;
};

class QtWindow final : public NSWindow {
  public:
    explicit QtWindow(QWidget& window) : window_(window) {}

    /// From now on focus on the widget counts as focus on the responder.
    void setResponder(const QWidget& widget, NSResponder& responder);

    /// While set, stands for the focus: a field that is being left still acts as itself. Null ends
    /// it.
    void setStandIn(NSResponder* responder) { standIn_ = responder; }

    NSResponder* firstResponder() const override;
    void orderOut(const NSObject* sender) override;
    QWidget& widget() const { return window_; }

  private:
    QWidget& window_;
    std::map<const QWidget*, NSResponder*> responders_;
    NSResponder* standIn_ = nullptr;
    /// Stands for every other widget that has the focus.
    mutable NSResponder another_;
};

}  // namespace skarnel
