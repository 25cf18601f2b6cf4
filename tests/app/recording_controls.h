// Fakes of the window and what stands in it.
#pragma once

#include "app/vantera_desktop_controller.h"
#include "call_log.h"

namespace skarnel::testing_app {

class RecordingSlider final : public NSSlider {
  public:
    ~RecordingSlider() override;
    RecordingSlider(CallLog& log, std::string name) : log_(log), name_(std::move(name)) {
        log_.name(*this, name_);
    }
    float floatValue() const override {
        log_.add(name_ + ".floatValue");
        return value;
    }
    void setFloatValue(float newValue) override {
        log_.add(name_ + ".setFloatValue", shown(newValue));
        value = newValue;
    }
    float value = 0;

  private:
    CallLog& log_;
    std::string name_;
};

class RecordingButton final : public NSButton {
  public:
    ~RecordingButton() override;
    RecordingButton(CallLog& log, std::string name) : log_(log), name_(std::move(name)) {
        log_.name(*this, name_);
    }
    void setState(int newState) override {
        log_.add(name_ + ".setState", std::to_string(newState));
        state = newState;
    }
    int state = 0;

  private:
    CallLog& log_;
    std::string name_;
};

class RecordingTextField final : public NSTextField {
  public:
    ~RecordingTextField() override;
    RecordingTextField(CallLog& log, std::string name) : log_(log), name_(std::move(name)) {
        log_.name(*this, name_);
    }
    void setStringValue(std::string_view newText) override {
        log_.add(name_ + ".setStringValue", newText);
        text = newText;
    }
    std::string text;

  private:
    CallLog& log_;
    std::string name_;
};

class RecordingWindow final : public NSWindow {
  public:
    ~RecordingWindow() override;
    explicit RecordingWindow(CallLog& log) : log_(log) { log_.name(*this, "resultWindow"); }
    NSResponder* firstResponder() const override {
        log_.add("window.firstResponder");
        return focus;
    }
    void orderOut(const NSObject* sender) override {
        log_.add("window.orderOut", log_.nameOf(sender));
    }
    NSResponder* focus = nullptr;

  private:
    CallLog& log_;
};

class RecordingTextView final : public NSTextView {
  public:
    ~RecordingTextView() override;
    explicit RecordingTextView(CallLog& log) : log_(log) { log_.name(*this, "textView"); }
    void setPostsBoundsChangedNotifications(bool posts) override {
        log_.add("textView.setPostsBoundsChangedNotifications", yesNo(posts));
    }
    void setFont(const NSFont& newFont) override {
        log_.add("textView.setFont", newFont.name + " " + shown(newFont.size));
        style_.family = newFont.name;
        style_.size = newFont.size;
        storage.setStyle({0, storage.length()}, style_);
    }
    void insertText(std::u16string_view text) override {
        log_.add("textView.insertText", shown(text));
        storage.append(text, style_);
    }
    void setTextColor(const NSColor& color, NSRange range) override {
        log_.add("textView.setTextColor", shown(color) + " " + std::to_string(range.location) +
                                              "+" + std::to_string(range.length));
    }
    void setString(std::u16string_view text) override {
        log_.add("textView.setString", shown(text));
        storage = StyledText(text, style_);
    }
    const NSAttributedString& textStorage() const override { return storage; }

    StyledText storage;

  private:
    CallLog& log_;
    TextStyle style_;
};

class RecordingImageView final : public IKImageView {
  public:
    ~RecordingImageView() override;
    explicit RecordingImageView(CallLog& log) : log_(log) { log_.name(*this, "resultView"); }
    void setDoubleClickOpensImageEditPanel(bool opens) override {
        log_.add("viewer.setDoubleClickOpensImageEditPanel", yesNo(opens));
    }
    void setAutohidesScrollers(bool hides) override {
        log_.add("viewer.setAutohidesScrollers", yesNo(hides));
    }
    void setAutoresizes(bool resizes) override {
        log_.add("viewer.setAutoresizes", yesNo(resizes));
    }
    void setBackgroundColor(const NSColor& color) override {
        log_.add("viewer.setBackgroundColor", shown(color));
    }
    void setCurrentToolMode(IKToolMode mode) override {
        static constexpr const char* kNames[] = {"move", "select", "crop", "rotate", "annotate"};
        log_.add("viewer.setCurrentToolMode", kNames[static_cast<int>(mode)]);
    }
    CGRect visibleRect() const override {
        log_.add("viewer.visibleRect");
        return visible;
    }
    void setImage(const CGImage& image, const ImageProperties* imageProperties) override {
        log_.add("viewer.setImage",
                 shown(image) + (imageProperties == nullptr ? "" : " properties"));
        shownImage = image;
    }
    double zoomFactor() const override {
        log_.add("viewer.zoomFactor");
        return factor;
    }
    void setZoomFactor(double newFactor) override {
        log_.add("viewer.setZoomFactor", shown(newFactor));
        factor = newFactor;
    }
    void zoomImageToFit(const NSObject* sender) override {
        log_.add("viewer.zoomImageToFit", log_.nameOf(sender));
    }
    void zoomImageToActualSize(const NSObject* sender) override {
        log_.add("viewer.zoomImageToActualSize", log_.nameOf(sender));
    }

    CGRect visible{0, 0, 800, 600};
    double factor = 1;
    std::optional<CGImage> shownImage;  // what was shown last

  private:
    CallLog& log_;
};

class RecordingProgress final : public NSProgressIndicator {};

/// A sender that is told by its segment, whatever its tag.
class Segments final : public NSSegmentedControl {
  public:
    Segments(std::int64_t selected, std::int64_t tag) : selected_(selected), tag_(tag) {}
    std::int64_t selectedSegment() const override { return selected_; }
    std::int64_t tag() const override { return tag_; }

  private:
    std::int64_t selected_;
    std::int64_t tag_;
};

/// A sender that is told by its tag.
class TaggedSender final : public NSObject {
  public:
    explicit TaggedSender(std::int64_t tag) : tag_(tag) {}
    std::int64_t tag() const override { return tag_; }

  private:
    std::int64_t tag_;
};

}  // namespace skarnel::testing_app
