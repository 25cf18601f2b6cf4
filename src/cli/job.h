// One picture in, one reflection out, with a report that tells what became of it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "cli/numbers.h"
#include "cli/options.h"
#include "cli/render_settings.h"
#include "imaging/io/image_io.h"
#include "storage/safe_file.h"

namespace skarnel::cli {

class UninterruptedScope;

struct Job {
    std::string input;                         // a path, or "-"
    std::string output;                        // a path, or "-"
    std::string type;                          // identifier of the format to write
    std::string refusal;                       // not empty: why this job cannot even be tried
    std::optional<DecodedImage> picture = {};  // made already, from text; the input is its name
};

/// What all jobs of a run share.
struct JobSettings {
    RenderSettings render;
    OutputFormat format;
    std::optional<std::string> recipe;  // its text, to be put inside the results
    std::optional<PixelSize> preview;
    DecodeLimits limits;
    Overwrite overwrite = Overwrite::Refuse;
};

struct JobReport {
    std::string input;
    std::optional<std::string> output;  // what was written
    std::optional<PixelSize> inputSize;
    std::optional<PixelSize> outputSize;
    double milliseconds = 0;
    std::optional<std::string> error;  // a result may be written all the same (an unmade turn)
    Bytes made = {};                   // what is handed on instead of being written
    /// From the writing of the file on: a signal waits, so that no file stands unreported.
    std::shared_ptr<const UninterruptedScope> untilReported = {};
};

/// Whether something stands there that writing would replace: neither a device, a pipe nor a link.
bool isThere(const std::string& path);

/// Why a file that is there is left alone.
std::string alreadyThere(const std::string& path);

/// The job's own picture, or that of its input; '-' is standard input.
Result<DecodedImage> loadPicture(const Job& job, const DecodeLimits& limits);

/// A picture rendered and, with a preview size, shrunk before and after. `turn` tells whether the
/// turn could be made. Refuses (TooLarge) when a picture of the render would have more than four
/// times `limits.maxPixels` pixels, before it takes memory.
Result<ReflectionResult> renderWithin(const CGImage& picture, const JobSettings& settings);

/// The properties to write a result with: what the user asked for and what is kept of the source
/// (resolution and the camera's notes; the picture itself stands upright).
ImageProperties outputProperties(const ImageProperties& source, const JobSettings& settings);

/// Encodes, puts the recipe in where the properties ask for it, and writes what passed the check of
/// `encodeImage` safely; "-" is standard output. From the writing on, signals wait for the end of
/// `report`.
Result<void> encodeAndWrite(const CGImage& image, const Job& job, const ImageProperties& properties,
                            Overwrite overwrite, JobReport& report);

/// Does the whole job. Never throws and never leaves half a file.
JobReport runJob(const Job& job, const JobSettings& settings);

}  // namespace skarnel::cli
