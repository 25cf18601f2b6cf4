// The k-th allocation fails, for every k: reading and writing end with an error or the right
// picture, and give back all they took.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && defined(__GLIBC__)
#define CAN_COUNT_ALLOCATIONS 1

// This program's own malloc, which the codecs' libraries take as well.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<bool> counting = false;
std::atomic<long> allocations = 0;
std::atomic<long> firstFailure = -1;  // counted from 0; -1 = none fails
std::atomic<bool> failFromThen = false;
std::atomic<long> live = 0;

bool mustFail() {
    if (!counting) return false;
    const long number = allocations++;
    return firstFailure >= 0 && (number == firstFailure || (failFromThen && number > firstFailure));
}

void* counted(void* block) {
    if (block != nullptr) ++live;
    return block;
}

void* refused() {
    errno = ENOMEM;
    return nullptr;
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) {
    return mustFail() ? refused() : counted(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) {
    return mustFail() ? refused() : counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) {
    if (mustFail()) return refused();
    void* moved = __libc_realloc(block, size);
    if (block == nullptr && moved != nullptr) ++live;
    return moved;
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return mustFail() ? refused() : counted(__libc_memalign(alignment, size));
}
void* memalign(std::size_t alignment, std::size_t size) {
    return aligned_alloc(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = aligned_alloc(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}
void free(void* block) {
    if (block != nullptr) --live;
    __libc_free(block);
}
}
#endif

namespace skarnel {
namespace {

using namespace skarnel::testing;

#ifdef CAN_COUNT_ALLOCATIONS

/// Runs `work` with one allocation failing after the other until none fails any more. `work` gives
/// true when what it got is right or a clean error.
template <typename Work>
void failEach(const char* name, bool fromThenOn, Work work) {
    ASSERT_TRUE(work()) << name;  // fills what is kept for good
    long number = 0;
    for (;; ++number) {
        allocations = 0;
        firstFailure = number;
        failFromThen = fromThenOn;
        const long before = live;
        counting = true;
        const bool right = work();
        counting = false;
        const long after = live;
        ASSERT_TRUE(right) << name << ", allocation " << number;
        if (allocations <= number) break;
        ASSERT_LE(after - before, 8) << name << ", allocation " << number << " left a leak";
        ASSERT_LT(number, 20000) << name;
    }
    firstFailure = -1;
    EXPECT_GT(number, 0) << name;
}

/// The libraries of the other formats do not check all of their own allocations; what strangers
/// made is read behind the decoder's wall, where such a crash is an error like any other.
bool crashesByItself(std::string_view type) {
    return type == kUTTypeJPEG2000 || type == kUTTypeWebP;
}

class Allocation : public ::testing::TestWithParam<bool> {};

TEST_P(Allocation, ThatFailsInAWriterGivesACleanError) {
    const CGImage image = randomValidPicture(21, 17, 3);
    const ImageProperties properties = {{std::string(kPropertyDpiWidth), 300.0}};
    for (const ImageType& type : imageTypes()) {
        if (!type.canWrite || crashesByItself(type.identifier)) continue;
        const Bytes expected = *encodeImage(image, type.identifier, properties);
        failEach(type.name.data(), GetParam(), [&] {
            const auto bytes = encodeImage(image, type.identifier, properties);
            if (!bytes || *bytes == expected) return true;
            // An encoder may do without a help that it had no memory for, but not without pixels.
            counting = false;
            return samePixels(decodeImage(*bytes)->image, image) ? true
                                                                 : type.identifier == kUTTypeJPEG;
        });
    }
}

TEST_P(Allocation, ThatFailsInAReaderGivesACleanError) {
    std::vector<std::pair<std::string, Bytes>> files;
    const CGImage image = randomValidPicture(21, 17, 3);
    files.emplace_back("BMP", *encodeImage(image, kUTTypeBMP));
    PsdBuilder psd;
    psd.width = 3;
    psd.packing = 2;
    psd.rows.assign(3, Bytes{1, 2, 3});
    files.emplace_back("Photoshop", psd.build());
    for (const auto& [name, file] : files) {
        const auto expected = decodeImage(file);
        ASSERT_TRUE(expected) << name;
        failEach(name.c_str(), GetParam(), [&] {
            const auto decoded = decodeImage(file);
            // The comparison allocates nothing.
            if (!decoded) return true;
            const PixelView is = decoded->image.pixels();
            const PixelView was = expected->image.pixels();
            return is.width == was.width && is.height == was.height &&
                   std::equal(is.bytes, is.bytes + is.strideBytes * is.height, was.bytes);
        });
    }
}

INSTANTIATE_TEST_SUITE_P(Once_AndFromThenOn, Allocation, ::testing::Bool(), [](const auto& row) {
    return std::string(row.param ? "FromThenOn" : "Once");
});

#else
TEST(Allocation, IsNotCountedUnderASanitizer) {
    GTEST_SKIP() << "a sanitizer has a malloc of its own";
}
#endif

}  // namespace
}  // namespace skarnel
