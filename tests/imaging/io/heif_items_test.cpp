// How often the items of a file are decoded, for files of references alone.
#include "imaging/io/heif_items.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string_view>
#include <vector>

#include "imaging/io/file_builders.h"

namespace skarnel::io {
namespace {

using testing::ByteSink;

constexpr std::uint64_t kMost = 1000;

Bytes box(std::string_view type, const Bytes& content) {
    return ByteSink(true).u32(8 + content.size()).text(type).raw(content).bytes;
}

struct Reference {
    std::string_view type;
    std::uint32_t from;
    std::vector<std::uint32_t> to;
};

enum class Width : std::uint32_t { Short = 0, Long = 1U << 24U };

Bytes fileOf(std::initializer_list<Reference> references, Width width = Width::Short) {
    ByteSink all(true);
    all.u32(static_cast<std::uint32_t>(width));
    for (const Reference& reference : references) {
        ByteSink content(true);
        const auto add = [&](std::uint32_t item) {
            if (width == Width::Long) {
                content.u32(item);
            } else {
                content.u16(item);
            }
        };
        add(reference.from);
        content.u16(reference.to.size());
        for (const std::uint32_t item : reference.to) add(item);
        all.raw(box(reference.type, content.bytes));
    }
    const Bytes meta = box(
        "meta", ByteSink(true).u32(0).raw(box("pitm", {0, 0})).raw(box("iref", all.bytes)).bytes);
    return ByteSink(true).raw(box("ftyp", {})).raw(meta).bytes;
}

TEST(HeifItems, AreThePictureAndWhatItIsMadeOfAndItsTransparency) {
    for (const Width width : {Width::Short, Width::Long}) {
        // 5 is a grid of three; 6 is the transparency of it, a grid of two.
        const Bytes file =
            fileOf({{"dimg", 5, {1, 2, 2}}, {"auxl", 6, {5}}, {"dimg", 6, {3, 3}}}, width);
        EXPECT_EQ(decodedItems(file, 5, kMost), 1 + 3 + 1 + 2);
        EXPECT_EQ(decodedItems(file, 6, kMost), 1 + 2);
        EXPECT_EQ(decodedItems(file, 1, kMost), 1);
    }
}

TEST(HeifItems, ThatAreNotDecodedWithThePictureAreNotCounted) {
    const Bytes file = fileOf({{"thmb", 2, {1}}, {"cdsc", 3, {1}}, {"dimg", 4, {1}}});
    EXPECT_EQ(decodedItems(file, 1, kMost), 1);
}

TEST(HeifItems, AreCountedAsOftenAsTheyAreMet) {
    const auto ten = [](std::uint32_t item) { return std::vector<std::uint32_t>(10, item); };
    const Bytes file = fileOf({{"dimg", 2, ten(1)}, {"dimg", 3, ten(2)}, {"dimg", 4, ten(3)}});
    EXPECT_EQ(decodedItems(file, 3, kMost), 1 + 10 * (1 + 10));
    EXPECT_EQ(decodedItems(file, 4, kMost), kMost + 1) << "1,111";
    EXPECT_EQ(decodedItems(file, 4, 1111), 1111);
    EXPECT_EQ(decodedItems(file, 4, 1110), 1111);
}

TEST(HeifItems, ThatAreMadeOfThemselvesAreTooMany) {
    EXPECT_EQ(decodedItems(fileOf({{"dimg", 1, {1}}}), 1, kMost), kMost + 1);
    EXPECT_EQ(decodedItems(fileOf({{"auxl", 1, {1}}}), 1, kMost), kMost + 1);
    const Bytes circle = fileOf({{"dimg", 1, {2}}, {"auxl", 3, {2}}, {"dimg", 3, {1}}});
    for (const std::uint32_t item : {1U, 2U, 3U}) {
        EXPECT_EQ(decodedItems(circle, item, kMost), kMost + 1) << item;
    }
}

TEST(HeifItems, OfAFileThatIsCutAreThoseBeforeTheCut) {
    const Bytes file = fileOf({{"dimg", 5, {1, 2, 3}}});
    EXPECT_EQ(decodedItems(file, 5, kMost), 4);
    for (std::size_t size = 0; size < file.size(); ++size) {
        const std::uint64_t items = decodedItems(ByteView(file).first(size), 5, kMost);
        EXPECT_GE(items, 1U) << size;
        EXPECT_LE(items, 4U) << size;
    }
}

TEST(HeifItems, AreFoundInBoxesOfAnySize) {
    ByteSink references(true);
    references.u32(0).raw(box("dimg", ByteSink(true).u16(5).u16(1).u16(1).bytes));
    // To the end of the file, the inner one with a long size.
    ByteSink file(true);
    file.u32(0).text("meta").u32(0);
    file.u32(1).text("iref").u64(16 + references.bytes.size()).raw(references.bytes);
    EXPECT_EQ(decodedItems(file.bytes, 5, kMost), 2);
    // Shorter than its own head, and none.
    EXPECT_EQ(decodedItems(ByteSink(true).u32(7).text("meta").u64(0).bytes, 5, kMost), 1);
    EXPECT_EQ(decodedItems(box("meta", {0, 0, 0}), 5, kMost), 1);
    EXPECT_EQ(
        decodedItems(box("meta", ByteSink(true).u32(0).raw(box("iref", {0})).bytes), 5, kMost), 1);
    EXPECT_EQ(decodedItems({}, 5, kMost), 1);
}

}  // namespace
}  // namespace skarnel::io
