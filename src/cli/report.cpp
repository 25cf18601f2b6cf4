#include "cli/report.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <nlohmann/json.hpp>

#include "cli/interrupt.h"
#include "recipe/base64.h"
#include "util/log/message.h"

namespace skarnel::cli {
namespace {

using Json = nlohmann::json;

/// One value that is no object: the library's own objects end the program where memory is short.
std::string textOf(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string sizeOrNull(const std::optional<PixelSize>& size) {
    if (!size) return "null";
    return "[" + std::to_string(size->width) + "," + std::to_string(size->height) + "]";
}

std::string textOrNull(const std::optional<std::string>& text) {
    return text ? textOf(*text) : "null";
}

/// An object or a list, member by member.
class JsonText {
  public:
    explicit JsonText(char open) : text_(1, open) {}
    void add(const std::string& value) {
        if (text_.size() > 1) text_ += ',';
        text_ += value;
    }
    void add(std::string_view key, const std::string& value) { add(textOf(key) + ":" + value); }
    std::string closedWith(char close) const { return text_ + close; }

  private:
    std::string text_;
};

/// By the very judgement by which bytes are replaced.
bool isUtf8(const std::string& name) try {
    (void)Json(name).dump();
    return true;
} catch (const Json::type_error&) {
    return false;
}

/// Where JSON cannot say a name, its bytes in base64 under a key of their own.
void addBytes(JsonText& json, const char* key, const std::string& name) {
    if (isUtf8(name)) return;
    const ByteView bytes{reinterpret_cast<const std::uint8_t*>(name.data()), name.size()};
    json.add(key, textOf(encodeBase64(bytes)));
}

double rounded(double milliseconds) {
    return std::round(milliseconds * 1000) / 1000;
}

std::string describe(PixelSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string detailsOf(const JobReport& report) {
    std::string text = report.input;
    if (report.inputSize) text += " " + describe(*report.inputSize);
    if (report.output) text += " -> " + *report.output;
    if (report.outputSize) text += " " + describe(*report.outputSize);
    return text + ", " + std::to_string(std::lround(report.milliseconds)) + " ms";
}

constexpr std::string_view kReportWithoutMemory =
    R"({"input":null,"output":null,"inputSize":null,"outputSize":null,"milliseconds":0.0,)"
    R"("error":"No memory left for a report"})"
    "\n";

int resultStream(const Console::Style& style) {
    return style.pictureOnStandardOutput ? STDERR_FILENO : STDOUT_FILENO;
}

bool hasVariable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

std::size_t terminalColumns() {
    winsize size = {};
    const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
}

}  // namespace

std::string forStream(int descriptor, std::string_view text, LineEnds lineEnds) {
    if (::isatty(descriptor) != 1) return std::string(text);
    std::string shown;
    forEachShown(text, lineEnds, [&shown](std::string_view piece) { shown += piece; });
    return shown;
}

std::string jsonOfReport(const JobReport& report) {
    JsonText json('{');
    json.add("input", textOf(report.input));
    json.add("output", textOrNull(report.output));
    json.add("inputSize", sizeOrNull(report.inputSize));
    json.add("outputSize", sizeOrNull(report.outputSize));
    json.add("milliseconds", textOf(rounded(report.milliseconds)));
    json.add("error", textOrNull(report.error));
    addBytes(json, "inputBase64", report.input);
    if (report.output) addBytes(json, "outputBase64", *report.output);
    return json.closedWith('}');
}

std::string textOfVersion() {
    return "skarnel-render " SKARNEL_VERSION;
}

std::string jsonOfVersion() {
    JsonText reads('[');
    JsonText writes('[');
    for (const ImageType& type : imageTypes()) {
        if (type.canRead) reads.add(textOf(type.name));
        if (type.canWrite) writes.add(textOf(type.name));
    }
    // What stands between a hostile picture and the system.
    JsonText walls('{');
    for (const DecoderWall& wall : decoderWalls()) walls.add(wall.name, textOf(wall.stands));
    JsonText json('{');
    json.add("name", textOf("skarnel-render"));
    json.add("version", textOf(SKARNEL_VERSION));
    json.add("reads", reads.closedWith(']'));
    json.add("writes", writes.closedWith(']'));
    json.add("walls", walls.closedWith('}'));
    return json.closedWith('}');
}

Console::Style Console::styleFor(const Options& options) {
    Style style;
    style.verbosity = options.verbosity;
    style.json = options.json;
    style.pictureOnStandardOutput =
        options.output == kStandardStream ||
        (!options.output && options.pictures == std::vector<std::string>{"-"} && !options.sweep);
    const char* terminal = std::getenv("TERM");
    const bool capable =
        ::isatty(STDERR_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
    style.progress = capable && options.verbosity != Verbosity::Quiet;
    style.colour = capable && !hasVariable("NO_COLOR");
    return style;
}

void Console::report(const JobReport& report) try {
    tryReport(report);
} catch (const std::bad_alloc&) {
    // The pictures behind this one shall still be made.
    outputFailed_ = true;
    print(STDERR_FILENO, "skarnel-render: No memory left for a report\n");
    if (style_.json) print(resultStream(style_), kReportWithoutMemory);
}

void Console::tryReport(const JobReport& report) {
    wipeProgress();
    if (report.error) {
        // With JSON the reason stands in the object; people see it on a terminal all the same.
        const std::string& cause = *report.error;
        message(report.input == kStandardStream
                    ? words_.cause(filled("standard input: %1", {cause}))
                    : report.input + ": " + words_.cause(cause));
    }
    if (style_.verbosity == Verbosity::Verbose) message(detailsOf(report));
    if (style_.json) {
        print(resultStream(style_), jsonOfReport(report) + "\n");
    } else if (report.output && style_.verbosity != Verbosity::Quiet &&
               !style_.pictureOnStandardOutput) {
        print(STDOUT_FILENO, forStream(STDOUT_FILENO, *report.output) + "\n");
    }
}

void Console::message(std::string_view text) {
    wipeProgress();
    const std::string name = style_.colour ? "\x1b[31mskarnel-render:\x1b[0m " : "skarnel-render: ";
    print(STDERR_FILENO, name + forStream(STDERR_FILENO, text) + "\n");
}

void Console::problem(std::string_view text) {
    message(words_.cause(text));
}

void Console::progress(std::size_t done, std::size_t total, std::string_view name) {
    if (!style_.progress || total < 2) return;
    constexpr std::size_t kBarWidth = 24;
    const std::size_t filled = kBarWidth * done / total;
    // A bar of two lines could not be wiped: line ends are escaped, too.
    const std::string shown = forStream(STDERR_FILENO, name);
    std::string line = "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') +
                       "] " + std::to_string(done) + "/" + std::to_string(total) + " " + shown;
    // A line that wraps could not be wiped. Cutting inside a UTF-8 sequence must not happen.
    std::size_t length = std::min(line.size(), terminalColumns() - 1);
    while (length > 0 && length < line.size() && (line[length] & 0xC0) == 0x80) --length;
    noteProgressLine(true);
    progressStands_ = true;
    print(STDERR_FILENO, "\r\x1b[K" + line.substr(0, length));
}

void Console::wipeProgress() {
    if (!progressStands_) return;
    print(STDERR_FILENO, "\r\x1b[K");
    progressStands_ = false;
    noteProgressLine(false);
}

void Console::print(int descriptor, std::string_view text) {
    const UninterruptedScope whole;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const Result<void> printed = writeDescriptor(descriptor, {bytes, text.size()});
    if (printed || descriptor != STDOUT_FILENO || outputFailed_) return;
    outputFailed_ = true;
    problem(filled("standard output: %1", {printed.error().message}));
}

}  // namespace skarnel::cli
