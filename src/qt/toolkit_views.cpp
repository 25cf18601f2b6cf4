#include "qt/toolkit_views.h"

#include <QWidget>

#include "qt/text_editor.h"
#include "qt/viewer.h"

namespace skarnel {

QColor toQColor(const NSColor& color) {
    const DeviceColor rgb = color.deviceColor();
    return QColor::fromRgbF(static_cast<float>(std::clamp(rgb.red, 0.0, 1.0)),
                            static_cast<float>(std::clamp(rgb.green, 0.0, 1.0)),
                            static_cast<float>(std::clamp(rgb.blue, 0.0, 1.0)),
                            static_cast<float>(std::clamp(rgb.alpha, 0.0, 1.0)));
}

NSColor toNSColor(const QColor& color) {
    // The panel works in 8 bits; the exact quotients truncate back to the same bytes, where the
    // toolkit's own 16-bit components would lose one here and there.
    const QColor rgb = color.toRgb();
    return NSColor::colorWithDeviceRed(rgb.red() / 255.0, rgb.green() / 255.0, rgb.blue() / 255.0,
                                       rgb.alpha() / 255.0);
}

void QtImageView::setAutohidesScrollers(bool hides) {
    viewer_.setAutohidesScrollers(hides);
}

void QtImageView::setAutoresizes(bool resizes) {
    viewer_.setAutoresizes(resizes);
}

void QtImageView::setBackgroundColor(const NSColor& color) {
    const QColor shown = toQColor(color);
    viewer_.setBackground(shown);
    if (follower_) follower_(shown);
}

void QtImageView::setCurrentToolMode(IKToolMode mode) {
    viewer_.setToolMode(mode);
}

CGRect QtImageView::visibleRect() const {
    const CGSize size = viewer_.viewportSize();
    return {0, 0, size.width, size.height};
}

void QtImageView::setImage(const CGImage& image, const ImageProperties* /*imageProperties*/) {
    viewer_.setImage(image);
}

double QtImageView::zoomFactor() const {
    return viewer_.zoomFactor();
}

void QtImageView::setZoomFactor(double factor) {
    viewer_.setZoomFactor(factor);
}

void QtImageView::zoomImageToFit(const NSObject* /*sender*/) {
    viewer_.zoomToFit();
}

void QtImageView::zoomImageToActualSize(const NSObject* /*sender*/) {
    viewer_.zoomToActualSize();
}

QtTextView::QtTextView(TextEditor& editor, NSNotificationCenter& center) : editor_(editor) {
    QObject::connect(&editor, &TextEditor::frameChanged, &editor, [this, &center] {
        if (postsBounds_) center.postNotification({NSViewBoundsDidChangeNotification, this});
        center.postNotification({NSViewFrameDidChangeNotification, this});
    });
}

void QtTextView::setFont(const NSFont& font) {
    editor_.setWholeFont(QString::fromStdString(font.name), font.size);
}

void QtTextView::insertText(std::u16string_view text) {
    editor_.replaceSelection(text);
}

void QtTextView::setTextColor(const NSColor& color, NSRange range) {
    editor_.colorRange(toQColor(color), range);
}

void QtTextView::setString(std::u16string_view text) {
    editor_.replaceAll(text);
}

const NSAttributedString& QtTextView::textStorage() const {
    storage_ = editor_.text();
    return storage_;
}

void QtWindow::setResponder(const QWidget& widget, NSResponder& responder) {
    responders_[&widget] = &responder;
}

NSResponder* QtWindow::firstResponder() const {
    if (standIn_ != nullptr) return standIn_;
    // A window keeps its focus widget while another window is active.
    const QWidget* focus = window_.focusWidget();
    if (focus == nullptr) return nullptr;
    const auto found = responders_.find(focus);
    return found == responders_.end() ? &another_ : found->second;
}

void QtWindow::orderOut(const NSObject* /*sender*/) {
    window_.hide();
}

}  // namespace skarnel
