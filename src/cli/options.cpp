#include "cli/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <functional>

#include "cli/contradictions.h"
#include "imaging/io/image_io.h"
#include "util/log/message.h"

namespace skarnel::cli {
namespace {

struct NumberOption {
    const char* name;
    std::string_view key;
    const char* help;
};

/// In the order in which they act, which is the order of --help.
constexpr std::array<NumberOption, kReflectionSettings.size()> kNumberOptions{{
    {"--perspective-height", "perspectiveHeight",
     "Height of the reflection, percent of the picture"},
    {"--perspective-width", "perspectiveWidth", "Widening at its far edge, percent a side"},
    {"--offset", "offset", "Gap below the picture, percent of the reflection"},
    {"--start", "start", "Lift of the fade, percent of the reflection"},
    {"--gradient", "gradient", "Fade exponent times ten"},
    {"--alpha", "alpha", "Opacity at the seam, 0 to 255"},
    {"--image-perspective", "imagePerspective", "Turn of the whole, 0 to 100; none at 0, 50, 100"},
}};

constexpr float kLargestTextSize = 10'000;  // pixels
constexpr int kLargestQuality = 100;
constexpr int kLargestLevel = 12;
constexpr int kLargestJobs = 1024;
constexpr int kLargestFrameCount = 10'000;
constexpr int kLargestFrameMilliseconds = 60'000;

/// What a value must be, when it is not.
CLI::ValidationError wrongValue(const std::string& option, std::string_view phrase,
                                std::initializer_list<std::string_view> places) {
    return CLI::ValidationError(option, filled(phrase, places));
}

std::string lowerCase(std::string text) {
    for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

/// "tiff, png, jpeg, ..." of the formats that this build writes.
std::string writableFormats() {
    std::string names;
    for (const ImageType& type : imageTypes()) {
        if (!type.canWrite) continue;
        names += (names.empty() ? "" : ", ") + std::string(type.extensions.front());
    }
    return names;
}

std::string typeOfFormatName(const std::string& name) {
    const ImageType* type = imageTypeWithExtension(lowerCase(name));
    if (type == nullptr || !type->canWrite) {
        throw wrongValue("--format", "'%1' is not a format that can be written: %2",
                         {name, writableFormats()});
    }
    return std::string(type->identifier);
}

void setCompression(OutputFormat& format, const std::string& name) {
    const std::string lower = lowerCase(name);
    if (lower == "none") format.tiffCompression = 1;
    if (lower == "lzw") format.tiffCompression = 5;
    if (lower == "deflate") format.tiffCompression = 8;
    if (format.tiffCompression) return;
    const auto level = parseCount(name, kLargestLevel);
    if (!level)
        throw wrongValue("--compression", "'%1' is not none, lzw, deflate, or a level 0 to 12",
                         {name});
    format.level = static_cast<int>(*level);
}

int countOption(const char* option, const std::string& value, int smallest, int largest) {
    const auto count = parseCount(value, largest);
    if (!count || *count < smallest) {
        throw wrongValue(option, "'%1' is not a whole number from %2 to %3",
                         {value, std::to_string(smallest), std::to_string(largest)});
    }
    return static_cast<int>(*count);
}

/// "image-perspective=0:100:60": the option's name without its dashes, from, to, frames.
Sweep parseSweep(const std::string& text) {
    const auto fail = [&] {
        return wrongValue("--sweep",
                          "'%1' is not SETTING=FROM:TO:COUNT, such as image-perspective=0:100:60",
                          {text});
    };
    const std::size_t equals = text.find('=');
    const std::size_t first = text.find(':', equals == std::string::npos ? 0 : equals);
    const std::size_t second = first == std::string::npos ? first : text.find(':', first + 1);
    if (equals == std::string::npos || second == std::string::npos) throw fail();
    const std::string name = "--" + text.substr(0, equals);
    const auto option = std::find_if(kNumberOptions.begin(), kNumberOptions.end(),
                                     [&](const NumberOption& each) { return name == each.name; });
    const auto from = parseNumber(text.substr(equals + 1, first - equals - 1));
    const auto to = parseNumber(text.substr(first + 1, second - first - 1));
    const auto count = parseCount(text.substr(second + 1), kLargestFrameCount);
    if (option == kNumberOptions.end() || !from || !to || !count || *count < 2) throw fail();
    return {indexOfSetting(option->key), *from, *to, static_cast<int>(*count)};
}

/// The options of one run on a CLI::App, bound to the fields of `options`.
class Binding {
  public:
    Binding(CLI::App& app, Options& options) : app_(app), options_(options) {
        addFiles();
        addText();
        addSettings();
        addFormat();
        addMany();
        addGeneral();
    }

    bool version() const { return version_; }
    bool quiet() const { return quiet_; }
    bool verbose() const { return verbose_; }

  private:
    using Reader = std::function<void(const std::string&)>;

    /// An option whose text `read` takes; what it throws becomes the message.
    CLI::Option* add(const std::string& names, const char* value, const char* help, Reader read) {
        return app_.add_option_function<std::string>(names, std::move(read), help)
            ->option_text(value)
            ->group(group_);
    }
    CLI::Option* flag(const std::string& names, bool& target, const char* help) {
        return app_.add_flag(names, target, help)->group(group_);
    }

    void addFiles() {
        group_ = "Files";
        app_.add_option("PICTURE", options_.pictures, "Pictures to reflect; '-' is standard input")
            ->option_text(" ")
            ->group(group_);
        add("-o,--output", "OUT", "File or folder to write; '-' is standard output",
            [this](const std::string& path) {
                // An unset variable of a script must not mean "beside the picture".
                if (path.empty())
                    throw wrongValue("--output", "'%1' is not a file or a folder", {path});
                options_.output = path;
            });
        flag("-f,--force", options_.force, "Replace files that are there");
    }

    void addText() {
        group_ = "Text";
        TextOptions& text = options_.text;
        add("--text", "TEXT", "Reflect this text; \\n begins a line",
            [&text](const std::string& value) { text.text = value; });
        add("--html", "FILE", "Reflect the styled text of an HTML file; '-' is standard input",
            [&text](const std::string& path) { text.html = path; });
        add("--font", "FAMILY", "Typeface of the text (default: Times)",
            [&text](const std::string& family) {
                if (family.empty()) throw wrongValue("--font", "'%1' is not a typeface", {family});
                text.font = family;
            });
        add("--size", "POINTS", "Size of the text, one point one pixel (default: 48)",
            [&text](const std::string& value) {
                const std::optional<float> size = parseNumber(value);
                if (!size || *size < 1 || *size > kLargestTextSize)
                    throw wrongValue("--size", "'%1' is not a number from 1 to 10000", {value});
                text.size = *size;
            });
        add("--color", "#RRGGBB", "Colour of the text (default: #FFFFFF)",
            [&text](const std::string& value) {
                text.color = parseColor(value);
                if (!text.color)
                    throw wrongValue("--color", "'%1' is not a colour of the form #RRGGBB",
                                     {value});
            });
    }

    void addSettings() {
        group_ = "Settings";
        for (const NumberOption& each : kNumberOptions) {
            add(each.name, "NUMBER", each.help, [this, each](const std::string& text) {
                const std::optional<float> value = parseNumber(text);
                if (!value) throw wrongValue(each.name, "'%1' is not a number", {text});
                options_.settings.numbers[indexOfSetting(each.key)] = value;
            });
        }
        flag("--apply-background-color", options_.settings.applyBackgroundColor,
             "Lay the background colour under the whole");
        add("--background-color", "#RRGGBB", "Background, also under JPEGs (default: #000000)",
            [this](const std::string& text) {
                options_.settings.backgroundColor = parseColor(text);
                if (!options_.settings.backgroundColor) {
                    throw wrongValue("--background-color",
                                     "'%1' is not a colour of the form #RRGGBB", {text});
                }
            });
        flag("--user-settings", options_.userSettings, "Start from the application's settings");
        add("--recipe", "FILE", "Start from a recipe or a picture with one; '-' is standard input",
            [this](const std::string& path) { options_.recipe = path; });
    }

    void addFormat() {
        group_ = "Result";
        add("--format", "NAME", "tiff, png, jpeg, jp2, webp, bmp (default: by OUT, else tiff)",
            [this](const std::string& name) { options_.format.type = typeOfFormatName(name); });
        add("--quality", "N", "0 to 100, for JPEG, JPEG 2000 and WebP",
            [this](const std::string& text) {
                options_.format.quality = countOption("--quality", text, 0, kLargestQuality);
            });
        add("--compression", "NAME", "TIFF: lzw, deflate, none; PNG: a level 0 to 12",
            [this](const std::string& name) { setCompression(options_.format, name); });
        add("--preview", "WxH", "Shrink the picture, then the result, to fit",
            [this](const std::string& text) {
                options_.preview = parsePixelSize(text);
                if (!options_.preview) {
                    throw wrongValue("--preview", "'%1' is not a size such as 800x600", {text});
                }
            });
        flag("--embed-recipe", options_.embedRecipe,
             "Keep settings and text inside the TIFF, PNG or JPEG");
        add("--max-pixels", "N", "Refuse larger pictures (default: 500M)",
            [this](const std::string& text) {
                const auto pixels = parseLargeCount(text);
                if (!pixels)
                    throw wrongValue("--max-pixels", "'%1' is not a number of pixels", {text});
                // Who names a number believes in it, however short the file is.
                options_.limits = {*pixels, *pixels};
            });
    }

    void addMany() {
        group_ = "Many";
        add("-j,--jobs", "N", "Pictures at a time (default: by processors and memory)",
            [this](const std::string& text) {
                options_.jobs = countOption("--jobs", text, 1, kLargestJobs);
            });
        add("--memory", "BYTES", "For all of them together (default: most of what is free)",
            [this](const std::string& text) {
                const auto bytes = parseLargeCount(text);
                if (!bytes)
                    throw wrongValue("--memory", "'%1' is not a number of bytes, such as 2G",
                                     {text});
                options_.memoryBytes = static_cast<std::uint64_t>(*bytes);
            });
        add("--watch", "FOLDER", "Render what appears there, until interrupted",
            [this](const std::string& path) { options_.watch = path; });
        add("--sweep", "SETTING=FROM:TO:COUNT", "Numbered frames, one setting running",
            [this](const std::string& text) { options_.sweep = parseSweep(text); });
        add("--animate", "FILE", "The frames of --sweep as one animated PNG or WebP",
            [this](const std::string& path) { options_.animate = path; });
        add("--frame-time", "MS", "Milliseconds a frame of --animate (default: 40)",
            [this](const std::string& text) {
                options_.frameMilliseconds =
                    countOption("--frame-time", text, 1, kLargestFrameMilliseconds);
            });
    }

    void addGeneral() {
        group_ = "General";
        flag("-q,--quiet", quiet_, "Only errors");
        flag("-v,--verbose", verbose_, "Sizes and times too");
        flag("--json", options_.json, "One JSON object a picture");
        app_.set_help_flag("-h,--help", "This text")->group(group_);
        flag("--version", version_, "The version, with --json also what the build can do");
    }

    CLI::App& app_;
    Options& options_;
    std::string group_;
    bool version_ = false;
    bool quiet_ = false;
    bool verbose_ = false;
};

/// The library's help in the user's language, with a usage line that tells the usual order of
/// arguments.
class HelpFormatter final : public CLI::Formatter {
  public:
    explicit HelpFormatter(const Translator& words) : words_(words) {}

  private:
    std::string make_usage(const CLI::App*, std::string) const override {
        return words_.help("Usage: skarnel-render [OPTIONS] PICTURE... [-o OUT]") + "\n";
    }
    std::string make_description(const CLI::App*) const override {
        return words_.help("Turns pictures into their reflections.") + "\n";
    }
    std::string make_group(std::string group, bool isPositional,
                           std::vector<const CLI::Option*> options) const override {
        return Formatter::make_group(words_.help(group), isPositional, std::move(options));
    }
    std::string make_option_desc(const CLI::Option* option) const override {
        return words_.help(option->get_description());
    }

    const Translator& words_;
};

EarlyEnd usageError(const std::string& message, const Translator& words) {
    return {"skarnel-render: " + words.cause(message) + "\n" +
                words.help("Try 'skarnel-render --help'.") + "\n",
            2};
}

std::string describe(const CLI::App& app, const Translator& words) {
    std::string text = app.help();
    while (text.size() > 1 && text.ends_with("\n\n")) text.pop_back();
    return text + "\n" + words.help("Example:") +
           " skarnel-render photo.jpg --offset 2 --image-perspective 30 -o out.png\n" +
           words.help(
               "Exit codes: 0 all well, 1 a picture failed, 2 wrong usage, 130 "
               "interrupted.") +
           "\n";
}

}  // namespace

ParsedCommandLine parseCommandLine(const std::vector<std::string>& arguments,
                                   const Translator& words) {
    Options options;
    CLI::App app("", "skarnel-render");
    const auto formatter = std::make_shared<HelpFormatter>(words);
    formatter->column_width(38);
    app.formatter(formatter);
    const Binding binding(app, options);
    try {
        // The library takes the arguments last first.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::CallForHelp&) {
        return EarlyEnd{describe(app, words), 0};
    } catch (const CLI::ParseError& error) {
        return usageError(error.what(), words);
    }
    if (binding.version()) return VersionRequest{options.json};
    if (binding.verbose()) options.verbosity = Verbosity::Verbose;
    if (binding.quiet()) options.verbosity = Verbosity::Quiet;
    if (const std::string message = contradiction(options); !message.empty()) {
        return usageError(message, words);
    }
    if (options.text.isAsked()) options.pictures = {std::string(kTextInput)};
    return options;
}

}  // namespace skarnel::cli
