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

/// Items 1 to 4 are coded, 5 to 8 derived, 9 is none; nor is 10, whose box is another.
Bytes infosOf(Width width) {
    ByteSink all(true);
    all.u32(static_cast<std::uint32_t>(width));
    if (width == Width::Long) {
        all.u32(9);
    } else {
        all.u16(9);
    }
    const std::vector<std::string_view> types = {"hvc1", "av01", "hvc1", "hvc1", "grid",
                                                 "iovl", "iden", "grid", "Exif", "hvc1"};
    for (std::size_t i = 0; i < types.size(); ++i) {
        ByteSink info(true);
        if (width == Width::Long) {
            info.u32(3U << 24U).u32(i + 1);
        } else {
            info.u32(2U << 24U).u16(i + 1);
        }
        const bool isInfo = i + 1 < types.size();
        all.raw(box(isInfo ? "infe" : "free", info.u16(0).text(types[i]).u8(0).bytes));
    }
    return box("iinf", all.bytes);
}

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
    ByteSink meta(true);
    meta.u32(0).raw(infosOf(width)).raw(box("iref", all.bytes));
    return ByteSink(true).raw(box("ftyp", {})).raw(box("meta", meta.bytes)).bytes;
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

TEST(HeifItems, ThatAreMadeOfWhatIsNoPictureAreTooMany) {
    for (const Width width : {Width::Short, Width::Long}) {
        EXPECT_EQ(decodedItems(fileOf({{"dimg", 5, {1, 9}}}, width), 5, kMost), kMost + 1);
        EXPECT_EQ(decodedItems(fileOf({{"dimg", 5, {1, 10}}}, width), 5, kMost), kMost + 1);
        EXPECT_EQ(decodedItems(fileOf({{"dimg", 5, {6}}, {"dimg", 6, {10}}}, width), 5, kMost),
                  kMost + 1);
        // Such a one is no transparency.
        EXPECT_EQ(decodedItems(fileOf({{"auxl", 9, {1}}, {"auxl", 10, {1}}}, width), 1, kMost), 1);
    }
}

TEST(HeifItems, OfReferencesThatAreCutOrLongerThanTheyHoldAreTooMany) {
    const Bytes file = fileOf({{"dimg", 5, {1, 2, 3}}});
    EXPECT_EQ(decodedItems(file, 5, kMost), 4);
    constexpr std::size_t kReferenceBytes = 8 + 2 + 2 + 3 * 2;
    const std::size_t first = file.size() - kReferenceBytes;
    const std::size_t content = first - 4;  // of the box of references, version and flags
    for (std::size_t size = 0; size < file.size(); ++size) {
        const bool hasNone = size < content || size == first;
        EXPECT_EQ(decodedItems(ByteView(file).first(size), 5, kMost), hasNone ? 1 : kMost + 1)
            << size;
    }
    for (const int change : {-1, 1, 16}) {
        Bytes wrong = file;
        wrong[first + 3] += static_cast<std::uint8_t>(change);
        EXPECT_EQ(decodedItems(wrong, 5, kMost), kMost + 1) << change;
    }
}

TEST(HeifItems, AreFoundInBoxesOfAnySize) {
    ByteSink references(true);
    references.u32(0).raw(box("dimg", ByteSink(true).u16(5).u16(1).u16(1).bytes));
    // To the end of the file, the inner one with a long size.
    ByteSink file(true);
    file.u32(0).text("meta").u32(0).raw(infosOf(Width::Short));
    file.u32(1).text("iref").u64(16 + references.bytes.size()).raw(references.bytes);
    EXPECT_EQ(decodedItems(file.bytes, 5, kMost), 2);
    // Shorter than its own head, and none.
    EXPECT_EQ(decodedItems(ByteSink(true).u32(7).text("meta").u64(0).bytes, 5, kMost), 1);
    EXPECT_EQ(decodedItems(box("meta", {0, 0, 0}), 5, kMost), 1);
    EXPECT_EQ(
        decodedItems(box("meta", ByteSink(true).u32(0).raw(box("iref", {0})).bytes), 5, kMost),
        kMost + 1);
    EXPECT_EQ(decodedItems({}, 5, kMost), 1);
}

}  // namespace
}  // namespace skarnel::io
