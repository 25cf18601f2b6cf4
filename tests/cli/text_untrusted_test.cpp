// Two hundred hostile texts on the command line: none reaches the network or a file, all are drawn
// as typed. Each starts the page renderer anew, so that only some are tried unless time allows.
#include <gtest/gtest.h>

#include <cstdlib>

#include "cli/pictures.h"
#include "cli/process.h"
#include "qt/page/untrusted.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

TEST(UntrustedText, OfTheCommandLineReachesNothingAndIsDrawnAsTyped) {
    ::unsetenv("DISPLAY");
    const test::TemporaryFolder folder;
    const std::string canary = folder / "canary.png";
    test::putFile(canary, "secret");
    const test_page::Watch watch(canary);
    const test_page::Listener listener;
    const std::vector<std::string> all = test_page::payloads(canary, listener.port);
    ASSERT_EQ(all.size(), 200U);
    const std::size_t step = test::isLongRun() ? 1 : 101;
    for (std::size_t i = 0; i < all.size(); i += step) {
        SCOPED_TRACE(all[i]);
        const std::string out = folder / "out.tiff";
        const test::Finished finished =
            test::render({"--text", all[i], "--size", "12", "-o", out, "--force", "-q"});
        ASSERT_EQ(finished.exitCode, 0) << finished.err;
        const auto result = decodeImageFile(out);
        ASSERT_TRUE(result);
        // Letters of 12 pixels are 4 pixels wide and more on average; markup that was understood
        // would leave next to none of them.
        EXPECT_GT(result->image.width(), static_cast<int>(4 * all[i].size()) * 4 / 5);
    }
    EXPECT_EQ(listener.connections(), 0);
    EXPECT_FALSE(watch.wasOpened());
}

TEST(UntrustedText, MarkupThatIsNestedTooDeeplyIsRefused) {
    ::unsetenv("DISPLAY");
    const test::TemporaryFolder folder;
    std::string html;
    for (int i = 0; i < 100'000; ++i) html += "<b>";
    test::putFile(folder / "deep.html", html + "text");
    const test::Finished finished =
        test::render({"--html", folder / "deep.html", "-o", folder / "out.png"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_NE(finished.err.find("deep.html: The elements are nested too deeply"), std::string::npos)
        << finished.err;
    EXPECT_EQ(folder.names(), std::vector<std::string>{"deep.html"});
}

}  // namespace
}  // namespace skarnel
