#include "util/messages/language.h"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace skarnel {
namespace {

constexpr std::array<std::string_view, 4> kPlainCatalogues{"de", "es", "fr", "ja"};
constexpr std::array<std::string_view, 4> kTraditionalChinese{"hant", "tw", "hk", "mo"};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return lower;
}

std::string_view firstSet(const Variables& variables, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        const char* value = variables(name);
        if (value != nullptr && *value != '\0') return value;
    }
    return "C";
}

bool isPlain(std::string_view locale) {
    return locale == "C" || locale == "POSIX";
}

/// A locale that names no encoding is taken to be of UTF-8, as all new ones are.
bool isUtf8(std::string_view locale) {
    if (isPlain(locale)) return false;
    const std::size_t dot = locale.find('.');
    if (dot == std::string_view::npos) return true;
    const std::string encoding = lowerCase(locale.substr(dot + 1, locale.find('@') - dot - 1));
    return encoding == "utf-8" || encoding == "utf8";
}

std::vector<std::string> split(std::string_view text, std::string_view separators) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (separators.find(c) == std::string_view::npos) {
            parts.back() += c;
        } else {
            parts.emplace_back();
        }
    }
    return parts;
}

/// "en" for English; empty when there is no catalogue.
std::string catalogueOfTag(std::string_view tag) {
    const auto parts = split(lowerCase(tag.substr(0, tag.find_first_of(".@"))), "_-");
    const std::string& language = parts.front();
    if (language == "en" || language == "c" || language == "posix") return "en";
    if (language == "zh") {
        const bool simplified = std::find(parts.begin(), parts.end(), "hans") != parts.end();
        const bool traditional =
            std::find_first_of(parts.begin(), parts.end(), kTraditionalChinese.begin(),
                               kTraditionalChinese.end()) != parts.end();
        return simplified || !traditional ? "zh_CN" : "";
    }
    const bool known = std::find(kPlainCatalogues.begin(), kPlainCatalogues.end(), language) !=
                       kPlainCatalogues.end();
    return known ? language : "";
}

}  // namespace

std::vector<std::string> wantedLanguages(const Variables& variables) {
    const std::string_view locale = firstSet(variables, {"LC_ALL", "LC_MESSAGES", "LANG"});
    if (isPlain(locale) || !isUtf8(firstSet(variables, {"LC_ALL", "LC_CTYPE", "LANG"}))) return {};
    std::vector<std::string> languages;
    if (const char* list = variables("LANGUAGE"); list != nullptr) languages = split(list, ":");
    std::erase(languages, "");
    languages.emplace_back(locale);
    return languages;
}

std::string catalogueOf(const std::vector<std::string>& languages) {
    for (const std::string& tag : languages) {
        const std::string catalogue = catalogueOfTag(tag);
        if (!catalogue.empty()) return catalogue == "en" ? "" : catalogue;
    }
    return {};
}

}  // namespace skarnel
