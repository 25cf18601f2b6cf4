// Each request for memory of the program that has a picture decoded behind the wall is refused in
// turn, while the helper has all it wants.
#include <gtest/gtest.h>

#include <fstream>
#include <string_view>
#include <vector>

#include "imaging/io/decoder_wall.h"
#include "imaging/io/pictures.h"
#include "imaging/pixel_memory.h"
#include "memory/process_size.h"
#include "memory/refuse_each.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

class CallerWithoutMemory : public ::testing::TestWithParam<Refusal> {
  protected:
    void SetUp() override {
        if (!canRefuseMemory()) GTEST_SKIP() << "a sanitizer has a malloc of its own";
        ASSERT_TRUE(io::decoderProgram()) << "the helper is beside this program";
        setIdlePixelMemoryLimit(0);  // what was given back earlier would do without a request
    }

    std::vector<std::string_view> types{kUTTypeJPEG, kUTTypePNG, kUTTypeTIFF, kUTTypeBMP};

    /// Decodes a picture of each type while nothing, then one request after the other is refused.
    template <typename Decode>
    void refuseEachOf(Decode decode) {
        for (const std::string_view type : types) {
            const Bytes file = *encodeImage(randomValidPicture(21, 17, 3), type);
            const auto expected = decode(file);
            ASSERT_TRUE(expected) << type;
            const std::ptrdiff_t descriptors = openDescriptors();
            long errors = 0;
            const auto isRightOrNone = [&] {
                const auto decoded = decode(file);
                const MemoryPause pause;
                if (!decoded) return ++errors > 0;
                return samePixels(decoded->image, expected->image) &&
                       decoded->properties == expected->properties;
            };
            refuseEach(std::string(type), GetParam(), isRightOrNone);
            EXPECT_GT(errors, 0) << type << ": nothing was refused";
            EXPECT_EQ(openDescriptors(), descriptors) << type;
        }
    }
};

TEST_P(CallerWithoutMemory, HasBytesDecodedOrAnError) {
    refuseEachOf([](const Bytes& file) { return decodeForeignImage(file); });
}

/// What reads a picture's file, with its bytes put there before.
template <typename Read>
auto readingFrom(const std::string& path, Read read) {
    return [path, read, written = Bytes()](const Bytes& file) mutable {
        if (written != file) {
            const MemoryPause pause;
            written = file;
            std::ofstream(path, std::ios::binary)
                .write(reinterpret_cast<const char*>(file.data()),
                       static_cast<std::streamsize>(file.size()));
        }
        return read(path);
    };
}

TEST_P(CallerWithoutMemory, HasAFileDecodedOrAnError) {
    const test::TemporaryFolder folder;
    refuseEachOf(
        readingFrom(folder / "picture", [](const auto& path) { return decodeImageFile(path); }));
}

// A resource of our own is decoded here, where libtiff would do without a tag.
TEST_P(CallerWithoutMemory, HasAFileOfItsOwnDecodedOrAnError) {
    types = {kUTTypePNG, kUTTypeBMP};
    const test::TemporaryFolder folder;
    refuseEachOf(
        readingFrom(folder / "picture", [](const auto& path) { return decodeOwnImageFile(path); }));
}

INSTANTIATE_TEST_SUITE_P(Refusals, CallerWithoutMemory,
                         ::testing::Values(Refusal::Once, Refusal::FromThenOn),
                         [](const auto& row) { return nameOf(row.param); });

}  // namespace
}  // namespace skarnel
