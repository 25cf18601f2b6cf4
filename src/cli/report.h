// What a run says: lines for people, JSON for programs, a progress line for a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/job.h"
#include "util/log/shown_text.h"
#include "util/messages/translator.h"

namespace skarnel::cli {

/// One line of JSON without its line end: input, output, inputSize and outputSize ([width,
/// height]), milliseconds, error. What there is not is null; bytes that are no UTF-8 are replaced.
/// Names with such bytes are also there whole, in base64 (RFC 4648): inputBase64, outputBase64.
std::string jsonOfReport(const JobReport& report);

/// The version and what this build can do, as one line of JSON.
std::string jsonOfVersion();
std::string textOfVersion();

/// `text` as it may go to that stream's descriptor. A file's name may hold what a terminal obeys,
/// or what turns the direction of writing around; there each byte of it, and each that belongs to
/// no character, is shown as "\x1b", as a shell reads it in $'...'. Into a file or a pipe it goes
/// as it is.
std::string forStream(int descriptor, std::string_view text, LineEnds lineEnds = LineEnds::Escaped);

/// Where the lines go. Standard output has the results, standard error everything else; with a
/// picture on standard output the JSON goes to standard error too.
class Console {
  public:
    struct Style {
        Verbosity verbosity = Verbosity::Normal;
        bool json = false;
        bool pictureOnStandardOutput = false;
        bool progress = false;  // standard error is a terminal that can wipe a line
        bool colour = false;
    };
    /// `words` must outlive the console.
    Console(const Style& style, const Translator& words) : style_(style), words_(words) {}

    /// The style for these options on the present streams and environment (NO_COLOR, TERM).
    static Style styleFor(const Options& options);

    /// Where there is no memory for the lines, shorter ones stand in their place: with JSON an
    /// object without names.
    void report(const JobReport& report);
    void message(std::string_view text);  // on standard error, after the program's name
    void problem(std::string_view text);  // a message in the user's language
    void progress(std::size_t done, std::size_t total, std::string_view name);
    void wipeProgress();

    /// True once standard output did not get a line; the cause was said on standard error.
    bool outputFailed() const { return outputFailed_; }

  private:
    void tryReport(const JobReport& report);
    void print(int descriptor, std::string_view text);
    bool outputFailed_ = false;
    Style style_;
    const Translator& words_;
    bool progressStands_ = false;
};

}  // namespace skarnel::cli
