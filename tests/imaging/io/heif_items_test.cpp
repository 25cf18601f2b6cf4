// How often the items of a file are decoded, for files of references alone.
#include "imaging/io/heif_items.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "imaging/io/coded_builders.h"
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

Bytes fileOf(std::initializer_list<Reference> references, Width width = Width::Short,
             const Bytes& more = {}) {
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
    meta.u32(0).raw(infosOf(width)).raw(box("iref", all.bytes)).raw(more);
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

TEST(HeifItems, AreOfEveryTypeThatIsDecoded) {
    for (const std::uint32_t item : {1U, 2U, 5U, 6U, 7U}) {
        EXPECT_EQ(decodedItems(fileOf({{"dimg", 3, {item}}}), 3, kMost), 2) << item;
        EXPECT_EQ(decodedItems(fileOf({{"auxl", item, {3}}}), 3, kMost), 2) << item;
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

/// Of item i the properties that `uses` lists for it, in the wide or the narrow form.
Bytes propertiesOf(const std::vector<Bytes>& kinds,
                   const std::vector<std::pair<std::uint32_t, std::vector<int>>>& uses,
                   bool wide = false) {
    ByteSink all(true);
    for (const Bytes& kind : kinds) all.raw(kind);
    ByteSink entries(true);
    entries.u32(wide ? (1U << 24U) + 1 : 0).u32(uses.size());
    for (const auto& [item, numbers] : uses) {
        if (wide) {
            entries.u32(item);
        } else {
            entries.u16(item);
        }
        entries.u8(static_cast<std::uint8_t>(numbers.size()));
        for (const int number : numbers) {
            if (wide) {
                entries.u16(static_cast<std::uint16_t>(0x8000 | number));
            } else {
                entries.u8(static_cast<std::uint8_t>(0x80 | number));
            }
        }
    }
    return box("iprp",
               ByteSink(true).raw(box("ipco", all.bytes)).raw(box("ipma", entries.bytes)).bytes);
}

Bytes sizeBox(std::uint32_t width, std::uint32_t height) {
    return box("ispe", ByteSink(true).u32(0).u32(width).u32(height).bytes);
}

const std::vector<Bytes> kKinds{sizeBox(100, 50), sizeBox(200, 60), box("irot", {1}),
                                box("imir", {1}), box("clap", {}),  box("colr", {})};
constexpr std::uint64_t kMany = 1'000'000;

TEST(HeifItems, HaveThePixelsThatAreStatedOnceMoreForEachTurn) {
    for (const bool wide : {false, true}) {
        const auto pixelsOf = [&](std::uint32_t item) {
            const Bytes file = fileOf(
                {{"dimg", 5, {1, 2, 2}}}, Width::Short,
                propertiesOf(kKinds, {{1, {1}}, {2, {2, 3, 4, 5, 6}}, {5, {3, 2, 0, 7}}, {6, {}}},
                             wide));
            return decodedPixels(file, item, kMany);
        };
        EXPECT_EQ(pixelsOf(1), 5000U);
        EXPECT_EQ(pixelsOf(2), 4 * 12000U) << "turned, mirrored and cut; a profile costs nothing";
        EXPECT_EQ(pixelsOf(3), 1024U) << "states nothing";
        EXPECT_EQ(pixelsOf(6), 1024U);
        EXPECT_EQ(pixelsOf(5), 2 * 12000 + 5000 + 2 * 4 * 12000U);
    }
}

TEST(HeifItems, ThatAreCanvasesOfCanvasesAreTooMany) {
    for (const Width width : {Width::Short, Width::Long}) {
        // 5 and 8 are grids, 6 an overlay, 7 stands for another picture as it is.
        const Bytes file = fileOf({{"dimg", 5, {6}}, {"dimg", 6, {1}}, {"dimg", 7, {6}}}, width);
        EXPECT_EQ(decodedItems(file, 5, kMost), kMost + 1);
        EXPECT_EQ(decodedItems(file, 6, kMost), 2);
        EXPECT_EQ(decodedItems(file, 7, kMost), 3);
        // The picture's own transparency may be a grid, a tile's may not.
        const Bytes tiles =
            fileOf({{"dimg", 5, {1, 2}}, {"auxl", 6, {5}}, {"dimg", 6, {3}}}, width);
        EXPECT_EQ(decodedItems(tiles, 5, kMost), 5);
        const Bytes tile = fileOf({{"dimg", 5, {1, 2}}, {"auxl", 6, {2}}, {"dimg", 6, {3}}}, width);
        EXPECT_EQ(decodedItems(tile, 5, kMost), kMost + 1);
        const Bytes coded = fileOf({{"dimg", 5, {1, 2}}, {"auxl", 3, {2}}}, width);
        EXPECT_EQ(decodedItems(coded, 5, kMost), 4);
        const Bytes two = fileOf({{"auxl", 2, {1}}, {"auxl", 3, {1}}}, width);
        EXPECT_EQ(decodedItems(two, 1, kMost), 3);
        EXPECT_EQ(decodedItems(two, 1, 1), 2) << "one is too many already";
    }
}

TEST(HeifItems, ThatAreTurnedOftenHaveTooManyPixelsWhateverTheirSize) {
    const auto turned = [](std::size_t times) {
        return fileOf({}, Width::Short,
                      propertiesOf({box("irot", {1})}, {{1, std::vector<int>(times, 1)}}));
    };
    EXPECT_EQ(decodedPixels(turned(8), 1, kMany), 9 * 1024U);
    EXPECT_EQ(decodedPixels(turned(9), 1, kMany), kMany + 1);
}

TEST(HeifItems, OfSeveralSizesHaveTooManyPixels) {
    const auto file = [](std::vector<int> used) {
        return fileOf({}, Width::Short, propertiesOf(kKinds, {{1, std::move(used)}}));
    };
    EXPECT_EQ(decodedPixels(file({1, 1}), 1, kMany), 5000U);
    EXPECT_EQ(decodedPixels(file({1, 2}), 1, kMany), kMany + 1);
    EXPECT_EQ(decodedPixels(file({2, 1}), 1, kMany), kMany + 1);
    const Bytes twice = fileOf(
        {}, Width::Short,
        box("iprp", ByteSink(true)
                        .raw(box("ipco", ByteSink(true).raw(kKinds[0]).raw(kKinds[1]).bytes))
                        .raw(box("ipma", ByteSink(true).u32(0).u32(1).u16(1).u8(1).u8(1).bytes))
                        .raw(box("ipma", ByteSink(true).u32(0).u32(1).u16(1).u8(1).u8(2).bytes))
                        .bytes));
    EXPECT_EQ(decodedPixels(twice, 1, kMany), kMany + 1);
}

TEST(HeifItems, OfPropertiesThatAreCutHaveThePixelsOfWhatIsThere) {
    const Bytes whole = ByteSink(true).u32(0).u32(2).u16(1).u8(2).u8(1).u8(3).u16(2).bytes;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes uses(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const Bytes kinds =
            box("ipco", ByteSink(true).raw(kKinds[0]).raw(kKinds[1]).raw(kKinds[2]).bytes);
        const Bytes file = fileOf(
            {}, Width::Short, box("iprp", ByteSink(true).raw(kinds).raw(box("ipma", uses)).bytes));
        const std::uint64_t expected = size < 12 ? 1024 : size < 13 ? 5000 : 10000;
        EXPECT_EQ(decodedPixels(file, 1, kMany), expected) << size;
    }
}

TEST(HeifItems, OfVastSizesDoNotOverflow) {
    const Bytes file = fileOf({{"dimg", 5, {1, 1, 1}}}, Width::Short,
                              propertiesOf({sizeBox(0xFFFFFFFFU, 0xFFFFFFFFU), box("irot", {1})},
                                           {{1, {1, 2, 2, 2}}, {5, {1}}}));
    EXPECT_EQ(decodedPixels(file, 5, kMany), kMany + 1);
    EXPECT_EQ(decodedPixels(file, 1, UINT64_MAX / 8), 4 * (std::uint64_t{1} << 32U));
}

/// These items share data that lies inside the box, from that place on.
Bytes placesOf(const std::vector<std::uint32_t>& items, const Bytes& data, std::size_t from = 0) {
    ByteSink places(true);
    places.u32(1U << 24U).u16(0x4400).u16(items.size());
    for (const std::uint32_t item : items) {
        places.u16(item).u16(1).u16(0).u16(1).u32(from).u32(data.size() - from);
    }
    return ByteSink(true).raw(box("iloc", places.bytes)).raw(box("idat", data)).bytes;
}

/// Item 1 is HEVC and item 2 AV1, with these properties and data.
Bytes codedFile(const std::vector<Bytes>& kinds, const std::vector<int>& used, const Bytes& data) {
    ByteSink more(true);
    more.raw(propertiesOf(kinds, {{1, used}, {2, used}})).raw(placesOf({1, 2}, data));
    return fileOf({}, Width::Short, more.bytes);
}

Bytes hevcOf(std::uint32_t width, std::uint32_t height) {
    return testing::hevcUnit(testing::kParameters, testing::parameters(width, height));
}
const Bytes kSliceUnit = testing::hevcUnit(testing::kSlice, {0x80});

TEST(HeifItems, HaveThePixelsThatTheirCodedDataState) {
    const auto inConfiguration = [](std::uint32_t width, std::uint32_t height) {
        const Bytes decoder = box("hvcC", testing::configurationOf({hevcOf(width, height)}));
        const Bytes file =
            codedFile({sizeBox(100, 50), decoder}, {1, 2}, testing::dataOf({kSliceUnit}));
        return decodedPixels(file, 1, kMany);
    };
    EXPECT_EQ(inConfiguration(100, 50), 5000U);
    EXPECT_EQ(inConfiguration(90, 40), 5000U) << "stated larger outside";
    EXPECT_EQ(inConfiguration(228, 178), 228 * 178U) << "128 more on each side";
    EXPECT_EQ(inConfiguration(229, 50), kMany + 1);
    EXPECT_EQ(inConfiguration(228, 179), kMany + 1);
    EXPECT_EQ(inConfiguration(178, 228), 228 * 178U) << "as it is seen when it is turned";
    EXPECT_EQ(inConfiguration(179, 228), kMany + 1);
    EXPECT_EQ(inConfiguration(0xFFFFFFFE, 0xFFFFFFFE), kMany + 1);
}

TEST(HeifItems, HaveThePixelsThatUnitsAmongTheirDataState) {
    const std::vector<Bytes> kinds{sizeBox(100, 50)};
    const auto hevc = [&](const std::vector<Bytes>& units) {
        return decodedPixels(codedFile(kinds, {1}, testing::dataOf(units)), 1, kMany);
    };
    EXPECT_EQ(hevc({hevcOf(110, 60), kSliceUnit}), 6600U);
    EXPECT_EQ(hevc({hevcOf(2000, 60), kSliceUnit}), kMany + 1);
    EXPECT_EQ(hevc({hevcOf(110, 60), kSliceUnit, kSliceUnit, kSliceUnit}), 3 * 6600U);
    EXPECT_EQ(hevc({testing::hevcUnit(testing::kParameters, {1})}), kMany + 1) << "damaged";
    const auto av1 = [&](std::uint32_t width, std::uint32_t height) {
        using namespace testing;
        const Bytes header = av1Unit(kSequenceHeader, stillHeader(width, height));
        return decodedPixels(codedFile(kinds, {1}, header), 2, kMany);
    };
    EXPECT_EQ(av1(110, 60), 6600U);
    EXPECT_EQ(av1(2000, 60), kMany + 1);
}

TEST(HeifItems, WithoutASizeHaveThePixelsOfTheirData) {
    const Bytes data = testing::dataOf({hevcOf(900, 800)});
    EXPECT_EQ(decodedPixels(codedFile({}, {}, data), 1, kMany), 900 * 800U);
    const Bytes vast = testing::dataOf({hevcOf(0xFFFFFFFE, 0xFFFFFFFE), kSliceUnit, kSliceUnit});
    EXPECT_EQ(decodedPixels(codedFile({}, {}, vast), 1, UINT64_MAX / 8), 2 * (1ULL << 32U));
}

TEST(HeifItems, OfSeveralDecodersHaveTooManyPixels) {
    const Bytes one = box("hvcC", testing::configurationOf({hevcOf(100, 50)}));
    const Bytes other = box("hvcC", testing::configurationOf({hevcOf(90, 50)}));
    const Bytes av1 = box("av1C", {0x81, 0, 0, 0});
    const auto pixelsOf = [&](const std::vector<int>& used) {
        return decodedPixels(codedFile({one, other, av1}, used, {}), 1, kMany);
    };
    EXPECT_EQ(pixelsOf({1, 1}), 5000U);
    EXPECT_EQ(pixelsOf({1, 2}), kMany + 1);
    EXPECT_EQ(pixelsOf({1, 3}), kMany + 1);
}

TEST(HeifItems, WhoseDataCannotBeFoundHaveTooManyPixels) {
    const Bytes places = ByteSink(true).u32(1U << 24U).u16(0x1400).u16(0).bytes;
    const Bytes file = fileOf({{"dimg", 5, {1}}}, Width::Short, box("iloc", places));
    EXPECT_EQ(decodedPixels(file, 1, kMany), kMany + 1);
    EXPECT_EQ(decodedPixels(file, 5, kMany), kMany + 1);
    EXPECT_EQ(decodedPixels(file, 7, kMany), 1024U) << "has no data";
}

TEST(HeifItems, ThatAreCanvasesHaveThePixelsOfTheirData) {
    // 5 is a grid, 6 an overlay; both of 300 x 200.
    const Bytes grid = {0, 0, 0, 0, 1, 44, 0, 200};
    const Bytes overlay = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 44, 0, 200};
    const auto pixelsOf = [&](std::uint32_t item, const Bytes& data, const Bytes& size) {
        const Bytes more = ByteSink(true)
                               .raw(propertiesOf({size}, {{item, {1}}}))
                               .raw(placesOf({item}, data))
                               .bytes;
        return decodedPixels(fileOf({}, Width::Short, more), item, kMany);
    };
    EXPECT_EQ(pixelsOf(5, grid, sizeBox(200, 300)), 60000U);
    EXPECT_EQ(pixelsOf(6, overlay, sizeBox(300, 200)), 60000U);
    EXPECT_EQ(pixelsOf(5, grid, {}), 60000U);
    EXPECT_EQ(pixelsOf(5, grid, sizeBox(1, 1)), kMany + 1);
    EXPECT_EQ(pixelsOf(6, overlay, sizeBox(300, 71)), kMany + 1);
    EXPECT_EQ(pixelsOf(6, grid, sizeBox(300, 200)), kMany + 1) << "cut";
}

TEST(HeifItems, ThatStandForOthersHaveTheirPixels) {
    // 7 stands for 5, and says that it is small.
    const auto pixelsOf = [](const std::vector<int>& used, std::uint32_t of, std::uint32_t item) {
        return decodedPixels(fileOf({{"dimg", 5, {1}}, {"dimg", 7, {of}}}, Width::Short,
                                    propertiesOf(kKinds, {{1, {1}}, {5, {2}}, {7, used}})),
                             item, kMany);
    };
    EXPECT_EQ(pixelsOf({1}, 5, 7), 12000 + 12000 + 5000U);
    EXPECT_EQ(pixelsOf({1, 3, 4}, 5, 7), 3 * 12000 + 12000 + 5000U);
    EXPECT_EQ(pixelsOf({2}, 1, 7), 12000 + 5000U);
    EXPECT_EQ(pixelsOf({2}, 7, 7), kMany + 1);
    const Bytes again = fileOf({{"dimg", 4, {7}}, {"dimg", 7, {7}}});
    EXPECT_EQ(decodedItems(again, 7, kMost), kMost + 1) << "of such a one";
    // The one that is stood for has two sizes.
    const Bytes two = fileOf({{"dimg", 7, {1}}}, Width::Short, propertiesOf(kKinds, {{1, {1, 2}}}));
    EXPECT_EQ(decodedPixels(two, 7, kMany), kMany + 1);
}

TEST(HeifItems, ThatStandForCanvasesAreNotLaidOnOthers) {
    const auto itemsOf = [](std::initializer_list<Reference> references) {
        return decodedItems(fileOf(references), 5, kMost);
    };
    EXPECT_EQ(itemsOf({{"dimg", 5, {7}}, {"dimg", 7, {6}}, {"dimg", 6, {1}}}), kMost + 1);
    EXPECT_EQ(itemsOf({{"dimg", 5, {7}}, {"dimg", 7, {1}}}), 3);
    EXPECT_EQ(itemsOf({{"dimg", 5, {1}}, {"auxl", 7, {1}}, {"dimg", 7, {6}}}), kMost + 1)
        << "nor in a part's transparency";
    EXPECT_EQ(itemsOf({{"dimg", 5, {1}}, {"auxl", 7, {5}}, {"dimg", 7, {6}}, {"dimg", 6, {1}}}), 5)
        << "but in that of the whole";
    // 6 is met outside of a canvas first, then on one.
    EXPECT_EQ(decodedItems(fileOf({{"auxl", 6, {4}},
                                   {"dimg", 6, {1}},
                                   {"auxl", 5, {4}},
                                   {"dimg", 5, {7}},
                                   {"dimg", 7, {6}}}),
                           4, kMost),
              kMost + 1);
}

TEST(HeifItems, ThatShareTheirDataAreLookedAtNoMoreThanTwiceTheFile) {
    // A unit that says nothing, of 600 kB: with one to spare, three items may look at it.
    const Bytes data = testing::dataOf({testing::hevcUnit(40, Bytes(600'000))});
    const auto pixelsOf = [&](const std::vector<std::uint32_t>& parts) {
        const Bytes file = fileOf({{"dimg", 5, parts}}, Width::Short, placesOf({1, 3, 4}, data));
        return decodedPixels(file, 5, kMany);
    };
    EXPECT_EQ(pixelsOf({1, 3}), 3 * 1024U);
    EXPECT_EQ(pixelsOf({1, 3, 1, 3, 1}), 6 * 1024U) << "each once";
    EXPECT_EQ(pixelsOf({1, 3, 4}), 4 * 1024U);
    const Bytes larger = testing::dataOf({testing::hevcUnit(40, Bytes(1'100'000))});
    const auto file = [&](const std::vector<std::uint32_t>& parts) {
        return fileOf({{"dimg", 5, parts}}, Width::Short, placesOf({1, 3, 4}, larger));
    };
    EXPECT_EQ(decodedPixels(file({1, 3}), 5, kMany), 3 * 1024U);
    EXPECT_EQ(decodedPixels(file({1, 3, 4}), 5, kMany), kMany + 1) << "3.3 MB of 2.2 and one";
}

TEST(HeifItems, HaveTablesThatAreLookedThroughForEach) {
    const Bytes none = box("meta", ByteSink(true).u32(0).bytes);
    EXPECT_EQ(tableSteps({}), 0U);
    EXPECT_EQ(tableSteps(none), 0U);
    for (const Width width : {Width::Short, Width::Long}) {
        // Nine descriptions and what has another type.
        const std::uint64_t infos = infosOf(width).size() - 8;
        const std::uint64_t references = 4;
        EXPECT_EQ(tableSteps(fileOf({}, width)), 10 * (infos + references));
        const Bytes more = ByteSink(true)
                               .raw(box("iloc", Bytes(100)))
                               .raw(box("iprp", ByteSink(true)
                                                    .raw(box("ipma", Bytes(20)))
                                                    .raw(box("ipco", Bytes(300)))
                                                    .raw(box("ipma", Bytes(30)))
                                                    .bytes))
                               .bytes;
        EXPECT_EQ(tableSteps(fileOf({}, width, more)), 10 * (infos + references + 100 + 20 + 30));
    }
}

TEST(HeifItems, OfTwoTypesAreTooMany) {
    const auto fileWith = [](std::string_view again) {
        const auto info = [](std::string_view type) {
            return box("infe", ByteSink(true).u32(2U << 24U).u16(1).u16(0).text(type).u8(0).bytes);
        };
        const Bytes infos =
            ByteSink(true).u32(0).u16(3).raw(info("hvc1")).raw(info(again)).raw(info("hvc1")).bytes;
        return box("meta", ByteSink(true).u32(0).raw(box("iinf", infos)).bytes);
    };
    EXPECT_EQ(decodedItems(fileWith("hvc1"), 1, kMost), 1);
    EXPECT_EQ(decodedItems(fileWith("grid"), 1, kMost), kMost + 1);
}

TEST(HeifItems, OfReferencesThatReadersSeeDifferentlyAreTooMany) {
    EXPECT_EQ(decodedItems(fileOf({{"uuid", 5, {1}}}), 1, kMost), kMost + 1);
    EXPECT_EQ(decodedItems(fileOf({{"free", 5, {1}}}), 1, kMost), 1);
}

TEST(HeifItems, HaveOneMeaningUnlessThereAreTwoOfABox) {
    const Bytes plain = fileOf({{"dimg", 5, {1}}}, Width::Short, propertiesOf(kKinds, {}));
    EXPECT_TRUE(hasOneMeaning(plain));
    EXPECT_TRUE(hasOneMeaning({}));
    EXPECT_TRUE(hasOneMeaning(box("meta", {0})));
    EXPECT_FALSE(hasOneMeaning(ByteSink(true).raw(plain).raw(box("meta", {0, 0, 0, 0})).bytes));
    const auto with = [](std::string_view first, std::string_view second) {
        return box("meta", ByteSink(true).u32(0).raw(box(first, {})).raw(box(second, {})).bytes);
    };
    for (const char* kind : {"pitm", "iinf", "iref", "iprp", "iloc", "idat"}) {
        EXPECT_FALSE(hasOneMeaning(with(kind, kind))) << kind;
        EXPECT_TRUE(hasOneMeaning(with(kind, "free"))) << kind;
    }
    const Bytes two = ByteSink(true).raw(box("ipco", {})).raw(box("ipco", {})).bytes;
    EXPECT_FALSE(hasOneMeaning(box("meta", ByteSink(true).u32(0).raw(box("iprp", two)).bytes)));
}

}  // namespace
}  // namespace skarnel::io
