// Each request for memory of a decoding helper in turn is refused: whatever its libraries make of
// that, its caller gets the right picture or an error.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "imaging/io/decoder_wall.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"
#include "imaging/io/read_file.h"
#include "memory/failing_memory.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

constexpr std::int64_t kMaxPixels = 100'000;
constexpr std::int64_t kOrderPlace = 1'000'000;

Result<DecodedImage> decodedWithOrder(const Bytes& file, std::int64_t order) {
    const io::FileDescriptor picture(::memfd_create("test", MFD_CLOEXEC));
    EXPECT_EQ(::pwrite(picture.number(), file.data(), file.size(), 0),
              static_cast<ssize_t>(file.size()));
    return io::decodeBehindWall(DECODER_WITHOUT_MEMORY, picture.number(),
                                {order * kOrderPlace + kMaxPixels});
}

std::int64_t requestsOf(const Bytes& file) {
    const auto counted = decodedWithOrder(file, 0);
    EXPECT_FALSE(counted);
    return counted ? 0 : std::atoll(counted.error().message.c_str());
}

std::vector<std::pair<std::string, Bytes>> files() {
    std::vector<std::pair<std::string, Bytes>> all;
    for (const ImageType& type : imageTypes()) {
        if (type.canWrite)
            all.emplace_back(type.name,
                             *encodeImage(randomValidPicture(21, 17, 3), type.identifier));
    }
    if (imageTypeWithIdentifier(kUTTypeGIF)->canRead)
        all.emplace_back("GIF", buildGif(7, 5, Bytes(768, 9), Bytes(35, 3), 2));
    PsdBuilder psd;
    psd.width = 3;
    psd.packing = 2;
    psd.rows.assign(3, Bytes{1, 2, 3});
    all.emplace_back("Photoshop", psd.build());
    for (const char* name : {"alpha.jxl", "alpha.heic", "p3.avif"}) {
        std::ifstream stream(std::filesystem::path(LATE_FILES) / name, std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(stream), {}};
        const ImageType* type = imageTypeOfContent(bytes);
        if (type != nullptr && type->canRead) all.emplace_back(name, bytes);
    }
    return all;
}

TEST(DecoderWithoutMemory, EndsAsAnErrorOrTheRightPicture) {
    if (!canRefuseMemory()) GTEST_SKIP() << "a sanitizer has a malloc of its own";
    for (const auto& [name, file] : files()) {
        const auto expected = decodeImage(file);
        ASSERT_TRUE(expected) << name;
        const std::int64_t requests = requestsOf(file);
        ASSERT_GT(requests, 0) << name;
        // Each start of the helper takes some milliseconds: a sample, or a thorough one.
        const std::int64_t tries = test::isLongRun() ? 2000 : 6;
        const std::int64_t step = std::max<std::int64_t>(1, requests / tries);
        std::int64_t errors = 0;
        for (std::int64_t order = 1; order <= 2 * requests;
             order += order % 2 == 1 ? 1 : 2 * step - 1) {
            const auto decoded = decodedWithOrder(file, order);
            errors += decoded ? 0 : 1;
            if (!decoded) continue;
            EXPECT_TRUE(samePixels(decoded->image, expected->image)) << name << ", order " << order;
            EXPECT_EQ(decoded->properties, expected->properties) << name << ", order " << order;
        }
        EXPECT_GT(errors, 0) << name << ": nothing was refused";
    }
}

}  // namespace
}  // namespace skarnel
