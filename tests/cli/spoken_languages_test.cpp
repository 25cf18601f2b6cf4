// What the program says in the user's language, and what it never does.
#include <gmock/gmock.h>

#include <cstdlib>
#include <sstream>

#include "cli/pictures.h"
#include "cli/process.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::Finished;
using test::TemporaryFolder;
using testing::HasSubstr;

/// With the locale that a bare system has, and a language: no locale of its own is needed.
Finished renderIn(const char* language, const std::vector<std::string>& arguments,
                  const std::string& input = {}) {
    return test::render(arguments, input, [&] {
        ::setenv("LC_ALL", "C.UTF-8", 1);
        ::setenv("LANGUAGE", language, 1);
    });
}

std::string name(const std::string& line) {
    return "skarnel-render: " + line + "\n";
}

constexpr const char* kLanguages[] = {"de", "es", "fr", "ja", "zh_CN"};

class SpokenLanguages : public testing::Test {
  protected:
    SpokenLanguages() { test::putPicture(folder_ / "in.png", 4, 3); }
    const TemporaryFolder folder_;
    const std::string in_ = folder_ / "in.png";
};

TEST_F(SpokenLanguages, APictureThatIsNotThere) {
    const struct {
        const char* language;
        const char* cause;
    } rows[] = {
        {"en", "No such file or directory"},
        {"de", "Datei oder Ordner nicht gefunden"},
        {"es", "No existe el archivo o la carpeta"},
        {"fr", "Aucun fichier ou dossier de ce nom"},
        {"ja", "そのようなファイルやフォルダーはありません"},
        {"zh_CN", "没有该文件或文件夹"},
    };
    for (const auto& row : rows) {
        const Finished finished = renderIn(row.language, {"/none.png"});
        EXPECT_EQ(finished.exitCode, 1);
        EXPECT_EQ(finished.err, name("/none.png: " + std::string(row.cause)));
    }
}

TEST_F(SpokenLanguages, EveryKindOfMessage) {
    test::putFile(folder_ / "bad.png", "GIF89a");
    const std::string out = folder_ / "in Reflection.tiff";
    test::putFile(out, "x");
    const struct {
        const char* what;
        std::vector<std::string> arguments;
        std::string said;
    } rows[] = {
        {"a wrong value", {"--size", "x", in_}, "--size: „x“ ist keine Zahl von 1 bis 10000"},
        {"one of the option library",
         {"--nonsense"},
         "Dieses Argument wurde nicht erwartet: --nonsense"},
        {"options that contradict", {"--animate", "a.png", in_}, "--animate braucht --sweep"},
        {"a plan that fails",
         {in_, in_, "-o", "a.png"},
         "a.png: Mehrere Bilder brauchen einen Ordner, in den geschrieben wird"},
        {"a file that is there",
         {in_},
         in_ + ": " + out + ": Die Datei gibt es bereits (--force ersetzt sie)"},
        {"a cause of the decoder",
         {folder_ / "bad.png"},
         folder_ / "bad.png" + ": Das GIF-Bild ist beschädigt"},
        {"a folder", {folder_.path()}, folder_.path() + ": Es ist ein Ordner"},
        {"a limit",
         {in_, "--max-pixels", "5", "-f"},
         in_ + ": Das Bild hat nach eigener Angabe 4 × 3 Pixel, mehr als die erlaubten 5"},
        {"standard input",
         {"-", "-o", folder_ / "o.png"},
         "Standardeingabe: Von der Standardeingabe kam nichts"},
        {"a recipe", {in_, "--recipe", in_}, in_ + ": Die Datei enthält kein Rezept"},
        {"a watched folder",
         {"--watch", folder_ / "none"},
         folder_ / "none" + ": Datei oder Ordner nicht gefunden"},
    };
    for (const auto& row : rows) {
        const Finished finished = renderIn("de", row.arguments);
        EXPECT_NE(finished.exitCode, 0) << row.what;
        EXPECT_THAT(finished.err, testing::StartsWith(name(row.said))) << row.what;
    }
}

TEST_F(SpokenLanguages, TheOptionLibrarysOwnSentences) {
    const struct {
        std::vector<std::string> arguments;
        const char* said;
    } rows[] = {
        {{"--no-such"}, "Cet argument n’était pas attendu\u00a0: --no-such"},
        {{"--no-such", "--nor-this"}, "Ces arguments n’étaient pas attendus\u00a0: "},
        {{"--output"}, "--output: 1 argument requis (TEXT) manque"},
        {{"--format", "png", "--format", "tiff"},
         "--format: Au plus 1 valeur est permise, 2 ont été"},
        {{"--json=abc"}, "Conversion impossible\u00a0: --json = abc"},
    };
    for (const auto& row : rows)
        EXPECT_THAT(
            renderIn("fr", row.arguments).err,
            testing::AllOf(testing::StartsWith("skarnel-render: " + std::string(row.said)),
                           testing::EndsWith("\nEssayez «\u00a0skarnel-render --help\u00a0».\n")));
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream all(text);
    for (std::string line; std::getline(all, line);) lines.push_back(line);
    return lines;
}

TEST_F(SpokenLanguages, NoLineOfTheHelpStaysEnglish) {
    const std::vector<std::string> english = linesOf(renderIn("en", {"--help"}).out);
    ASSERT_GT(english.size(), 50U);
    for (const char* language : kLanguages) {
        const Finished help = renderIn(language, {"--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_EQ(help.err, "");
        const std::vector<std::string> lines = linesOf(help.out);
        ASSERT_EQ(lines.size(), english.size()) << language;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            // "Text" is the same word in German; "General" in Spanish.
            const bool sameWord =
                english[i].empty() || english[i] == "Text:" || english[i] == "General:";
            EXPECT_TRUE(sameWord || lines[i] != english[i]) << language << ": " << lines[i];
            // The options stand where they stood.
            const std::size_t option = english[i].find("--");
            if (option > 6) continue;
            EXPECT_EQ(lines[i].substr(0, 38), english[i].substr(0, 38)) << language;
        }
    }
}

TEST_F(SpokenLanguages, WhatProgramsReadStaysAsItIs) {
    const auto plain = renderIn("en", {in_, "/none.png", "--json", "-f"});
    const auto spoken = renderIn("ja", {in_, "/none.png", "--json", "-f"});
    EXPECT_EQ(spoken.exitCode, plain.exitCode);
    const std::vector<std::string> lines = linesOf(spoken.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[1], HasSubstr("\"error\":\"No such file or directory\""));
    EXPECT_THAT(lines[0], HasSubstr("\"error\":null"));
    EXPECT_EQ(renderIn("ja", {"--version", "--json"}).out,
              renderIn("en", {"--version", "--json"}).out);
}

TEST_F(SpokenLanguages, NumbersKeepTheirPoint) {
    const Finished finished = renderIn("de", {in_, "--offset", "2.5", "-o", folder_ / "out.png"});
    EXPECT_EQ(finished.exitCode, 0) << finished.err;
    EXPECT_EQ(finished.out, folder_ / "out.png\n");
    EXPECT_EQ(renderIn("de", {in_, "--offset", "2,5"}).exitCode, 2);
}

TEST_F(SpokenLanguages, ANameThatIsAPhraseStaysAName) {
    const std::string path = folder_ / "It is a folder: Permission denied";
    EXPECT_EQ(renderIn("de", {path}).err, name(path + ": Datei oder Ordner nicht gefunden"));
    EXPECT_THAT(renderIn("de", {"--size", "Text", in_}).err, HasSubstr("„Text“ ist keine Zahl"));
}

TEST_F(SpokenLanguages, TheCLocaleIsEnglish) {
    const Finished finished = test::render({"/none.png"}, {}, [] {
        ::setenv("LC_ALL", "C", 1);
        ::setenv("LANGUAGE", "de", 1);
    });
    EXPECT_EQ(finished.err, name("/none.png: No such file or directory"));
}

}  // namespace
}  // namespace skarnel
