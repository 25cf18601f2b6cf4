// Which language the user's surroundings ask for.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace skarnel {

/// An environment variable's value; null when it is not set.
using Variables = std::function<const char*(const char* name)>;

/// The wanted languages, the most wanted first, as the C library orders them: LC_ALL, LC_MESSAGES
/// or LANG names the locale, whichever is set first; unless that is "C" or "POSIX", a list in
/// LANGUAGE ("de:fr") goes before it. Empty for English, which is also what a terminal gets whose
/// encoding (of LC_ALL, LC_CTYPE or LANG) is named and is not UTF-8.
std::vector<std::string> wantedLanguages(const Variables& variables);

/// The catalogue of the first of these languages that there is one for: "de", "es", "fr", "ja" or
/// "zh_CN"; empty for English and where there is none. "de_AT.UTF-8", "zh-Hans-SG" and the like are
/// understood; those who write Chinese the traditional way get no simplified one.
std::string catalogueOf(const std::vector<std::string>& languages);

}  // namespace skarnel
