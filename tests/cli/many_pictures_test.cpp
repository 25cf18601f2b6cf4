// A hundred pictures at once.
#include <gmock/gmock.h>

#include <sstream>

#include "cli/pictures.h"
#include "cli/process.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::Finished;
using test::TemporaryFolder;
using testing::HasSubstr;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST(ManyPictures, AreAllRenderedAndReportedInOrder) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "out");
    std::vector<std::string> arguments = {"--json", "-j", "4", "-o", folder / "out"};
    constexpr int kPictures = 100;
    for (int i = 0; i < kPictures; ++i) {
        const std::string name = folder / ("p" + std::to_string(i) + ".png");
        if (i % 10 == 3) {
            test::putFile(name, "damaged");
        } else {
            test::putPicture(name, 20 + i % 7, 10 + i);
        }
        arguments.push_back(name);
    }
    const Finished finished = test::render(arguments);
    EXPECT_EQ(finished.exitCode, 1);
    const std::vector<std::string> lines = linesOf(finished.out);
    ASSERT_EQ(lines.size(), std::size_t{kPictures});
    for (int i = 0; i < kPictures; ++i) {
        const std::string& line = lines[static_cast<std::size_t>(i)];
        EXPECT_THAT(line, HasSubstr("/p" + std::to_string(i) + ".png\","));
        const std::string expected = i % 10 == 3 ? "\"output\":null" : "\"error\":null";
        EXPECT_THAT(line, HasSubstr(expected));
    }
    std::size_t results = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder / "out")) {
        ++results;
    }
    EXPECT_EQ(results, 90U);
}

TEST(ManyPictures, GiveTheSameBytesWithAnyNumberOfWorkers) {
    const TemporaryFolder folder;
    std::vector<std::string> names;
    for (int i = 0; i < 6; ++i) {
        names.push_back(folder / ("p" + std::to_string(i) + ".png"));
        test::putPicture(names.back(), 50, 40);
    }
    for (const char* workers : {"1", "5"}) {
        std::filesystem::create_directory(folder / workers);
        std::vector<std::string> arguments = {"-q", "-j", workers, "-o", folder / workers};
        arguments.insert(arguments.end(), names.begin(), names.end());
        ASSERT_EQ(test::render(arguments).exitCode, 0);
    }
    for (int i = 0; i < 6; ++i) {
        const std::string name = "/p" + std::to_string(i) + " Reflection.tiff";
        EXPECT_EQ(test::fileText(folder / "1" + name), test::fileText(folder / "5" + name));
    }
}

}  // namespace
}  // namespace skarnel
