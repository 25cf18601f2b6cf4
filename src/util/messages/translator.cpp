#include "util/messages/translator.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "util/messages/language.h"

namespace skarnel {

namespace fs = std::filesystem;

std::vector<std::string> catalogueFiles(std::string_view language) {
    if (language.empty() || language.find_first_of("./") != std::string_view::npos) return {};
    const std::string name = std::string(language) + "/LC_MESSAGES/skarnel.mo";
    std::vector<std::string> files;
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (!error) files.push_back(program.parent_path().parent_path() / "share" / "locale" / name);
    files.push_back(fs::path(SKARNEL_INSTALLED_LOCALES) / name);
    return files;
}

Translator Translator::ofEnvironment() {
    return Translator(
        catalogueOf(wantedLanguages([](const char* name) { return std::getenv(name); })));
}

const Catalogue* Translator::catalogue() const {
    if (std::exchange(looked_, true)) return catalogue_.get();
    for (const std::string& path : catalogueFiles(language_)) {
        std::ifstream file(path, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), {});
        auto read = Catalogue::parse(bytes);
        if (!read) continue;
        catalogue_ = std::make_unique<const Catalogue>(*std::move(read));
        break;
    }
    return catalogue_.get();
}

std::string Translator::help(std::string_view phrase) const {
    const Catalogue* spoken = catalogue();
    const std::string* found = spoken != nullptr ? spoken->find(phrase, Catalogue::kHelp) : nullptr;
    return found != nullptr ? *found : std::string(phrase);
}

std::string Translator::cause(std::string_view message) const {
    const Catalogue* spoken = catalogue();
    return spoken != nullptr ? spoken->translated(message) : std::string(message);
}

}  // namespace skarnel
