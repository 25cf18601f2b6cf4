// Text from the command line, with the program as a process and the real page renderer.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>

#include "cli/pictures.h"
#include "cli/process.h"
#include "qt/page/renderers.h"
#include "storage/temporary_folder.h"
#include "util/walls/without_proc.h"

namespace skarnel {
namespace {

using test::Finished;
using test::render;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;

class TextCommand : public testing::Test {
  protected:
    TextCommand() { ::unsetenv("DISPLAY"); }

    Finished text(const std::string& typed, std::vector<std::string> more = {}) {
        more.insert(more.begin(), {"--text", typed, "-o", out_, "--force"});
        return render(more);
    }
    CGImage result() const { return decodeImageFile(out_)->image; }

    const TemporaryFolder folder_;
    const std::string out_ = folder_ / "out.tiff";
};

TEST_F(TextCommand, ReflectsTheTextOfARecipeThatNamesNoPicture) {
    // Two words in orange and blue: no other colour has so much red without blue.
    const Finished finished = render({"--recipe", SKARNEL_TEXT_RECIPE, "-o", out_, "-q"});
    EXPECT_EQ(finished.exitCode, 0) << finished.err;
    const CGImage image = result();
    bool orange = false;
    bool blue = false;
    for (int x = 0; x < image.width(); ++x) {
        const std::uint8_t* pixel = image.pixels().row(20) + 4 * x;
        orange = orange || (pixel[0] == 255 && pixel[2] < 80);
        blue = blue || (pixel[2] == 255 && pixel[0] < 140);
    }
    EXPECT_TRUE(orange && blue);
}

TEST_F(TextCommand, RefusesAPageThatIsNoFile) {
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const auto& [name, cause] : std::vector<std::pair<std::string, std::string>>{
             {pipe, "Nothing comes through this pipe"},
             {folder_.path(), "It is a folder"},
             {"/dev/zero", "It is not an ordinary file"}}) {
        const Finished finished = render({"--html", name, "-o", out_});
        EXPECT_EQ(finished.exitCode, 1) << name;
        EXPECT_THAT(finished.err, HasSubstr(name + ": " + cause));
    }
}

TEST_F(TextCommand, WithoutAnyFontEndsWithACause) {
    test::putFile(folder_ / "fonts.conf", "<?xml version=\"1.0\"?><fontconfig></fontconfig>");
    const std::string fonts = folder_ / "fonts.conf";
    const Finished finished = render({"--text", "Summer", "-o", out_}, {},
                                     [&] { ::setenv("FONTCONFIG_FILE", fonts.c_str(), 1); });
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, testing::StartsWith("skarnel-render: Text: "));
    EXPECT_FALSE(std::filesystem::exists(out_));
}

/// The page renderer is looked for beside the program, whose place /proc tells.
TEST_F(TextCommand, WithoutProcEndsWithACause) {
    if (!test::canHideProc()) GTEST_SKIP() << "/proc cannot be hidden here";
    const Finished finished = render({"--text", "Summer", "-o", out_}, {}, [] {
        if (!test::hideProc()) ::_exit(98);
    });
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("page renderer"));
    EXPECT_FALSE(std::filesystem::exists(out_));
}

TEST_F(TextCommand, AnInterruptionAtAnyMomentLeavesNoneOfTheText) {
    const std::string temporary = folder_ / "tmp";
    std::filesystem::create_directory(temporary);
    std::mt19937 random(7);
    for (int round = 0; round < 4; ++round) {
        test::Process process({"--text", "secret", "--force", "-o", out_}, [&] {
            std::signal(SIGINT, SIG_DFL);
            ::setenv("TMPDIR", temporary.c_str(), 1);
        });
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 800'000));
        process.signal(SIGINT);
        const Finished finished = process.finish();
        EXPECT_TRUE(finished.exitCode == 130 || finished.exitCode == 0) << finished.exitCode;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(temporary))
            EXPECT_EQ(entry.path().string().find("/text"), std::string::npos) << entry.path();
    }
}

TEST_F(TextCommand, ARendererWithoutMemoryEndsWithACause) {
    // Enough for the program itself; the engine or its renderer reserves more than this.
    for (const rlim_t gigabytes : {1, 2, 3}) {
        const Finished finished = render({"--text", "Summer", "-o", out_}, {}, [=] {
            const rlimit limit = {gigabytes << 30, gigabytes << 30};
            ::setrlimit(RLIMIT_AS, &limit);
        });
        EXPECT_EQ(finished.exitCode, 1) << gigabytes;
        // An engine that finds no memory for a thread can stand still, and be given up after half a
        // minute.
        EXPECT_THAT(finished.err, HasSubstr("skarnel-render: Text: The page renderer ended"))
            << gigabytes;
        EXPECT_FALSE(std::filesystem::exists(out_));
    }
}

TEST_F(TextCommand, AKilledProgramTakesItsPageRendererWithIt) {
    using test_page::ourPageProcesses;
    test::Process process({"--text", std::string(4000, 'x'), "--force", "-o", out_});
    std::vector<int> renderers;
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    const auto waits = [&] { return std::chrono::steady_clock::now() < until; };
    while (renderers.empty() && waits()) renderers = ourPageProcesses(process.id());
    ASSERT_EQ(renderers.size(), 1U);
    process.signal(SIGKILL);
    (void)process.finish();
    const auto isThere = [&] {
        return test_page::isProgram(renderers[0], "skarnel-page-renderer");
    };
    while (isThere() && waits()) std::this_thread::yield();
    EXPECT_FALSE(isThere());
}

TEST_F(TextCommand, ReflectsTheTextWithoutADisplay) {
    const Finished finished =
        text("Summer\\nSale", {"--font", "Times", "--size", "48", "--color", "#ff8800",
                               "--background-color", "#000000", "-q"});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_EQ(finished.out + finished.err, "");
    // Two lines of 56 pixels; the picture is trimmed to its letters and reflected once.
    const CGImage image = result();
    EXPECT_NEAR(image.width(), 160, 12);
    EXPECT_NEAR(image.height(), 2 * 88, 12);
    bool hasOrange = false;
    for (int x = 0; x < image.width(); ++x) {
        const std::uint8_t* pixel = image.pixels().row(10) + std::ptrdiff_t{4} * x;
        hasOrange = hasOrange || (pixel[0] == 255 && pixel[1] == 136 && pixel[2] == 0);
    }
    EXPECT_TRUE(hasOrange);
    EXPECT_THAT(folder_.names(), ElementsAre("out.tiff"));
}

TEST_F(TextCommand, AnEmbeddedRecipeHoldsTheStyledText) {
    const std::string page = folder_ / "page.html";
    test::putFile(page, "<b>Bold</b> and <i>slanted</i>");
    const std::string carried = folder_ / "carried.png";
    const std::vector<std::vector<std::string>> sources = {
        {"--text", "One\\nTwo", "--size", "40", "--color", "#ff8800"},
        {"--html", page},
        {"--recipe", SKARNEL_TEXT_RECIPE}};
    for (std::vector<std::string> source : sources) {
        SCOPED_TRACE(source[0]);
        source.insert(source.end(), {"-f", "-o", carried, "--embed-recipe", "--alpha", "90"});
        ASSERT_EQ(render(source).exitCode, 0);
        // All that it takes to make the picture again lies in it.
        const Finished again = render({"--recipe", carried, "-f", "-o", out_});
        ASSERT_EQ(again.exitCode, 0) << again.err;
        EXPECT_TRUE(*encodeImage(result(), kUTTypeTIFF) ==
                    *encodeImage(decodeImageFile(carried)->image, kUTTypeTIFF));
    }
}

TEST_F(TextCommand, GivesTheSameBytesEveryTime) {
    ASSERT_EQ(text("Same").exitCode, 0);
    const std::string first = test::fileText(out_);
    ASSERT_EQ(text("Same").exitCode, 0);
    EXPECT_EQ(test::fileText(out_), first);
}

TEST_F(TextCommand, ASizeTwiceAsLargeIsTwiceAsWide) {
    ASSERT_EQ(text("WIDE", {"--size", "40"}).exitCode, 0);
    const int width = result().width();
    ASSERT_EQ(text("WIDE", {"--size", "80"}).exitCode, 0);
    EXPECT_NEAR(result().width(), 2 * width, 4);
}

TEST_F(TextCommand, AnEmptyTextIsRefused) {
    const Finished finished = text("");
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("There is no text to image."));
    EXPECT_TRUE(folder_.names().empty());
}

TEST_F(TextCommand, ABlankTextAndOneInTheColourOfTheGroundCannotBeTrimmed) {
    EXPECT_THAT(text("\\n").err, HasSubstr("The image could not be trimmed."));
    const Finished finished = text("x", {"--color", "#123456", "--background-color", "#123456"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("The image could not be trimmed."));
    EXPECT_TRUE(folder_.names().empty());
}

TEST_F(TextCommand, ALineTooLongToCaptureIsRefusedWithItsSize) {
    const Finished finished = text(std::string(1000, 'W'));
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("too large to capture; at most 16384 by 16384"));
}

TEST_F(TextCommand, WithoutTheModuleItSaysSo) {
    ::setenv("SKARNEL_PAGE_MODULE", "/no/such/module.so", 1);
    const Finished finished = text("a");
    ::unsetenv("SKARNEL_PAGE_MODULE");
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("needs the page renderer: It is not installed"));
}

TEST_F(TextCommand, AModuleThatIsNoneSaysWhatIsWrongWithIt) {
    test::putFile(folder_ / "bad.so", "no library");
    ::setenv("SKARNEL_PAGE_MODULE", (folder_ / "bad.so").c_str(), 1);
    const Finished finished = text("a");
    ::unsetenv("SKARNEL_PAGE_MODULE");
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("needs the page renderer: "));
}

TEST_F(TextCommand, AnHtmlFileBringsItsStylesAndNothingThatItNames) {
    test::putPicture(folder_ / "in.png", 300, 300);
    test::putFile(folder_ / "in.html",
                  "<p>A <b style='color:#00ff00; font-size:90px'>B</b>"
                  "<img src='in.png'><img src='file://" +
                      (folder_ / "in.png") + "'><script>document.title='x'</script></p>");
    const Finished finished =
        render({"--html", folder_ / "in.html", "-o", out_, "--color", "#ff0000"});
    ASSERT_EQ(finished.exitCode, 0) << finished.err;
    const CGImage image = result();
    EXPECT_LT(image.height() / 2, 90);  // letters of 90 pixels, no picture of 300
    bool hasGreen = false;
    bool hasRed = false;
    for (int y = 0; y < image.height() / 2; ++y)
        for (int x = 0; x < image.width(); ++x) {
            const std::uint8_t* pixel = image.pixels().row(y) + std::ptrdiff_t{4} * x;
            hasGreen = hasGreen || (pixel[1] == 255 && pixel[0] == 0);
            hasRed = hasRed || (pixel[0] == 255 && pixel[1] == 0);
        }
    EXPECT_TRUE(hasGreen);
    EXPECT_TRUE(hasRed);
}

TEST_F(TextCommand, AnHtmlFileThatIsNotThereIsNamed) {
    const Finished finished = render({"--html", folder_ / "no.html", "-o", out_});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("no.html: No such file or directory"));
}

TEST_F(TextCommand, ACauseForProgramsIsEnglishInEveryLanguage) {
    const auto json = [&](const char* language) {
        return render({"--html", folder_ / "no.html", "-o", out_, "--json"}, {}, [&] {
            ::setenv("LC_ALL", "C.UTF-8", 1);
            ::setenv("LANGUAGE", language, 1);
        });
    };
    const Finished english = json("en");
    EXPECT_THAT(english.out, HasSubstr("no.html: No such file or directory\""));
    EXPECT_EQ(json("de").out, english.out);
}

TEST_F(TextCommand, MarkupThatIsTypedIsShownAsTyped) {
    ASSERT_EQ(text("<b>bold</b>").exitCode, 0);
    const int asTyped = result().width();
    ASSERT_EQ(text("bold").exitCode, 0);
    EXPECT_GT(asTyped, result().width() * 2);
}

}  // namespace
}  // namespace skarnel
