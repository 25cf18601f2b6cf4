// The same picture gives the same file whatever the processor's vectors are.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <tuple>

#include "cli/pictures.h"
#include "cli/process.h"
#include "imaging/kernels/targets.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::TemporaryFolder;

/// Noise over a ramp, with a soft edge of transparency: like a photo, but nothing repeats itself.
CGImage photo(int width, int height) {
    PixelBuffer buffer = *PixelBuffer::zeroed(width, height);
    std::mt19937 random(41);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* pixel = buffer.view().row(y);
        for (int x = 0; x < width; ++x, pixel += 4) {
            const int alpha = std::min(255, 4 * x);
            for (int k = 0; k < 3; ++k)
                pixel[k] = static_cast<std::uint8_t>(
                    (static_cast<int>(random() % 60) + 195 * y / height) * alpha / 255);
            pixel[3] = static_cast<std::uint8_t>(alpha);
        }
    }
    return CGImage(std::move(buffer));
}

const std::vector<std::vector<std::string>>& looks() {
    static const std::vector<std::vector<std::string>> all = {
        {},
        {"--perspective-width", "10", "--perspective-height", "60", "--offset", "5", "--start",
         "10", "--gradient", "7", "--alpha", "200", "--image-perspective", "30"},
        {"--perspective-width", "-15", "--perspective-height", "130", "--offset", "-20",
         "--image-perspective", "80", "--apply-background-color", "--background-color", "#3060C0"},
        {"--perspective-height", "-70", "--alpha", "255", "--gradient", "0", "--image-perspective",
         "25"},
        {"--preview", "90x70", "--perspective-width", "35", "--image-perspective", "60"},
        // Halved to 320 x 200 pixels, whose last column is made of the canvas's last two.
        {"--preview", "320x200"},
        // Stretches by a little, where the last columns want pixels that lie before their own.
        {"--perspective-width", "-1"},
        {"--perspective-width", "-3", "--image-perspective", "30"},
    };
    return all;
}

/// Renders every picture with every look; what lies in the files, one after the other.
std::vector<std::string> renderAll(const std::vector<std::string>& pictures, const char* target) {
    std::vector<std::string> files;
    for (const auto& look : looks()) {
        const TemporaryFolder folder;
        std::filesystem::create_directory(folder / "out");
        std::vector<std::string> arguments = {"-q", "-o", folder / "out"};
        arguments.insert(arguments.end(), look.begin(), look.end());
        arguments.insert(arguments.end(), pictures.begin(), pictures.end());
        const auto finished =
            test::render(arguments, {}, [&] { ::setenv("SKARNEL_SIMD", target, 1); });
        for (const std::string& picture : pictures) {
            const std::string name = std::filesystem::path(picture).stem();
            const std::string file = folder / ("out/" + name + " Reflection.tiff");
            files.push_back(std::filesystem::exists(file) ? test::fileText(file) : finished.err);
        }
    }
    return files;
}

TEST(Targets, GiveTheSameFiles) {
    const TemporaryFolder folder;
    std::vector<std::string> pictures;
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 40}, {40, 1}, {130, 7}, {7, 130}}) {
        pictures.push_back(folder /
                           (std::to_string(width) + "x" + std::to_string(height) + ".png"));
        test::putPicture(pictures.back(), width, height);
    }
    for (const auto& [name, width, height] :
         {std::tuple{"photo", 611, 397}, {"even", 320, 200}, {"wide", 512, 40}}) {
        pictures.push_back(folder / (std::string(name) + ".png"));
        test::putBytes(pictures.back(), *encodeImage(photo(width, height), kUTTypePNG));
    }

    const std::vector<std::string> expected = renderAll(pictures, "scalar");
    // A picture of one row has no reflection at 70 percent; all others have a file.
    for (std::size_t i = 0; i < pictures.size(); ++i)
        EXPECT_EQ(expected[i].substr(0, 2), "II") << pictures[i];
    EXPECT_GT(expected[pictures.size() - 1].size(), 10'000U);
    for (const kernels::Target target : kernels::supportedTargets()) {
        const std::string name = kernels::targetName(target);
        const std::vector<std::string> actual = renderAll(pictures, name.c_str());
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < actual.size(); ++i)
            EXPECT_TRUE(actual[i] == expected[i]) << name << ", look " << i / pictures.size()
                                                  << ", " << pictures[i % pictures.size()];
    }
}

}  // namespace
}  // namespace skarnel
