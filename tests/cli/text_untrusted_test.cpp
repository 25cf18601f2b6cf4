// Two hundred hostile texts on the command line: none reaches the network or a file, all are drawn
// as typed. Each starts the page renderer anew, so that only some are tried unless time allows.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "cli/pictures.h"
#include "cli/process.h"
#include "qt/page/untrusted.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

/// Each time another program is started.
std::size_t stepOfPayloads() {
    return test::isLongRun() ? 1 : 101;
}

class UntrustedText : public testing::Test {
  protected:
    UntrustedText() {
        ::unsetenv("DISPLAY");
        test::putFile(canary_, "secret");
        watch_ = std::make_unique<test_page::Watch>(canary_);
    }

    /// The width of what comes of these arguments.
    int widthOf(std::vector<std::string> arguments) const {
        const std::string out = folder_ / "out.tiff";
        const std::vector<std::string> more = {"--size", "12", "-o", out, "--force", "-q"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const test::Finished finished = test::render(arguments);
        EXPECT_EQ(finished.exitCode, 0) << finished.err;
        const auto result = decodeImageFile(out);
        EXPECT_TRUE(result);
        return result ? result->image.width() : 0;
    }
    void expectNothingReached() const {
        EXPECT_EQ(listener_.connections(), 0);
        EXPECT_FALSE(watch_->wasOpened());
    }

    const test::TemporaryFolder folder_;
    const std::string canary_ = folder_ / "canary.png";
    const test_page::Listener listener_;
    std::unique_ptr<test_page::Watch> watch_;
};

TEST_F(UntrustedText, OfTheCommandLineReachesNothingAndIsDrawnAsTyped) {
    const std::vector<std::string> all = test_page::payloads(canary_, listener_.port);
    ASSERT_EQ(all.size(), 200U);
    for (std::size_t i = 0; i < all.size(); i += stepOfPayloads()) {
        SCOPED_TRACE(all[i]);
        // Letters of 12 pixels are 4 pixels wide and more on average; markup that was understood
        // would leave next to none of them.
        EXPECT_GT(widthOf({"--text", all[i]}), static_cast<int>(4 * all[i].size()) * 4 / 5);
    }
    expectNothingReached();
}

/// Letters in the longest line. What is not ASCII in the payloads are marks that are not drawn.
int lettersAcross(const std::string& text) {
    int longest = 0;
    int letters = 0;
    for (const char c : text) {
        letters = c == '\n' ? 0 : letters + (c >= ' ' && c <= '~' ? 1 : 0);
        longest = std::max(longest, letters);
    }
    return longest;
}

TEST_F(UntrustedText, OfAPageReachesNothingAndOnlyItsTextIsDrawn) {
    const auto all = test_page::payloadsWithText(canary_, listener_.port);
    ASSERT_EQ(all.size(), 200U);
    const std::string page = folder_ / "page.html";
    for (std::size_t i = 0; i < all.size(); i += stepOfPayloads()) {
        SCOPED_TRACE(all[i].typed);
        test::putFile(page, test_page::pageOf(all[i].typed));
        const int width = widthOf({"--html", page});
        // At 12 pixels the letters of a text are 4 to 8 pixels wide on average. Markup that was
        // taken for text would be three times as long, and a payload that ends the text half.
        const int letters = lettersAcross(all[i].pasted);
        EXPECT_GT(width, 4 * letters - 4);
        EXPECT_LT(width, 8 * letters);
    }
    expectNothingReached();
}

TEST_F(UntrustedText, MarkupThatIsNestedTooDeeplyIsRefused) {
    std::string html;
    for (int i = 0; i < 100'000; ++i) html += "<b>";
    test::putFile(folder_ / "deep.html", html + "text");
    const test::Finished finished =
        test::render({"--html", folder_ / "deep.html", "-o", folder_ / "out.png"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_NE(finished.err.find("deep.html: The elements are nested too deeply"), std::string::npos)
        << finished.err;
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"canary.png", "deep.html"}));
}

}  // namespace
}  // namespace skarnel
