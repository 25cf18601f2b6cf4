// What the user asked for: the command line as a value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/numbers.h"
#include "cli/render_settings.h"
#include "cli/text_source.h"
#include "imaging/io/image_io.h"
#include "util/messages/translator.h"

namespace skarnel::cli {

/// "-" as a picture or an output.
inline constexpr std::string_view kStandardStream = "-";

/// One setting that runs through a range, frame by frame.
struct Sweep {
    std::size_t setting = 0;  // index in kReflectionSettings
    float from = 0;
    float to = 0;
    int count = 0;  // at least 2
    friend bool operator==(const Sweep&, const Sweep&) = default;
};

/// How a run's pictures are written.
struct OutputFormat {
    std::string type;                    // identifier; empty: from the output's name, else TIFF
    std::optional<int> quality;          // 0..100
    std::optional<int> tiffCompression;  // 1 none, 5 LZW, 8 deflate
    std::optional<int> level;            // PNG's, 0..12
};

enum class Verbosity { Quiet, Normal, Verbose };

struct Options {
    std::vector<std::string> pictures;
    std::optional<std::string> output;  // a file, a folder, or "-"
    SettingOverrides settings;
    bool userSettings = false;
    std::optional<std::string> recipe;  // a recipe file, or a picture that carries one
    bool embedRecipe = false;
    OutputFormat format;
    std::optional<PixelSize> preview;
    DecodeLimits limits;
    bool force = false;
    bool json = false;
    Verbosity verbosity = Verbosity::Normal;
    std::optional<int> jobs;                   // none: as many as the machine serves
    std::optional<std::uint64_t> memoryBytes;  // for all of them; none: what the machine has free
    std::optional<std::string> watch;
    std::optional<Sweep> sweep;
    std::optional<std::string> animate;
    std::optional<int> frameMilliseconds;  // of an animation; none: the default
    TextOptions text;                      // asked for: the one picture is made from it
};

/// A run that ends before any picture: the text for the user and the exit code.
struct EarlyEnd {
    std::string text;  // for standard output when the code is 0, for standard error otherwise
    int exitCode = 0;
};

/// `--version`, which needs what the libraries say and is therefore answered by main.
struct VersionRequest {
    bool json = false;
};

using ParsedCommandLine = std::variant<Options, EarlyEnd, VersionRequest>;

/// Reads the arguments (without the program's name). Touches nothing outside its inputs. What is
/// wrong gives an EarlyEnd with exit code 2 and a sentence that names the option and the value. The
/// texts of an EarlyEnd are in the language of `words`.
ParsedCommandLine parseCommandLine(const std::vector<std::string>& arguments,
                                   const Translator& words = Translator());

}  // namespace skarnel::cli
