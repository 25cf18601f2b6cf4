// Pages drawn by the real module, step by step as the controller takes them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "cli/text_toolkit.h"
#include "storage/temporary_folder.h"
#include "textimaging/html_writer.h"
#include "textimaging/page_load.h"
#include "textimaging/page_module_loader.h"
#include "textimaging/string_encodings.h"

namespace skarnel::test_page {

/// One module for all tests: as in a program, it is loaded once.
struct Module {
    static Module& shared() {
        static Module module;
        return module;
    }
    cli::PlainNotificationCenter center;
    std::string log;
    std::unique_ptr<PageModule> page;

  private:
    Module() {
        auto loaded = loadPageModule(
            {&center, [this](std::string_view line) { log.append(line).append("\n"); }});
        if (loaded)
            page = *std::move(loaded);
        else
            ADD_FAILURE() << loaded.error().message;
    }
};

/// What came of one capture.
struct Capture {
    CGRect document;
    int width = 0;
    int height = 0;
    PaintOutcome outcome = PaintOutcome::NotPainted;
    std::vector<std::uint8_t> bytes;  // RGBA rows without padding

    std::array<int, 3> color(int x, int y) const {
        const std::uint8_t* pixel = bytes.data() + 4 * (std::size_t(y) * width + x);
        return {pixel[0], pixel[1], pixel[2]};
    }
};

class PageTest : public ::testing::Test {
  protected:
    PageModule& module() { return *Module::shared().page; }
    std::string& log() { return Module::shared().log; }

    std::string put(const std::string& html) {
        const std::string path = folder_ / ("page" + std::to_string(++pages_) + ".html");
        std::ofstream(path, std::ios::binary) << html;
        return path;
    }

    std::string documentOf(const StyledText& text, const std::string& ground) {
        return utf8FromUtf16(withBodyBackground(
            htmlDocument(text, "utf-8", module().paragraphHeights(text)), ground));
    }

    std::unique_ptr<WebView> loadedView(const std::string& path, CGSize estimate) {
        std::unique_ptr<WebView> view =
            module().webView({0, 0, 2 * estimate.width, 4 * estimate.height});
        LoadURL(*view, "file://" + path, Module::shared().center, module().runLoop());
        return view;
    }

    static Capture captured(WebView& view) {
        Capture capture;
        capture.document = view.mainFrame().frameViewDocumentViewFrame();
        std::int64_t width = 0;
        std::int64_t height = 0;
        GetDocumentViewSize(&view, width, height);
        capture.width = static_cast<int>(width);
        capture.height = static_cast<int>(height);
        view.setFrame({0, 0, double(width), double(height)});
        std::optional<PixelBuffer> buffer =
            view.bitmapImageRepForCachingDisplayInRect(view.visibleRect());
        if (!buffer) return capture;
        EXPECT_EQ(buffer->width(), width);
        EXPECT_EQ(buffer->height(), height);
        capture.outcome = view.cacheDisplayInRect(view.visibleRect(), *buffer);
        const MutablePixelView pixels = buffer->view();
        for (int y = 0; y < pixels.height; ++y)
            capture.bytes.insert(capture.bytes.end(), pixels.row(y),
                                 pixels.row(y) + std::ptrdiff_t{4} * pixels.width);
        return capture;
    }

    Capture capture(const StyledText& text, const std::string& ground) {
        return captured(*loadedView(put(documentOf(text, ground)), module().naturalTextSize(text)));
    }

    test::TemporaryFolder folder_;
    int pages_ = 0;
};

inline TextStyle styleOf(double size, TextColor color = {255, 255, 255, 255}) {
    TextStyle style;
    style.size = size;
    style.color = color;
    return style;
}

/// Width and height of what differs from the first pixel.
inline std::array<int, 2> usedSize(const std::vector<std::uint8_t>& bytes, int width, int height) {
    int left = width;
    int right = -1;
    int top = height;
    int bottom = -1;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::uint8_t* pixel = bytes.data() + 4 * (std::size_t(y) * width + x);
            int distance = 0;
            for (int k = 0; k < 3; ++k) distance += (pixel[k] - bytes[k]) * (pixel[k] - bytes[k]);
            if (distance <= 100) continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    return {right - left + 1, bottom - top + 1};
}

}  // namespace skarnel::test_page
