// Whole command lines, one argument a line: options, or an end with a sentence.
#include <string>
#include <vector>

#include "cli/options.h"
#include "input.h"

using namespace skarnel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::string_view text = fuzz::Input(bytes, size).text();
    std::vector<std::string> arguments;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        // The system ends an argument at its first zero.
        arguments.emplace_back(std::string(text.substr(0, end)).c_str());
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    const cli::ParsedCommandLine parsed = cli::parseCommandLine(arguments);
    if (const auto* early = std::get_if<cli::EarlyEnd>(&parsed))
        fuzz::demand(!early->text.empty() && (early->exitCode == 0 || early->exitCode == 2));
    return 0;
}
