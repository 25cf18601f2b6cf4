// skarnel-bench: one table of the render's steps, each beside a memcpy in the same run.
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string_view>

#include "bench_case.h"
#include "imaging/kernels/targets.h"
#include "imaging/pixel_memory.h"

namespace {

using skarnel::bench::Case;
using skarnel::bench::Measurement;
using skarnel::bench::Verdict;

constexpr const char* kUsage =
    "skarnel-bench [--json] [--filter TEXT] [--repeat N] [--sizes WxH,WxH...] [--codecs]\n"
    "Milliseconds on one thread: the best processor time and the median wall time of N runs.\n"
    "'x memcpy' is the best against the best memcpy of (source + result) / 2 bytes between\n"
    "touched buffers in the same run, both as processor time, which a busy machine distorts\n"
    "less.\n";

struct Options {
    bool json = false;
    bool codecs = false;
    int repeats = 9;
    std::string filter;
    std::vector<std::string> sizes{"800x600", "4000x3000", "8000x6000"};
};

std::vector<std::string> split(std::string_view text) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t comma = text.find(',');
        parts.emplace_back(text.substr(0, comma));
        text.remove_prefix(comma == text.npos ? text.size() : comma + 1);
    }
    return parts;
}

bool parse(int count, char** arguments, Options& options) {
    for (int i = 1; i < count; ++i) {
        const std::string_view name = arguments[i];
        const char* value = i + 1 < count ? arguments[i + 1] : nullptr;
        if (name == "--json") {
            options.json = true;
        } else if (name == "--codecs") {
            options.codecs = true;
        } else if (value != nullptr && name == "--filter") {
            options.filter = value;
            ++i;
        } else if (value != nullptr && name == "--repeat") {
            options.repeats = std::max(1, std::atoi(value));
            ++i;
        } else if (value != nullptr && name == "--sizes") {
            options.sizes = split(value);
            ++i;
        } else {
            return false;
        }
    }
    return true;
}

void printText(const Measurement& m) {
    if (m.verdict != Verdict::Right) {
        std::printf("%-34s %s\n", m.name.c_str(),
                    m.verdict == Verdict::Wrong ? "WRONG RESULT" : "no result at this size");
        return;
    }
    std::printf("%-34s %9.2f %9.2f %9.2f %8.2f %9.3f\n", m.name.c_str(), m.bestMs, m.medianMs,
                m.memcpyMs, m.ratio(), m.megapixels > 0 ? m.bestMs / m.megapixels : 0.0);
}

nlohmann::json asJson(const Measurement& m) {
    return {{"name", m.name},
            {"correct", m.verdict != Verdict::Wrong},
            {"has_result", m.verdict != Verdict::NoResult},
            {"megapixels", m.megapixels},
            {"best_ms", m.bestMs},
            {"median_ms", m.medianMs},
            {"memcpy_ms", m.memcpyMs},
            {"times_memcpy", m.ratio()}};
}

std::string targetInUse() {
    if (!skarnel::kernels::useVectors()) return "scalar";
    const auto targets = skarnel::kernels::supportedTargets();
    return targets.empty() ? "scalar" : skarnel::kernels::targetName(targets.front());
}

}  // namespace

int main(int count, char** arguments) {
    Options options;
    if (!parse(count, arguments, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    // A program that renders again and again keeps its buffers; so does the benchmark.
    skarnel::setIdlePixelMemoryLimit(std::size_t{6} << 30);
    std::vector<Case> cases = skarnel::bench::renderCases(options.sizes);
    if (options.codecs)
        for (Case& codec : skarnel::bench::codecCases()) cases.push_back(std::move(codec));
    nlohmann::json all = nlohmann::json::array();
    if (!options.json)
        std::printf("kernels: %s\n%-34s %9s %9s %9s %8s %9s\n", targetInUse().c_str(), "case",
                    "cpu ms", "wall ms", "memcpy ms", "x memcpy", "ms/MP");
    bool allCorrect = true;
    for (const Case& tested : cases) {
        if (tested.name.find(options.filter) == std::string::npos) continue;
        const Measurement m = measure(tested, options.repeats);
        allCorrect = allCorrect && m.verdict != Verdict::Wrong;
        if (options.json)
            all.push_back(asJson(m));
        else
            printText(m);
        std::fflush(stdout);
    }
    if (options.json)
        std::printf("%s\n",
                    nlohmann::json{{"kernels", targetInUse()}, {"cases", all}}.dump(2).c_str());
    return allCorrect ? 0 : 1;
}
