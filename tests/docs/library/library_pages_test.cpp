// Holds the library's pages to what is compiled and drawn: their examples, pictures and links.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "imaging/io/image_io.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;
const fs::path kPages = SKARNEL_LIBRARY_PAGES;

std::string contentOf(const fs::path& path) {
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

/// Layout and comments aside: comments end at the line's end and are dropped.
std::string bare(const std::string& code) {
    std::string text = std::regex_replace(code, std::regex("//[^\n]*"), "");
    std::erase_if(text, [](unsigned char c) { return std::isspace(c) != 0; });
    return text;
}

std::vector<fs::path> pages() {
    std::vector<fs::path> all;
    for (const auto& entry : fs::directory_iterator(kPages))
        if (entry.path().extension() == ".md") all.push_back(entry.path());
    std::sort(all.begin(), all.end());
    return all;
}

std::vector<std::string> matchesIn(const std::string& text, const std::string& pattern) {
    std::vector<std::string> found;
    const std::regex expression(pattern);
    for (std::sregex_iterator at(text.begin(), text.end(), expression), end; at != end; ++at)
        found.push_back((*at)[1]);
    return found;
}

TEST(LibraryPages, EveryExampleIsCompiled) {
    const std::string examples = bare(contentOf(kPages / "examples" / "examples_test.cpp"));
    int count = 0;
    for (const fs::path& page : pages())
        for (const std::string& block : matchesIn(contentOf(page), "```cpp\n([^`]*)```")) {
            EXPECT_NE(examples.find(bare(block)), std::string::npos) << page << "\n" << block;
            ++count;
        }
    EXPECT_GE(count, 20);
}

TEST(LibraryPages, EveryLinkAndPictureIsThere) {
    for (const fs::path& page : pages())
        for (const std::string& link : matchesIn(contentOf(page), "\\]\\(([^)]*)\\)"))
            EXPECT_TRUE(fs::exists(kPages / link)) << page << ' ' << link;
}

TEST(LibraryPages, EveryPageIsReachedFromTheFirst) {
    const std::string index = contentOf(kPages / "index.md");
    for (const fs::path& page : pages())
        if (page.filename() != "index.md") {
            EXPECT_NE(index.find("(" + page.filename().string() + ")"), std::string::npos) << page;
        }
}

TEST(LibraryPages, EveryHeaderThatIsNamedIsThere) {
    for (const fs::path& page : pages())
        for (const std::string& header : matchesIn(contentOf(page), "#include \"([^\"]*)\""))
            EXPECT_TRUE(fs::exists(kPages / "../../src" / header)) << page << ' ' << header;
}

/// The mean difference of two pictures' samples; 255 for pictures of different sizes.
double meanDifference(PixelView a, PixelView b) {
    if (a.width != b.width || a.height != b.height) return 255;
    double sum = 0;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < 4 * a.width; ++x) sum += std::abs(a.row(y)[x] - b.row(y)[x]);
    return sum / (4.0 * a.width * a.height);
}

TEST(LibraryPages, ThePicturesAreWhatTheLibraryDraws) {
    std::string folder = (fs::temp_directory_path() / "skarnel-pictures-XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    ASSERT_EQ(std::system((std::string(SKARNEL_DRAW_PICTURES) + " " + folder).c_str()), 0);
    int count = 0;
    for (const auto& entry : fs::directory_iterator(kPages / "pictures")) {
        const auto kept = decodeImageFile(entry.path().string());
        const auto drawn = decodeImageFile((folder / entry.path().filename()).string());
        ASSERT_TRUE(kept && drawn) << entry.path();
        // Not byte for byte: a better resampling must not make the pages stale.
        EXPECT_LT(meanDifference(kept->image.pixels(), drawn->image.pixels()), 0.5)
            << entry.path() << ": draw them anew with draw_library_pictures";
        ++count;
    }
    EXPECT_EQ(count, 5);
    fs::remove_all(folder);
}

}  // namespace
}  // namespace skarnel
