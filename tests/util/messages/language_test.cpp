// Which language an environment asks for.
#include "util/messages/language.h"

namespace skarnel {
namespace {

using Environment = std::map<std::string, std::string>;

std::string catalogueIn(const Environment& environment) {
    return catalogueOf(wantedLanguages([&](const char* name) {
        const auto found = environment.find(name);
        return found == environment.end() ? nullptr : found->second.c_str();
    }));
}

TEST(MessageLanguage, TheEnvironmentIsReadInTheUsualOrder) {
    const struct {
        const char* name;
        Environment environment;
        const char* catalogue;
    } rows[] = {
        {"nothing set", {}, ""},
        {"LANG", {{"LANG", "de_DE.UTF-8"}}, "de"},
        {"an unset variable's empty twin", {{"LC_ALL", ""}, {"LANG", "de_DE.UTF-8"}}, "de"},
        {"LC_MESSAGES before LANG", {{"LC_MESSAGES", "fr_FR.utf8"}, {"LANG", "de_DE.UTF-8"}}, "fr"},
        {"LC_ALL before all", {{"LC_ALL", "es_ES.UTF-8"}, {"LC_MESSAGES", "fr_FR.UTF-8"}}, "es"},
        {"LANGUAGE before the locale", {{"LANGUAGE", "ja"}, {"LC_ALL", "es_ES.UTF-8"}}, "ja"},
        {"LANGUAGE as a list", {{"LANGUAGE", "nb:fr:de"}, {"LANG", "de_DE.UTF-8"}}, "fr"},
        {"the locale after the list", {{"LANGUAGE", "nb"}, {"LANG", "de_DE.UTF-8"}}, "de"},
        {"LANGUAGE without a locale", {{"LANGUAGE", "de"}}, ""},
        {"LANGUAGE in the C locale", {{"LANGUAGE", "de"}, {"LC_ALL", "C"}}, ""},
        {"LANGUAGE in the POSIX locale", {{"LANGUAGE", "de"}, {"LANG", "POSIX"}}, ""},
        {"LANGUAGE in C.UTF-8", {{"LANGUAGE", "de"}, {"LC_ALL", "C.UTF-8"}}, "de"},
        {"C.UTF-8", {{"LANG", "C.UTF-8"}}, ""},
        {"English first", {{"LANGUAGE", "en_GB:de"}, {"LANG", "de_DE.UTF-8"}}, ""},
        {"a language without a catalogue", {{"LANG", "nb_NO.UTF-8"}}, ""},
        {"no encoding named", {{"LANG", "de_AT"}}, "de"},
        {"another encoding", {{"LANG", "de_DE.ISO-8859-15@euro"}}, ""},
        {"another encoding for characters alone",
         {{"LANG", "de_DE.UTF-8"}, {"LC_CTYPE", "de_DE.ISO-8859-1"}},
         ""},
        {"characters of the C locale", {{"LANG", "de_DE.UTF-8"}, {"LC_CTYPE", "C"}}, ""},
        {"an encoding with a modifier", {{"LANG", "de_DE.UTF-8@euro"}}, "de"},
        {"English by another of its names", {{"LANGUAGE", "C:de"}, {"LANG", "de_DE.UTF-8"}}, ""},
        {"and by its third", {{"LANGUAGE", "posix:de"}, {"LANG", "de_DE.UTF-8"}}, ""},
        {"a path in place of a language", {{"LANG", "../../de.UTF-8"}}, ""},
    };
    for (const auto& row : rows) EXPECT_EQ(catalogueIn(row.environment), row.catalogue) << row.name;
}

TEST(MessageLanguage, ChineseIsSimplifiedUnlessItSaysOtherwise) {
    const struct {
        const char* tag;
        const char* catalogue;
    } rows[] = {
        {"zh", "zh_CN"}, {"zh_CN.UTF-8", "zh_CN"}, {"zh-Hans-SG", "zh_CN"}, {"zh_Hans_TW", "zh_CN"},
        {"zh_TW", ""},   {"zh-Hant-CN", ""},       {"zh_HK.UTF-8", ""}};
    for (const auto& row : rows) EXPECT_EQ(catalogueOf({row.tag}), row.catalogue) << row.tag;
    EXPECT_EQ(catalogueOf({"zh_TW", "ja"}), "ja");
}

}  // namespace
}  // namespace skarnel
