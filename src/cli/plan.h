// From what the user asked for to the list of single jobs, with the name of each result.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "cli/job.h"
#include "cli/options.h"

namespace skarnel::cli {

/// What is wrong with the request as a whole; wrong usage, exit code 2.
struct UsageProblem {
    std::string message;
};

/// The type to write: what --format says, else what the output's extension says, else TIFF.
std::variant<std::string, UsageProblem> outputType(const OutputFormat& format,
                                                   std::string_view output);

/// What is asked for and this format has no place for (a recipe) or no use for (a quality, a
/// compression): known before any work.
std::optional<UsageProblem> problemOfType(const Options& options, std::string_view type);

/// "photo Reflection.tiff": the name under which the application would propose to save, beside
/// the picture, or in `folder` when that is not empty.
std::string proposedOutput(const std::string& input, const std::string& folder,
                           std::string_view type);

/// Gives a refusal to each job whose output is that of an earlier one, so that none replaces the
/// other's result: "a.jpg" and "a.png" propose one name, and so do "a.jpg" and "./a.jpg".
void refuseRepeatedOutputs(std::vector<Job>& jobs);

/// One job for each picture, in order. An output that is a folder (or ends with a slash) takes the
/// results under their proposed names; several pictures need one. A second job with the output of
/// an earlier one is refused, so that none replaces the other's result. Looks at the file system,
/// writes nothing.
std::variant<std::vector<Job>, UsageProblem> planJobs(const Options& options);

/// "out.png" and frame 7 of 60 give "out-0007.png".
std::string frameName(const std::string& output, int frame, int frames);

}  // namespace skarnel::cli
