#include "cli/contradictions.h"

#include <algorithm>

#include "imaging/io/image_io.h"
#include "util/log/message.h"

namespace skarnel::cli {
namespace {

std::string contradictionOfText(const Options& options) {
    const TextOptions& text = options.text;
    if (!text.isAsked() && (text.font || text.size || text.color)) {
        return marked("--font, --size and --color need --text or --html");
    }
    if (!text.isAsked()) return {};
    if (text.text && text.html) return marked("--text and --html do not go together");
    if (!options.pictures.empty()) return marked("text and pictures do not go together");
    if (options.watch) return marked("--watch takes no text");
    return {};
}

/// The options that take standard input for themselves.
std::ptrdiff_t readersOfStandardInput(const Options& options) {
    return (options.recipe == kStandardStream ? 1 : 0) +
           (options.text.html == kStandardStream ? 1 : 0);
}

/// An animation named as one format and asked for as another.
std::string contradictionOfAnimation(const Options& options) {
    if (!options.animate)
        return options.frameMilliseconds ? marked("--frame-time needs --animate") : "";
    if (options.animate == kStandardStream)
        return marked("--animate cannot write to standard output");
    if (!options.sweep) return marked("--animate needs --sweep");
    if (options.output) return marked("--animate and --output do not go together");
    const std::size_t dot = options.animate->rfind('.');
    if (dot == std::string::npos || options.format.type.empty()) return {};
    const ImageType* named = imageTypeWithExtension(options.animate->substr(dot + 1));
    if (named == nullptr || named->identifier == options.format.type) return {};
    return filled("--animate %1 and --format contradict each other", {*options.animate});
}

}  // namespace

std::string contradiction(const Options& options) {
    if (std::string message = contradictionOfText(options); !message.empty()) return message;
    const auto streams =
        std::count(options.pictures.begin(), options.pictures.end(), kStandardStream);
    const bool toStream = options.output == kStandardStream;
    if (options.watch && !options.pictures.empty()) return marked("--watch takes no pictures");
    if (options.watch && toStream) return marked("--watch cannot write to standard output");
    if (options.watch && options.sweep) return marked("--watch and --sweep do not go together");
    // A recipe may bring its text; without one that is found out when it is read.
    const bool hasSource = !options.pictures.empty() || options.text.isAsked() || options.recipe;
    if (!options.watch && !hasSource) {
        return marked("no picture was given");
    }
    if (streams + readersOfStandardInput(options) > 1)
        return marked("standard input can be read only once");
    if (toStream && options.pictures.size() > 1) {
        return marked("standard output takes only one picture");
    }
    if (options.recipe && options.userSettings) {
        return marked("--recipe and --user-settings do not go together");
    }
    if (options.embedRecipe && options.sweep) {
        return marked("--embed-recipe and --sweep do not go together");
    }
    if (std::string message = contradictionOfAnimation(options); !message.empty()) return message;
    if (options.sweep && options.pictures.size() > 1)
        return marked("--sweep takes only one picture");
    if (options.sweep && toStream) return marked("--sweep cannot write to standard output");
    return {};
}

}  // namespace skarnel::cli
