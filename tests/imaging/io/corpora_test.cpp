// Public test pictures, good and bad, where somebody has put them beside the sources.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "imaging/io/image_io.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;
using skarnel::testing::wholeProperty;

fs::path corpora() {
    const char* given = std::getenv("SKARNEL_CORPORA");
    return given != nullptr ? given : SKARNEL_CORPORA;
}

struct Row {
    std::string file;
    std::string expect;
    std::string size;
};

std::vector<Row> readManifest(const fs::path& path) {
    std::vector<Row> rows;
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);  // the column names
    while (std::getline(in, line)) {
        std::vector<std::string> columns;
        std::istringstream cells(line);
        for (std::string cell; std::getline(cells, cell, '\t');) columns.push_back(cell);
        if (columns.size() >= 6) rows.push_back({columns[0], columns[4], columns[5]});
    }
    return rows;
}

TEST(Corpora, EveryFileBehavesAsItsTableExpects) {
    const fs::path manifest = corpora() / "MANIFEST.tsv";
    if (!fs::exists(manifest)) {
        GTEST_SKIP() << "no test pictures at " << corpora()
                     << "; set SKARNEL_CORPORA to a directory that has them";
    }
    const auto rows = readManifest(manifest);
    EXPECT_FALSE(rows.empty());
    for (const Row& row : rows) {
        const auto decoded = decodeImageFile(corpora() / row.file);
        const std::string reason = decoded ? std::string() : decoded.error().message;
        if (row.expect == "must_open") {
            EXPECT_TRUE(decoded) << row.file << ": " << reason;
        }
        if (row.expect == "must_refuse") {
            EXPECT_FALSE(decoded) << row.file;
        }
        if (!decoded) {
            EXPECT_FALSE(reason.empty()) << row.file;
            continue;
        }
        if (row.size.empty()) continue;
        const std::string size =
            std::to_string(wholeProperty(decoded->properties, kPropertyPixelWidth)) + "x" +
            std::to_string(wholeProperty(decoded->properties, kPropertyPixelHeight));
        EXPECT_EQ(size, row.size) << row.file;
    }
}

}  // namespace
}  // namespace skarnel
