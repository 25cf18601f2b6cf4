// Standard streams: pipes, closed ends, terminals.
#include <gmock/gmock.h>
#include <pty.h>
#include <sys/ioctl.h>

#include <sstream>

#include "cli/pictures.h"
#include "cli/process.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::Finished;
using test::render;
using test::TemporaryFolder;
using testing::HasSubstr;
using testing::Not;

std::string pictureBytes(int width, int height) {
    return test::textOf(*encodeImage(test::gradientPicture(width, height), kUTTypePNG));
}

std::optional<std::string> typeOf(const std::string& text) {
    const ImageType* type =
        imageTypeOfContent({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    return type == nullptr ? std::nullopt : std::optional<std::string>(type->identifier);
}

TEST(Streams, APipeGoesThrough) {
    const Finished finished = render({"-"}, pictureBytes(30, 20));
    EXPECT_EQ(finished.exitCode, 0) << finished.err;
    EXPECT_EQ(typeOf(finished.out), kUTTypeTIFF);
    EXPECT_EQ(finished.err, "");
}

TEST(Streams, AFormatMayBeNamedForAPipe) {
    const Finished finished = render({"-", "-o", "-", "--format", "png"}, pictureBytes(30, 20));
    EXPECT_EQ(typeOf(finished.out), kUTTypePNG);
}

TEST(Streams, AFileGoesToAPipeAndAPipeToAFile) {
    const TemporaryFolder folder;
    test::putPicture(folder / "in.png", 30, 20);
    EXPECT_EQ(typeOf(render({folder / "in.png", "-o", "-"}).out), kUTTypeTIFF);
    EXPECT_EQ(render({"-", "-o", folder / "out.png"}, pictureBytes(30, 20)).exitCode, 0);
    EXPECT_TRUE(decodeImageFile(folder / "out.png"));
}

TEST(Streams, TheJsonOfAPipedPictureGoesToStandardError) {
    const Finished finished = render({"-", "--json"}, pictureBytes(30, 20));
    EXPECT_EQ(typeOf(finished.out), kUTTypeTIFF);
    EXPECT_THAT(finished.err, HasSubstr("\"input\":\"-\",\"output\":\"-\""));
}

TEST(Streams, NothingFromStandardInputIsAFailure) {
    const Finished finished = render({"-"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_EQ(finished.err, "skarnel-render: standard input: Nothing came from standard input\n");
    EXPECT_EQ(finished.out, "");
}

TEST(Streams, AReaderThatGoesAwayIsAFailureNotACrash) {
    const Finished finished = render({"-", "--compression", "none"}, pictureBytes(400, 400), [] {
        std::array<int, 2> pipe{};
        if (::pipe(pipe.data()) != 0) ::_exit(126);
        ::dup2(pipe[1], 1);
        ::close(pipe[0]);
        ::close(pipe[1]);
    });
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("standard output: Broken pipe"));
}

TEST(Streams, AFullStandardOutputIsAFailure) {
    const TemporaryFolder folder;
    test::putPicture(folder / "in.png", 30, 20);
    const auto toFullDevice = [] {
        const int full = ::open("/dev/full", O_WRONLY);
        ::dup2(full, 1);
    };
    const Finished picture = render({folder / "in.png", "-o", "-"}, {}, toFullDevice);
    EXPECT_EQ(picture.exitCode, 1);
    EXPECT_THAT(picture.err, HasSubstr("No space left on device"));
    const Finished line = render({folder / "in.png"}, {}, toFullDevice);
    EXPECT_EQ(line.exitCode, 1);
    EXPECT_THAT(line.err, HasSubstr("standard output: No space left on device"));
    EXPECT_EQ(render({"--help"}, {}, toFullDevice).exitCode, 1);
}

TEST(Streams, ClosedStreamsAreNoReasonToCrash) {
    const TemporaryFolder folder;
    test::putPicture(folder / "in.png", 30, 20);
    const Finished finished = render({folder / "in.png", "-o", folder / "out.png", "-q"}, {}, [] {
        ::close(0);
        ::close(1);
        ::close(2);
    });
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_TRUE(decodeImageFile(folder / "out.png"));
}

/// What the program shows on a terminal, with standard error or another of its streams on it.
std::string onTerminal(const std::vector<std::string>& arguments, const char* noColor,
                       unsigned short columns = 60, int stream = STDERR_FILENO) {
    int terminal = -1;
    int screen = -1;
    const winsize size = {20, columns, 0, 0};
    if (::openpty(&terminal, &screen, nullptr, nullptr, &size) != 0) return "(no terminal)";
    {
        test::Process process(arguments, [&] {
            ::setenv("TERM", "xterm", 1);
            ::unsetenv("NO_COLOR");
            if (noColor != nullptr) ::setenv("NO_COLOR", noColor, 1);
            ::dup2(screen, stream);
        });
        process.finish();
    }
    ::close(screen);
    std::string shown;
    std::array<char, 4096> buffer;
    for (;;) {
        const ssize_t count = ::read(terminal, buffer.data(), buffer.size());
        if (count <= 0) break;
        shown.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ::close(terminal);
    return shown;
}

TEST(Streams, ATerminalIsNotCommandedByTheNameOfAFile) {
    const std::string name = "/missing/a\x1b[31mb\x7f\xC2\x9B.png";
    const std::string shown = onTerminal({name}, "1");
    EXPECT_THAT(shown, HasSubstr("/missing/a\\x1b[31mb\\x7f\\xc2\\x9b.png: No such file"));
    EXPECT_EQ(shown.find('\x1b'), std::string::npos);
    EXPECT_THAT(render({name}).err, HasSubstr(name));
}

/// What the program writes to a terminal on its standard output.
std::string outputOnTerminal(const std::vector<std::string>& arguments) {
    return onTerminal(arguments, "1", 200, STDOUT_FILENO);
}

TEST(Streams, ANameNeitherTurnsALineOfATerminalAroundNorBeginsOne) {
    // What turns a line around, an isolate, a mark, half a character, a control character as one
    // byte, and a line that is none of the program's; letters of four languages stay.
    const std::string letters = "\xC3\xA9\xD7\x90\xE6\x97\xA5\xF0\x9F\x8C\x84.png";
    const TemporaryFolder folder;
    const std::string name =
        folder / ("a\xE2\x80\xAEgnp\xE2\x81\xA6\xD8\x9C\xE6\x97z\x9B\nskarnel-render: " + letters);
    const std::string shown =
        folder /
        (R"(a\xe2\x80\xaegnp\xe2\x81\xa6\xd8\x9c\xe6\x97z\x9b\x0askarnel-render: )" + letters);
    EXPECT_THAT(onTerminal({name}, "1", 200), HasSubstr(shown + ": No such file"));
    EXPECT_THAT(render({name}).err, HasSubstr(name + ": No such file"));
    test::putPicture(name, 3, 2);
    const std::string out = folder / "\xE2\x80\xAE.png";
    EXPECT_EQ(outputOnTerminal({name, "-o", out}), folder / "\\xe2\\x80\\xae.png\r\n");
    EXPECT_EQ(render({name, "-o", out, "-f"}).out, out + "\n");
    // Programs get the very name in JSON.
    EXPECT_THAT(outputOnTerminal({name, "-o", out, "-f", "--json"}), HasSubstr(out));
}

TEST(Streams, ATerminalIsNotCommandedByArgumentsThatAreRefused) {
    const std::string odd = "/missing/a\x1b[31mb.skarnel";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--recipe", odd, "x.png"}, {"--format", odd, "x.png"}}) {
        const std::string shown = onTerminal(arguments, "1");
        EXPECT_THAT(shown, HasSubstr("/missing/a\\x1b[31mb.skarnel")) << arguments[0];
        EXPECT_EQ(shown.find('\x1b'), std::string::npos) << arguments[0];
        EXPECT_THAT(render(arguments).err, HasSubstr(odd)) << arguments[0];
    }
}

TEST(Streams, ProgressIsShownOnATerminalOnlyAndWipedAtTheEnd) {
    const TemporaryFolder folder;
    test::putPicture(folder / "a.png", 30, 20);
    test::putPicture(folder / "b.png", 30, 20);
    const std::string shown = onTerminal({folder / "a.png", folder / "b.png", "-f"}, nullptr);
    EXPECT_THAT(shown, HasSubstr("1/2"));
    EXPECT_THAT(shown, testing::EndsWith("\r\x1b[K"));
    EXPECT_EQ(onTerminal({folder / "a.png", folder / "b.png", "-f", "-q"}, nullptr), "");
    EXPECT_EQ(render({folder / "a.png", folder / "b.png", "-f"}).err, "");
}

TEST(Streams, ProgressNeverFillsALineOfANarrowTerminal) {
    const TemporaryFolder folder;
    const std::string name = folder / "\xE6\x97\xA5\xE6\x9C\xAC.png";  // two wide letters
    test::putPicture(name, 30, 20);
    test::putPicture(folder / "b.png", 30, 20);
    for (const unsigned short columns : {1, 2, 12, 28, 60}) {
        const std::string shown = onTerminal({name, folder / "b.png", "-f"}, nullptr, columns);
        EXPECT_THAT(shown, HasSubstr("\r\x1b[K")) << columns;
        // Between two returns to the line's start there is less than a line.
        std::size_t longest = 0;
        std::istringstream lines(shown);
        for (std::string line; std::getline(lines, line, '\r');) {
            const std::size_t escape = std::min(line.size(), std::string_view("\x1b[K").size());
            longest = std::max(longest, line.size() - escape);
        }
        EXPECT_LT(longest, columns);
    }
}

TEST(Streams, ANameSteersNeitherTheTerminalNorTheBar) {
    const TemporaryFolder folder;
    // A colour, a line's end, a window's title, a control character of two bytes, and an é.
    const std::string odd = folder / "q\x1b[35m\nz\x1b]0;t\a\xC2\x9B\xC3\xA9.png";
    test::putPicture(folder / "a.png", 30, 20);
    test::putPicture(odd, 30, 20);
    const std::string bar = onTerminal({folder / "a.png", odd, "-f", "-j", "1"}, "1", 200);
    EXPECT_THAT(bar, HasSubstr("q\\x1b[35m\\x0az\\x1b]0;t\\x07\\xc2\\x9b\xC3\xA9.png"));
    const std::string told = onTerminal({odd, "-f", "-v"}, "1", 200);
    EXPECT_THAT(told, HasSubstr("q\\x1b[35m\\x0az\\x1b]0;t\\x07\\xc2\\x9b\xC3\xA9.png"));
    for (const char* steers : {"\x1b[35m", "\x1b]", "\a", "\xC2\x9B"}) {
        EXPECT_THAT(bar + told, Not(HasSubstr(steers)));
    }
    // A program that reads along gets the very name.
    EXPECT_THAT(render({odd, "-f"}).out, HasSubstr("q\x1b[35m\nz\x1b]0;t\a\xC2\x9B"));
}

TEST(Streams, ColourObeysNoColor) {
    const TemporaryFolder folder;
    EXPECT_THAT(onTerminal({folder / "missing.png"}, nullptr), HasSubstr("\x1b[31m"));
    EXPECT_THAT(onTerminal({folder / "missing.png"}, "1"), Not(HasSubstr("\x1b[31m")));
    EXPECT_THAT(render({folder / "missing.png"}).err, Not(HasSubstr("\x1b")));
}

TEST(Streams, APictureIsNotWrittenToATerminal) {
    int terminal = -1;
    int screen = -1;
    ASSERT_EQ(::openpty(&terminal, &screen, nullptr, nullptr, nullptr), 0);
    const Finished finished = render({"-"}, pictureBytes(3, 3), [&] { ::dup2(screen, 1); });
    EXPECT_EQ(finished.exitCode, 2);
    EXPECT_THAT(finished.err, HasSubstr("standard output is a terminal"));
    ::close(screen);
    ::close(terminal);
}

}  // namespace
}  // namespace skarnel
