// What a user types and what comes of it, with the program as a process.
#include <gmock/gmock.h>

#include "cli/pictures.h"
#include "cli/process.h"
#include "storage/settings_store.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::Finished;
using test::render;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class CommandLine : public testing::Test {
  protected:
    CommandLine() { test::putPicture(folder_ / "in.png", 30, 20); }
    const TemporaryFolder folder_;
    const std::string in_ = folder_ / "in.png";
};

TEST_F(CommandLine, WritesBesideThePictureAndSaysWhere) {
    const Finished finished = render({in_});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_EQ(finished.out, folder_ / "in Reflection.tiff\n");
    EXPECT_EQ(finished.err, "");
    EXPECT_THAT(folder_.names(), ElementsAre("in Reflection.tiff", "in.png"));
}

TEST_F(CommandLine, WritesWhereItIsToldInTheFormatOfTheName) {
    EXPECT_EQ(render({in_, "-o", folder_ / "out.png"}).exitCode, 0);
    EXPECT_EQ(decodeImageFile(folder_ / "out.png")->type, kUTTypePNG);
}

TEST_F(CommandLine, OptionsThatTheFormatHasNoUseForAreRefusedBeforeTheWork) {
    const std::vector<std::vector<std::string>> wrong = {
        {in_, "--quality", "80"},  // as TIFF
        {in_, "--quality", "80", "-o", folder_ / "out.png"},
        {in_, "--compression", "lzw", "-o", folder_ / "out.png"},
        {in_, "--compression", "3", "-o", folder_ / "out.jpg"},
        {in_, "--quality", "80", "--sweep", "alpha=0:9:3", "--animate", folder_ / "out.png"},
        {in_, "--quality", "80", "--sweep", "alpha=0:9:3", "-o", folder_ / "out.bmp"},
        {"--watch", folder_.path(), "--format", "png", "--compression", "none"},
    };
    for (const std::vector<std::string>& arguments : wrong) {
        const Finished refused = render(arguments);
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_THAT(refused.err, testing::MatchesRegex("skarnel-render: --.* not for .*\n"));
    }
    EXPECT_THAT(folder_.names(), ElementsAre("in.png"));
}

TEST_F(CommandLine, QuietSaysNothing) {
    const Finished finished = render({in_, "-q"});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_EQ(finished.out + finished.err, "");
}

TEST_F(CommandLine, VerboseTellsSizesAndTimeOnStandardError) {
    const Finished finished = render({in_, "-v"});
    EXPECT_THAT(finished.err, HasSubstr("30x20 -> "));
    EXPECT_THAT(finished.err, HasSubstr("30x40"));
    EXPECT_THAT(finished.err, HasSubstr(" ms"));
}

TEST_F(CommandLine, NeverOverwritesWithoutForce) {
    test::putFile(folder_ / "in Reflection.tiff", "mine");
    const Finished refused = render({in_});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, HasSubstr("already exists"));
    EXPECT_EQ(test::fileText(folder_ / "in Reflection.tiff"), "mine");
    EXPECT_EQ(render({in_, "--force"}).exitCode, 0);
    EXPECT_NE(test::fileText(folder_ / "in Reflection.tiff"), "mine");
}

TEST_F(CommandLine, ThePictureItselfMayBeReplaced) {
    EXPECT_EQ(render({in_, "-o", in_, "-f"}).exitCode, 0);
    EXPECT_EQ(decodeImageFile(in_)->image.height(), 40);
}

TEST_F(CommandLine, GoesOnAfterABadFileAndNamesItWithTheReason) {
    test::putPicture(folder_ / "other.png", 10, 10);
    const Finished finished = render({folder_ / "missing.png", in_, folder_ / "other.png", "-j1"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_EQ(finished.err,
              "skarnel-render: " + (folder_ / "missing.png: No such file or directory\n"));
    EXPECT_EQ(finished.out,
              folder_ / "in Reflection.tiff\n" + (folder_ / "other Reflection.tiff\n"));
}

TEST_F(CommandLine, JsonIsOneObjectAPicture) {
    const Finished finished = render({in_, folder_ / "missing.png", "--json"});
    EXPECT_EQ(finished.exitCode, 1);
    const std::size_t lineEnd = finished.out.find('\n');
    const std::string first = finished.out.substr(0, lineEnd);
    const std::string second = finished.out.substr(lineEnd + 1);
    EXPECT_THAT(first, HasSubstr("\"input\":\"" + in_ + "\""));
    EXPECT_THAT(first, HasSubstr("\"outputSize\":[30,40]"));
    EXPECT_THAT(first, HasSubstr("\"error\":null"));
    EXPECT_THAT(second, HasSubstr("\"output\":null"));
    EXPECT_THAT(second, HasSubstr("\"error\":\"No such file or directory\""));
}

TEST_F(CommandLine, SettingsChangeTheResult) {
    // A reflection of half the height on 20 rows: 10 rows more.
    EXPECT_EQ(render({in_, "--perspective-height", "50", "-o", folder_ / "a.png"}).exitCode, 0);
    EXPECT_EQ(decodeImageFile(folder_ / "a.png")->image.height(), 30);
    EXPECT_EQ(render({in_, "--perspective-width", "10", "-o", folder_ / "b.png"}).exitCode, 0);
    EXPECT_EQ(decodeImageFile(folder_ / "b.png")->image.width(), 36);
    EXPECT_EQ(render({in_, "--offset", "-20", "-o", folder_ / "c.png"}).exitCode, 0);
    EXPECT_EQ(decodeImageFile(folder_ / "c.png")->image.height(), 36);
}

TEST_F(CommandLine, TheBackgroundFillsTheCanvas) {
    EXPECT_EQ(render({in_, "--apply-background-color", "--background-color", "#102030", "-o",
                      folder_ / "a.png"})
                  .exitCode,
              0);
    const auto result = decodeImageFile(folder_ / "a.png");
    ASSERT_TRUE(result);
    const std::uint8_t* last = result->image.pixels().row(39);  // the reflection has faded away
    EXPECT_EQ(last[0], 0x10);
    EXPECT_EQ(last[1], 0x20);
    EXPECT_EQ(last[2], 0x30);
    EXPECT_EQ(last[3], 255);
}

TEST_F(CommandLine, UserSettingsAreTheStoredOnesAndOptionsWin) {
    SettingsStore store(folder_ / "config/skarnel/settings.json");
    store.setFloat("perspectiveHeight", 50);
    ASSERT_TRUE(store.synchronize());
    const auto here = [&] { ::setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1); };
    EXPECT_EQ(render({in_, "--user-settings", "-o", folder_ / "a.png"}, {}, here).exitCode, 0);
    EXPECT_EQ(decodeImageFile(folder_ / "a.png")->image.height(), 30);
    EXPECT_EQ(render({in_, "-o", folder_ / "b.png"}, {}, here).exitCode, 0);
    EXPECT_EQ(decodeImageFile(folder_ / "b.png")->image.height(), 40);
    EXPECT_EQ(
        render({in_, "--user-settings", "--perspective-height", "25", "-o", folder_ / "c.png"}, {},
               here)
            .exitCode,
        0);
    EXPECT_EQ(decodeImageFile(folder_ / "c.png")->image.height(), 25);
}

TEST_F(CommandLine, ReadingTheSettingsWritesNothing) {
    const auto here = [&] { ::setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1); };
    EXPECT_EQ(render({in_, "--user-settings", "-o", folder_ / "a.png"}, {}, here).exitCode, 0);
    EXPECT_THAT(folder_.names(), ElementsAre("a.png", "in.png"));
}

TEST_F(CommandLine, WrongUsageIsTwoAndSaysWhat) {
    const Finished noNumber = render({in_, "--offset", "wide"});
    EXPECT_EQ(noNumber.exitCode, 2);
    EXPECT_THAT(noNumber.err, HasSubstr("--offset: 'wide' is not a number"));
    EXPECT_EQ(render({in_, "--gradient", "nan"}).exitCode, 2);
    EXPECT_EQ(render({}).exitCode, 2);
    EXPECT_EQ(render({in_, "--nonsense"}).exitCode, 2);
    EXPECT_EQ(render({in_, in_, "-o", folder_ / "one.png"}).exitCode, 2);
    EXPECT_EQ(render({in_, "-o", folder_ / "one.docx"}).exitCode, 2);
    EXPECT_THAT(folder_.names(), ElementsAre("in.png"));
}

TEST_F(CommandLine, HelpAndVersionGoToStandardOutput) {
    const Finished help = render({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("Usage: skarnel-render"));
    EXPECT_EQ(help.err, "");
    const Finished version = render({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out, "skarnel-render " SKARNEL_VERSION "\n");
    EXPECT_THAT(render({"--version", "--json"}).out, HasSubstr("\"version\":\"" SKARNEL_VERSION));
}

TEST_F(CommandLine, NamesThatLookLikeOptionsFollowTwoDashes) {
    test::putPicture(folder_ / "-x.png", 10, 10);
    const auto inFolder = [&] {
        if (::chdir(folder_.path().c_str()) != 0) ::_exit(126);
    };
    const Finished finished = render({"--", "-x.png"}, {}, inFolder);
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_EQ(finished.out, "-x Reflection.tiff\n");
}

TEST_F(CommandLine, NamesMayHoldAnyBytes) {
    const std::string odd = folder_ / "a\nb \xff'\"$(x).png";
    test::putPicture(odd, 10, 10);
    EXPECT_EQ(render({odd}).exitCode, 0);
    EXPECT_EQ(folder_.names().size(), 3U);
}

TEST_F(CommandLine, SweepsAndAnimates) {
    const Finished frames =
        render({in_, "--sweep", "image-perspective=0:100:3", "-o", folder_ / "f.png"});
    EXPECT_EQ(frames.exitCode, 0);
    EXPECT_EQ(frames.out,
              folder_ / "f-0001.png\n" + (folder_ / "f-0002.png\n") + (folder_ / "f-0003.png\n"));
    EXPECT_EQ(render({in_, "--sweep", "offset=0:10:3", "--animate", folder_ / "a.webp"}).exitCode,
              0);
    for (const char* name : {"a.tiff", "a"}) {
        const Finished other =
            render({in_, "--sweep", "offset=0:10:3", "--animate", folder_ / name});
        EXPECT_EQ(other.exitCode, 2);
        EXPECT_THAT(other.err, HasSubstr("Only PNG and WebP can be animated"));
    }
    const Finished again =
        render({in_, "--sweep", "offset=0:10:3", "--animate", folder_ / "a.webp"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_THAT(again.err, HasSubstr("a.webp: The file already exists (--force replaces it)"));
}

TEST_F(CommandLine, TheHelpShowsALinesEndAsItIsTyped) {
    EXPECT_THAT(render({"--help"}).out, HasSubstr("Reflect this text; \\n begins a line"));
}

TEST_F(CommandLine, ASweepTellsThePicturesOwnSize) {
    for (const std::vector<std::string>& road :
         {std::vector<std::string>{"-o", folder_ / "f.png"}, {"--animate", folder_ / "f.png"}}) {
        std::vector<std::string> arguments = {in_,         "--sweep", "offset=0:10:2",
                                              "--preview", "9x9",     "--json"};
        arguments.insert(arguments.end(), road.begin(), road.end());
        EXPECT_THAT(render(arguments).out, HasSubstr("\"inputSize\":[30,20]")) << road[0];
    }
}

TEST_F(CommandLine, LoadsNoWindowToolkit) {
    // What the dynamic linker would load for the program.
    FILE* pipe = ::popen("ldd '" SKARNEL_RENDER "' 2>&1", "r");
    ASSERT_NE(pipe, nullptr);
    std::string libraries;
    std::array<char, 4096> buffer;
    while (std::fgets(buffer.data(), buffer.size(), pipe) != nullptr) libraries += buffer.data();
    ::pclose(pipe);
    EXPECT_THAT(libraries, HasSubstr("libc.so"));
    for (const char* toolkit : {"libQt", "libgtk", "libX11", "libwayland", "libGL"}) {
        EXPECT_THAT(libraries, testing::Not(HasSubstr(toolkit)));
    }
}

}  // namespace
}  // namespace skarnel
