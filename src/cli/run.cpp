#include "cli/run.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <type_traits>
#include <variant>

#include "cli/interrupt.h"
#include "cli/job.h"
#include "cli/memory_need.h"
#include "cli/options.h"
#include "cli/plan.h"
#include "cli/pool.h"
#include "cli/recipe_settings.h"
#include "cli/report.h"
#include "cli/sweep.h"
#include "cli/text_source.h"
#include "cli/watch.h"
#include "recipe/recipe_file.h"
#include "storage/settings_store.h"
#include "util/log/message.h"
#include "util/log/system_log.h"
#include "util/messages/translator.h"

namespace skarnel::cli {
namespace {

constexpr int kAllWell = 0;
constexpr int kSomeFailed = 1;
constexpr int kWrongUsage = 2;
constexpr int kFrameMilliseconds = 40;

/// What the options start from.
Result<RecipeSettings> baseSettings(const Options& options) {
    if (options.recipe) return settingsFromRecipe(*options.recipe);
    if (options.userSettings) {
        return RecipeSettings{storedSettings(SettingsStore(SettingsStore::defaultPath())), {}};
    }
    return RecipeSettings{defaultSettings(), {}};
}

/// The recipe's text is the picture of a run that names none.
Options withTextOfRecipe(Options options, const RecipeSettings& base) {
    const bool named = !options.pictures.empty() || options.text.isAsked() || options.watch;
    if (named || !base.text) return options;
    options.text.styled = base.text;
    options.pictures = {std::string(kTextInput)};
    return options;
}

JobSettings jobSettings(const Options& options, const RenderSettings& base) {
    JobSettings settings;
    settings.render = withOverrides(base, options.settings);
    settings.format = options.format;
    settings.preview = options.preview;
    settings.limits = options.limits;
    settings.overwrite = options.force ? Overwrite::Allow : Overwrite::Refuse;
    return settings;
}

/// One run with everything that its parts share.
class Run {
  public:
    Run(const Options& options, const RenderSettings& base, const Translator& words)
        : options_(options),
          settings_(jobSettings(options, base)),
          console_(Console::styleFor(options), words) {
        // The log is for those who look closer; what concerns a picture is in its report.
        setSystemLogSink([this](std::string_view line) {
            if (options_.verbosity == Verbosity::Verbose) console_.message(line);
        });
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() { setSystemLogSink({}); }

    int pictures() {
        auto planned = planJobs(options_);
        if (const auto* problem = std::get_if<UsageProblem>(&planned)) return usage(*problem);
        auto& jobs = std::get<std::vector<Job>>(planned);
        if (const auto problem = problemOfType(options_, jobs.front().type)) return usage(*problem);
        if (!drawText(jobs.front()) || !writeRecipe(jobs.front().input)) return kSomeFailed;
        runAll(jobs, reporter(), [&](std::size_t done) {
            console_.progress(done, jobs.size(), done < jobs.size() ? jobs[done].input : "");
        });
        return ending();
    }

    int watch() {
        const std::string folder = *options_.watch;
        const std::string into = options_.output.value_or(folder);
        std::error_code failed;
        if (options_.output && !std::filesystem::is_directory(into, failed))
            return usage({into + ": " + marked("a watched folder needs a folder to write to")});
        const auto type = outputType(options_.format, "");
        if (const auto* problem = std::get_if<UsageProblem>(&type)) return usage(*problem);
        const std::string& format = std::get<std::string>(type);
        if (const auto problem = problemOfType(options_, format)) return usage(*problem);
        if (!writeRecipe(folder)) return kSomeFailed;
        const auto render = [&](const std::vector<std::string>& paths, const Written& written) {
            std::vector<Job> jobs;
            for (const std::string& path : paths) {
                jobs.push_back({path, proposedOutput(path, into, format), format, {}});
            }
            refuseRepeatedOutputs(jobs);
            const auto report = [&](const JobReport& each) {
                if (each.output) written(*each.output);
                reporter()(each);
            };
            runAll(jobs, report, [](std::size_t) {});
        };
        const Result<void> ended = watchFolder(folder, render);
        console_.problem(folder + ": " + ended.error().message);
        return kSomeFailed;
    }

    int sweep() {
        // The frames' common name is what a single result would be called.
        Options named = options_;
        if (options_.animate) named.output = options_.animate;
        const auto planned = planJobs(named);
        if (const auto* problem = std::get_if<UsageProblem>(&planned)) return usage(*problem);
        const Job& first = std::get<std::vector<Job>>(planned).front();
        if (options_.animate && !canBeAnimated(first.type)) {
            return usage({*options_.animate + ": " + marked("Only PNG and WebP can be animated")});
        }
        if (const auto problem = problemOfType(options_, first.type)) return usage(*problem);
        SweepRequest request{std::get<std::vector<Job>>(planned).front(), settings_,
                             *options_.sweep, share(),
                             options_.frameMilliseconds.value_or(kFrameMilliseconds)};
        if (!drawText(request.job)) return kSomeFailed;
        if (request.job.output == kStandardStream) {
            request.job.output = proposedOutput(request.job.input, "", request.job.type);
        }
        const auto frames = static_cast<std::size_t>(request.sweep.count);
        const auto progress = [&](std::size_t done) {
            console_.progress(done, frames, request.job.input);
        };
        if (options_.animate) {
            runAnimation(request, reporter(), progress);
        } else {
            runSweep(request, reporter(), progress);
        }
        return ending();
    }

  private:
    /// On all workers; a report for each in the jobs' order.
    void runAll(const std::vector<Job>& jobs, const std::function<void(const JobReport&)>& report,
                const std::function<void(std::size_t)>& progress) {
        const auto run = [&](std::size_t index) { return runJob(jobs[index], settings_); };
        const auto lost = [&](std::size_t index, const std::string& cause) {
            JobReport lostReport;
            lostReport.input = jobs[index].input;
            lostReport.error = cause;
            return lostReport;
        };
        const auto memory = [&](std::size_t index) { return memoryOfJob(jobs[index], settings_); };
        runPool(jobs.size(), share(), {run, report, progress, memory}, lost);
    }

    /// Text is drawn here, on the main thread and before any work begins.
    bool drawText(Job& job) {
        if (!options_.text.isAsked()) return true;
        Result<TextPicture> drawn = pictureOfText(options_.text, settings_.render.backgroundColor);
        if (!drawn) return fail(job.input, drawn.error().message);
        job.picture = std::move(drawn->picture);
        text_ = std::move(drawn->text);
        return true;
    }

    /// What all results carry inside, where that is asked for.
    bool writeRecipe(const std::string& input) {
        if (!options_.embedRecipe) return true;
        Result<std::string> recipe = recipeOfSettings(settings_.render, text_);
        if (!recipe) return fail(input, recipe.error().message);
        settings_.recipe = *std::move(recipe);
        return true;
    }

    /// Always false.
    bool fail(const std::string& input, const std::string& cause) {
        JobReport report;
        report.input = input;
        report.error = cause;
        reporter()(report);
        return false;
    }

    std::function<void(const JobReport&)> reporter() {
        return [this](const JobReport& report) {
            failed_ = failed_ || report.error.has_value();
            console_.report(report);
        };
    }

    PoolShare share() const {
        const MachineShare machine = machineShare();
        PoolShare share;
        share.workers = options_.jobs.value_or(workersFor(machine));
        share.memoryBytes = options_.memoryBytes.value_or(memoryFor(machine));
        return share;
    }

    int usage(const UsageProblem& problem) {
        console_.problem(problem.message);
        return kWrongUsage;
    }

    int ending() {
        console_.wipeProgress();
        return failed_ || console_.outputFailed() ? kSomeFailed : kAllWell;
    }

    const Options& options_;
    JobSettings settings_;
    std::optional<StyledText> text_;  // what the one picture was made of
    Console console_;
    bool failed_ = false;
};

int run(const EarlyEnd& end, const Translator&) {
    const bool wanted = end.exitCode == kAllWell;
    std::FILE* stream = wanted ? stdout : stderr;
    const std::string text = wanted ? end.text : forStream(STDERR_FILENO, end.text, LineEnds::Kept);
    const bool printed = std::fputs(text.c_str(), stream) >= 0 && std::fflush(stream) == 0;
    return printed ? end.exitCode : kSomeFailed;
}

int run(const VersionRequest& request, const Translator& words) {
    return run(EarlyEnd{(request.json ? jsonOfVersion() : textOfVersion()) + "\n", kAllWell},
               words);
}

/// `message` is in English.
int complain(const std::string& message, const Translator& words, int code) {
    const std::string shown = forStream(STDERR_FILENO, words.cause(message));
    std::fprintf(stderr, "skarnel-render: %s\n", shown.c_str());
    return code;
}

int run(const Options& given, const Translator& words) {
    const Result<RecipeSettings> base = baseSettings(given);
    if (!base) return complain(base.error().message, words, kSomeFailed);
    const Options options = withTextOfRecipe(given, *base);
    if (options.pictures.empty() && !options.text.isAsked() && !options.watch) {
        return complain(marked("no picture was given, and the recipe has no text"), words,
                        kWrongUsage);
    }
    Run whole(options, base->render, words);
    if (options.watch) return whole.watch();
    if (options.sweep) return whole.sweep();
    return whole.pictures();
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments) {
    installInterruptHandlers();
    const Translator words = Translator::ofEnvironment();
    return std::visit([&](const auto& parsed) { return run(parsed, words); },
                      parseCommandLine(arguments, words));
}

}  // namespace skarnel::cli
