#include "cli/plan.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "imaging/io/image_io.h"
#include "recipe/recipe_file.h"
#include "storage/safe_file.h"
#include "storage/save_name.h"
#include "util/log/message.h"

namespace skarnel::cli {
namespace {

constexpr std::size_t kFrameDigits = 4;

bool isFolder(const std::string& path) {
    struct stat status = {};
    return path.ends_with('/') || (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode));
}

/// The last full stop of the last component, or npos. A leading one starts a hidden file's name.
std::size_t extensionStart(std::string_view path) {
    const std::size_t name = path.rfind('/') + 1;  // npos + 1 is 0
    const std::size_t dot = path.rfind('.');
    return dot == std::string_view::npos || dot <= name ? std::string_view::npos : dot;
}

std::string nameInFolder(const std::string& folder, const std::string& name) {
    if (folder.empty()) return name;
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

}  // namespace

std::variant<std::string, UsageProblem> outputType(const OutputFormat& format,
                                                   std::string_view output) {
    if (!format.type.empty()) return format.type;
    const std::size_t dot = extensionStart(output);
    if (dot == std::string_view::npos) return std::string(kUTTypeTIFF);
    const std::string_view extension = output.substr(dot + 1);
    const ImageType* type = imageTypeWithExtension(extension);
    if (type != nullptr && type->canWrite) return std::string(type->identifier);
    return UsageProblem{
        std::string(output) + ": " +
        filled("no format is known that can be written as '%1' (--format names one)", {extension})};
}

std::optional<UsageProblem> problemOfType(const Options& options, std::string_view type) {
    const ImageType* written = imageTypeWithIdentifier(type);
    const std::string name(written != nullptr ? written->name : type);
    const OutputFormat& format = options.format;
    const bool hasQuality = type == kUTTypeJPEG || type == kUTTypeJPEG2000 || type == kUTTypeWebP;
    if (options.embedRecipe && !canCarryRecipe(type)) {
        return UsageProblem{marked("Only TIFF, PNG and JPEG files can carry a recipe")};
    }
    if (format.quality && !hasQuality) {
        return UsageProblem{
            filled("--quality is for JPEG, JPEG 2000 and WebP, not for %1", {name})};
    }
    if (format.tiffCompression && type != kUTTypeTIFF) {
        return UsageProblem{
            filled("--compression none, lzw and deflate are for TIFF, not for %1", {name})};
    }
    if (format.level && type != kUTTypePNG) {
        return UsageProblem{filled("--compression by a number is for PNG, not for %1", {name})};
    }
    return std::nullopt;
}

std::string proposedOutput(const std::string& input, const std::string& folder,
                           std::string_view type) {
    const std::string name = input == kStandardStream ? "Reflection" : saveNameForPath(input);
    const std::optional<std::string> extension = preferredExtensionOfType(type);
    const std::string file = name + "." + extension.value_or("tiff");
    if (!folder.empty()) return nameInFolder(folder, file);
    const bool bare = input.find('/') == std::string::npos;
    return bare ? file : nameInFolder(folderOfPath(input), file);
}

void refuseRepeatedOutputs(std::vector<Job>& jobs) {
    std::map<std::string, std::string> inputOfOutput;
    for (Job& job : jobs) {
        const std::string plain = std::filesystem::path(job.output).lexically_normal().string();
        const auto [first, fresh] = inputOfOutput.emplace(plain, job.input);
        if (fresh || job.output == kStandardStream) continue;
        job.refusal =
            job.output + ": " + filled("The result of %1 has the same name", {first->second});
    }
}

std::variant<std::vector<Job>, UsageProblem> planJobs(const Options& options) {
    const std::string output = options.output.value_or("");
    const bool toFolder = !output.empty() && output != kStandardStream && isFolder(output);
    const bool named = !output.empty() && !toFolder;
    if (options.pictures.size() > 1 && named && output != kStandardStream) {
        return UsageProblem{output + ": " + marked("several pictures need a folder to write to")};
    }
    const std::variant<std::string, UsageProblem> type =
        outputType(options.format, named && output != kStandardStream ? output : "");
    if (const auto* problem = std::get_if<UsageProblem>(&type)) return *problem;
    std::vector<Job> jobs;
    for (const std::string& picture : options.pictures) {
        Job job{picture, output, std::get<std::string>(type), {}};
        const bool piped = picture == kStandardStream && output.empty();
        if (piped) job.output = kStandardStream;
        if (!named && !piped) job.output = proposedOutput(picture, output, job.type);
        jobs.push_back(std::move(job));
    }
    const bool toTerminal = std::any_of(jobs.begin(), jobs.end(), [](const Job& job) {
        return job.output == kStandardStream && ::isatty(STDOUT_FILENO) == 1;
    });
    if (toTerminal) return UsageProblem{marked("standard output is a terminal; -o names a file")};
    refuseRepeatedOutputs(jobs);
    return jobs;
}

std::string frameName(const std::string& output, int frame, int frames) {
    std::string number = std::to_string(frame);
    const std::size_t digits = std::max(kFrameDigits, std::to_string(frames).size());
    number.insert(0, digits - number.size(), '0');
    const std::size_t dot = extensionStart(output);
    if (dot == std::string::npos) return output + "-" + number;
    return output.substr(0, dot) + "-" + number + output.substr(dot);
}

}  // namespace skarnel::cli
