// The catalogues of the build, found beside the program as in an installation.
#include "util/messages/translator.h"

namespace skarnel {
namespace {

TEST(Translator, EveryLanguageSpeaks) {
    const struct {
        const char* language;
        const char* cause;
        const char* help;
    } rows[] = {
        {"", "a.png: Permission denied", "Files"},
        {"de", "a.png: Die Berechtigung fehlt", "Dateien"},
        {"es", "a.png: Permiso denegado", "Archivos"},
        {"fr", "a.png: Permission refusée", "Fichiers"},
        {"ja", "a.png: アクセス権がありません", "ファイル"},
        {"zh_CN", "a.png: 权限不足", "文件"},
    };
    for (const auto& row : rows) {
        const Translator words{std::string(row.language)};
        EXPECT_EQ(words.cause("a.png: Permission denied"), row.cause);
        EXPECT_EQ(words.help("Files"), row.help);
        EXPECT_EQ(words.hasCatalogue(), *row.language != '\0');
    }
}

TEST(Translator, ALanguageWithoutACatalogueIsEnglish) {
    for (const char* language : {"nb", "..", "/etc", "de/../de", "de.UTF-8"}) {
        const Translator words{std::string(language)};
        EXPECT_FALSE(words.hasCatalogue()) << language;
        EXPECT_EQ(words.cause("Permission denied"), "Permission denied");
        EXPECT_EQ(words.help("Files"), "Files");
    }
}

TEST(Translator, LooksBesideTheProgramFirst) {
    const auto files = catalogueFiles("de");
    ASSERT_EQ(files.size(), 2U);
    EXPECT_TRUE(files[0].ends_with("/share/locale/de/LC_MESSAGES/skarnel.mo")) << files[0];
    EXPECT_TRUE(std::filesystem::exists(files[0])) << files[0];
    EXPECT_TRUE(files[1].ends_with("/locale/de/LC_MESSAGES/skarnel.mo")) << files[1];
}

}  // namespace
}  // namespace skarnel
