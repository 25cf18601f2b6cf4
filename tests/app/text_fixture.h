// A controller whose toolkit can image text: services, files, a web view that loads at once.
#pragma once

#include <sys/stat.h>

#include <filesystem>

#include "controller_fixture.h"
#include "recording_text.h"
#include "textimaging/page_load.h"

namespace skarnel::testing_app {

class TextTest : public ControllerTest {
  protected:
    TextTest() {
        storeDefaults();
        toolkit.textServices = &services;
        toolkit.textFilesService = &textFiles;
        toolkit.temporaryFolder = folder.path();
        toolkit.files.setPrivateFolder(folder.path());
        toolkit.temporaryNames = {"/var/tmp/first", "/var/tmp/second"};
        toolkit.makeWebView = [this](const CGRect& frame) {
            return std::make_unique<RecordingWebView>(log, frame, page);
        };
        toolkit.runLoop.onRun = [this] {
            toolkit.notifications.postNotification({WebViewProgressFinishedNotification, nullptr});
            return true;
        };
        window.textView.storage = StyledText(u"Hi");
        gLoaded = 0;
    }

    /// The alert as every caller shows it.
    static CallLog::Lines alertShown(const std::string& message, const std::string& informative) {
        return {"beep", "alert \"" + message + "\" \"OK\" none none \"" + informative + "\"",
                "alert.beginSheet on resultWindow delegate controller"};
    }
    static CallLog::Lines trimmingAlert() {
        return alertShown("The image could not be trimmed.",
                          "If you are imaging text, make sure its color is not the same as the "
                          "background color of the image viewer.");
    }

    /// From the estimate to the decoded message.
    static CallLog::Lines exported(std::size_t length, const std::string& shownText) {
        const std::string range = "0+" + std::to_string(length);
        return {"text.dataFromRange RTFD " + range + " encoding 4", "text.initWithData",
                "text.size " + shownText, "text.dataFromRange HTML " + range + " encoding 4",
                "text.stringWithData encoding 4"};
    }
    static CallLog::Lines viewMade(const std::string& frame) {
        return {"webView 0,0 " + frame, "webView.setFrameLoadDelegate controller",
                "webView.setUIDelegate controller", "webView.setResourceLoadDelegate controller"};
    }
    static CallLog::Lines loaded(const std::string& url) {
        return {"notifications.addObserver unnamed WebProgressFinishedNotification from none",
                "frame.loadRequest " + url, "runLoop.runMode NSDefaultRunLoopMode inf",
                "notifications.removeObserver unnamed WebProgressFinishedNotification from none"};
    }
    static CallLog::Lines captured() {
        return {
            "frame.documentViewFrame", "webView.setFrame 0,0 432x115",
            "webView.visibleRect",     "webView.bitmapImageRepForCachingDisplayInRect 0,0 432x115",
            "webView.visibleRect",     "webView.cacheDisplayInRect 0,0 432x115"};
    }
    static CallLog::Lines knockedOut() {
        return {"imageWithBitmap 432x115", "getCGImageRef 432x115",
                "CIImageMakeFirtsPixelColorTransparent 432x115", "CIImageGetCGImage 432x115"};
    }
    static CallLog::Lines written(const std::string& path) {
        return {"imageDestinationCreateWithURL " + path + " public.tiff",
                "destination.addImage 432x115", "destination.finalize"};
    }
    static CallLog::Lines measured(const std::string& path) {
        return {"initByReferencingFile " + path, "usedRect 432x115 tolerance 10",
                "scaleImageToSize 432x115 to 40x10 trim yes tolerance 10 expand no scaleUp no"};
    }
    static CallLog::Lines trimmed(const std::string& path) {
        return lines(
            {measured(path),
             {"TIFFRepresentation 40x10", "files.writeDataToFile " + path + " not atomically"}});
    }

    test::TemporaryFolder folder;
    FakePage page;
    RecordingTextServices services{log};
    RecordingTextFiles textFiles{log};
};

}  // namespace skarnel::testing_app
