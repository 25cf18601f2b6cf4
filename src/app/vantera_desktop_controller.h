// The one object behind the window: its state, and every command in its fixed order of steps.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/image_operations.h"
#include "imaging/cgimage.h"
#include "imaging/nscolor.h"
#include "imaging/nsimage/nsimage.h"
#include "platform/controls.h"
#include "platform/image_view.h"
#include "platform/notification_center.h"
#include "platform/object.h"
#include "platform/panels.h"
#include "platform/run_loop.h"
#include "platform/services.h"
#include "platform/text_view.h"
#include "platform/toolkit.h"
#include "platform/web_view.h"
#include "platform/window.h"
#include "util/geometry/geometry.h"

namespace skarnel {

/// The delegate of the application, the main window, the text view and the offscreen web view, and
/// the target of every control. Main thread only; lives until the process exits. No command
/// reports a failure to the user, but for the three alerts of text imaging: a command that cannot
/// do its work stops and leaves what is shown as it was.
///
/// Life: construct, `init`, set the outlets, `awakeFromNib`, `applicationWillFinishLaunching`; from
/// then on the controls, the notifications and the timer drive it. Senders are ignored unless said
/// otherwise and may be null.
class VanteraDesktopController : public NSObject,
                                 public WebFrameLoadDelegate,
                                 public WebResourceLoadDelegate,
                                 public WebUIDelegate {
  public:
    /// Borrows both for its life. `helpHost` is the host of the product's web page.
    VanteraDesktopController(Toolkit& toolkit, ImageOperations& operations, std::string helpHost);
    ~VanteraDesktopController() override;

    // --- State. What is called a connection is set by whoever builds the window, before
    // --- awakeFromNib, lives as long as the controller, and is never changed by it.

    NSWindow* resultWindow = nullptr;            // connection: the main window
    NSTextView* textView = nullptr;              // connection: the text to image
    IKImageView* resultView = nullptr;           // connection: the viewer
    std::shared_ptr<IKSaveOptions> saveOptions;  // of the last save; null before the first
    std::int8_t openInEditor = 0;                // raised by saveAndEdit and never read
    NSColor resultViewBackgroundColor;  // of the viewer, and laid under the result on request
    NSTextField* resultViewBackgroundColorTextField = nullptr;  // connection: its #RRGGBB text
    std::optional<NSImage> image;                               // the source picture at full size
    std::optional<NSImage> scaledImage;       // the working copy that the preview is rendered from
    std::string saveFilename;                 // the base name that a save proposes, UTF-8
    NSProgressIndicator* progress = nullptr;  // connection: not used by any command
    NSSlider* perspectiveHeightSlider = nullptr;  // connections, down to the text fields
    NSSlider* perspectiveWidthSlider = nullptr;
    NSSlider* offsetSlider = nullptr;
    NSSlider* startSlider = nullptr;
    NSSlider* gradientSlider = nullptr;
    NSSlider* alphaSlider = nullptr;
    NSSlider* imagePerspectiveSlider = nullptr;
    NSButton* applyBackgroundColorButton = nullptr;
    NSTextField* perspectiveHeightTextField = nullptr;
    NSTextField* perspectiveWidthTextField = nullptr;
    NSTextField* offsetTextField = nullptr;
    NSTextField* startTextField = nullptr;
    NSTextField* gradientTextField = nullptr;
    NSTextField* alphaTextField = nullptr;
    NSTextField* imagePerspectiveTextField = nullptr;
    std::shared_ptr<NSSound> harpSound;       // the completion cue; null without its resource
    std::int32_t resourceCount = 0;           // of the offscreen page load
    std::int32_t resourceFailedCount = 0;     // of the offscreen page load
    std::int32_t resourceCompletedCount = 0;  // of the offscreen page load
    NSTimer* clearTextTimer = nullptr;        // held by the run loop; null once fired or cancelled

    // --- Life (lifecycle.cpp)

    /// Sets the first state and stores the default of every numeric setting whose key is absent.
    VanteraDesktopController* init();
    /// Sets up viewer, colour text, sound, observers, text view and placeholder timer.
    void awakeFromNib();
    /// Installs the logo and shows its reflection.
    void applicationWillFinishLaunching(const NSNotification& notification);
    /// Fits the shown image again; renders nothing.
    void windowDidResize(const NSNotification& notification);
    /// Renders the preview again and fits it to the larger viewer.
    void windowDidEnterFullScreen(const NSNotification& notification);

    // --- Photo input (photo_input.cpp)

    /// Lets the user choose a photo and installs it.
    void browse(const NSObject* sender);
    /// Installs the file as the source picture. A path for which no image object can be made
    /// changes nothing. UTF-8.
    void imagePathChanged(const std::string& path);
    /// Fits the source to the viewer, renders and shows it.
    void loadImage();

    // --- Preview and settings (preview.cpp)

    /// Renders the working copy again and shows it; without one, or without a result, nothing.
    void sliderChanged(const NSObject* sender);
    /// The same as sliderChanged.
    void perspectiveChanged(const NSObject* sender);
    /// Empties the user defaults, stores and shows all defaults, renders again. Raises
    /// EnumerationMutationError when the defaults change under the enumeration.
    void reset(const NSObject* sender);
    /// Renders with the stored settings; none when the render yields nothing.
    std::optional<CGImage> reflectedImage(const CGImage& source);
    /// Renders with the given numbers; the rest is read where the render needs it.
    std::optional<CGImage> addReflectionToCGImage(const CGImage& source, float perspectiveW,
                                                  float perspectiveH, float reflectionOffset,
                                                  float gradientOffset, float gradient);

    // --- Viewer (viewer_controls.cpp)

    /// Zooms by the sender's index: 0 out, 1 in, 2 actual size, 3 fit; any other does nothing. The
    /// index is a segmented control's selected segment and any other sender's tag.
    void doZoom(const NSObject* sender);
    /// Sets the tool by the sender's index, 0..4 in the order of IKToolMode.
    void switchToolMode(const NSObject* sender);
    /// Brings the colour panel to the front.
    void backgroundColor(const NSObject* sender);
    /// Takes the panel's colour over as the background, unless the text view has the focus.
    void changeBackgroundColor(const NSNotification& notification);
    /// Fits the viewer again when the notification's object is the text view.
    void textViewBoundsChanged(const NSNotification& notification);
    /// Replaces the placeholder text by one carriage return.
    void clearTextTimerAction(NSTimer& timer);
    /// Cancels the placeholder timer; always true, so that every edit is allowed.
    bool textViewShouldChangeTextInRanges(const NSTextView& view,
                                          const std::vector<NSRange>& ranges,
                                          const std::vector<std::u16string>& replacementStrings);
    /// Opens the product's web page.
    void vanteraHelp(const NSObject* sender);

    // --- Background colour text (color_text.cpp)

    /// The 7 characters #RRGGBB of the background colour; alpha is ignored.
    std::string backgroundColorString() const;

    // --- Save (save.cpp)

    /// Shows the save panel with its format options as a sheet.
    void save(const NSObject* sender);
    /// Renders at full size and writes the file when the return code is 1.
    void savePanelDidEnd(NSSavePanel& panel, int returnCode, void* contextInfo);
    /// Raises openInEditor and saves.
    void saveAndEdit(const NSObject* sender);
    /// Hides the window; nothing is saved or cleared.
    void closeNoSave(const NSObject* sender);

    // --- Alerts (alerts.cpp)

    /// Beeps and shows a message with one button: as a sheet of the default style on the parent
    /// window, or without one modally in the style asked for. The asymmetry is intended.
    void doAlert(std::string_view message, std::string_view adding, NSWindow* parentWindow,
                 NSAlertStyle alertStyle);

    // --- Clipboard (clipboard.cpp)

    /// Copies the full-size result as LZW-compressed TIFF, then plays the cue.
    void putImageOnClipboard(const NSObject* sender);
    /// The cue, or null; does not play it.
    std::shared_ptr<NSSound> completionSound() const;

    // --- Text export (text_export.cpp)

    /// Writes the natural size of the styled text; leaves the record as it was when the text is
    /// empty or cannot be serialised and read back.
    void estimateTextSize(CGSize& size);
    /// The styled text as an HTML document on the background colour; none when there is nothing to
    /// export. `encoding` is the platform's numeric code (4 = UTF-8).
    std::optional<std::u16string> getHTMLMessage(std::int32_t encoding, CGSize& estimatedSize);

    // --- Offscreen page rasteriser (page_rasteriser.cpp)

    /// Renders the page into a TIFF file in the temporary directory and gives its path; none when
    /// that could not be begun. `url` none stands for a text that could not be had.
    std::optional<std::string> imageURL(const std::optional<std::string>& url,
                                        const CGSize& inSize);
    /// Captures the loaded page, knocks its ground out, writes and trims the file.
    void imageWebView(WebView& webView, const std::string& path);
    void initResourceCounters();
    /// Does nothing: no status is displayed.
    void updateResourceStatus();
    std::int32_t webViewIdentifierForInitialRequest(WebView& sender,
                                                    const NSURLRequest& request) override;
    NSURLRequest webViewResourceWillSendRequest(WebView& sender, std::int32_t resource,
                                                const NSURLRequest& request) override;
    void webViewResourceDidFinishLoading(WebView& sender, std::int32_t resource) override;
    void webViewResourceDidFailLoading(WebView& sender, std::int32_t resource,
                                       const Error& error) override;
    void webViewDidStartProvisionalLoad(WebView& sender) override;
    void webViewDidReceiveTitle(WebView& sender, const std::string& title) override;
    void webViewDidFinishLoad(WebView& sender) override;

    // --- Text imaging (text_imaging.cpp)

    /// Makes the typed text the source picture.
    void imageText(const NSObject* sender);

  private:
    void seedReflectionSettings();
    void observeNotifications();
    void showPlaceholderText();
    static void emptyUserDefaults(NSUserDefaults& defaults);
    void resetReflectionSettings(NSUserDefaults& defaults);
    void showFitted(const NSImage& result);
    CGImage knockedOut(const CGImage& capture);
    void writePage(const CGImage& page, const std::string& path);
    void trimPage(const std::string& path);

    Toolkit& toolkit_;
    ImageOperations& operations_;
    std::string helpHost_;
};

/// The application's controller once it is set up; nothing reads it.
extern VanteraDesktopController* gVanteraDesktopController;

}  // namespace skarnel
