// Opening, rendering and saving again and again keeps neither memory nor descriptors.
#include <cstdio>

#include "controller_fixture.h"
#include "memory/process_size.h"

namespace skarnel::testing_app {
namespace {

using skarnel::testing::kMemoryIsMeasurable;
using skarnel::testing::openDescriptors;
using skarnel::testing::residentBytes;

class Rounds : public ControllerTest {
  protected:
    Rounds() {
        storeDefaults();
        window.resultView.visible = {0, 0, 80, 60};
        for (const std::string_view type : {kUTTypePNG, kUTTypeJPEG, kUTTypeTIFF}) {
            const std::string path = folder / std::string(type);
            const Result<Bytes> bytes = encodeImage(testPicture(160, 120), type);
            test::putFile(path, {bytes->begin(), bytes->end()});
            photos.push_back(path);
        }
    }

    /// Every width, turn, photo and format comes round again after so many rounds.
    static constexpr int kPeriod = 60;

    /// One person's round: open, move a slider, copy, save in another format.
    void round(int number) {
        const auto index = static_cast<std::size_t>(number);
        controller.imagePathChanged(photos[index % photos.size()]);
        toolkit.defaults.values["perspectiveWidth"] = static_cast<float>(number % 30);
        window.imagePerspectiveSlider.value = static_cast<float>(number % kPeriod);
        controller.sliderChanged(nullptr);
        controller.putImageOnClipboard(nullptr);
        controller.save(nullptr);
        static constexpr std::string_view kFormats[] = {kUTTypeTIFF, kUTTypeJPEG, kUTTypePNG};
        toolkit.lastSaveOptions->type = kFormats[index % std::size(kFormats)];
        toolkit.lastSavePanel->chosenPath = folder / "out";
        toolkit.lastSavePanel->end(NSOKButton);
        log.take();
    }

    test::TemporaryFolder folder;
    std::vector<std::string> photos;
};

// Two periods warm every pool, the measuring included; from then on whole periods are compared.
TEST_F(Rounds, LeaveNothingBehind) {
    const int rounds = (test::isLongRun() ? 17 : 3) * kPeriod;  // over a thousand in the long run
    int number = 0;
    while (number < kPeriod) round(number++);
    residentBytes();
    while (number < 2 * kPeriod) round(number++);
    const std::size_t before = residentBytes();
    const std::ptrdiff_t descriptors = openDescriptors();
    while (number < 2 * kPeriod + rounds) round(number++);
    const std::size_t after = residentBytes();

    EXPECT_EQ(openDescriptors(), descriptors);
    std::printf("%zu bytes before, %zu after %d rounds\n", before, after, rounds);
    if (kMemoryIsMeasurable) {
        EXPECT_LT(static_cast<double>(after), static_cast<double>(before) * 1.01)
            << before << " bytes before, " << after << " after " << rounds << " rounds";
    }
    EXPECT_THAT(folder.names(), ::testing::SizeIs(photos.size() + 1));  // no temporary files
}

}  // namespace
}  // namespace skarnel::testing_app
