// Where the bytes of items lie, for tables of every form.
#include "imaging/io/item_data.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "imaging/io/file_builders.h"

namespace skarnel::io {
namespace {

using testing::ByteSink;

const Bytes kFile{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
const Bytes kInside{'u', 'v', 'w', 'x', 'y', 'z'};

struct Piece {
    std::uint64_t offset, length;
};
struct Place {
    std::uint32_t item;
    std::vector<Piece> pieces;
    unsigned construction = 0;
    std::uint64_t base = 0;
};
struct Widths {
    unsigned offset = 4, length = 4, base = 4, index = 0;
};

Bytes tableOf(unsigned version, const Widths& widths, const std::vector<Place>& places) {
    ByteSink out(true);
    const auto add = [&out](unsigned width, std::uint64_t value) {
        if (width == 4) out.u32(value);
        if (width == 8) out.u64(value);
    };
    const auto addShort = [&](std::uint32_t value) {
        if (version < 2) {
            out.u16(value);
        } else {
            out.u32(value);
        }
    };
    out.u32(version << 24U);
    out.u16(widths.offset << 12U | widths.length << 8U | widths.base << 4U | widths.index);
    addShort(static_cast<std::uint32_t>(places.size()));
    for (const Place& place : places) {
        addShort(place.item);
        if (version > 0) out.u16(0xABC0U | place.construction);
        out.u16(0);
        add(widths.base, place.base);
        out.u16(place.pieces.size());
        for (const Piece& piece : place.pieces) {
            if (version > 1) add(widths.index, 1);
            add(widths.offset, piece.offset);
            add(widths.length, piece.length);
        }
    }
    return out.bytes;
}

std::string textOf(const std::optional<ByteView>& bytes) {
    return bytes ? std::string(bytes->begin(), bytes->end()) : "none";
}

TEST(ItemData, IsFoundWithNumbersOfEveryWidth) {
    for (const unsigned version : {0U, 1U, 2U}) {
        for (const unsigned offset : {4U, 8U}) {
            for (const unsigned base : {4U, 8U}) {
                for (const unsigned index : {0U, 4U, 8U}) {
                    const Widths widths{offset, 12 - offset, base, version > 1 ? index : 0};
                    const Bytes table =
                        tableOf(version, widths, {{7, {{1, 2}}, 0, 3}, {9, {{0, 3}, {1, 1}}}});
                    ItemData data(kFile, table, {});
                    EXPECT_EQ(textOf(data.of(7)), "ef");
                    EXPECT_EQ(textOf(data.of(9)), "abcb");
                    EXPECT_EQ(textOf(data.of(8)), "") << "has no place";
                }
            }
        }
    }
    // Numbers that are not there are 0.
    const Bytes table = tableOf(1, {0, 4, 0, 0}, {{7, {{0, 2}}}});
    EXPECT_EQ(textOf(ItemData(kFile, table, {}).of(7)), "ab");
    EXPECT_EQ(textOf(ItemData(kFile, tableOf(1, {4, 0, 0, 0}, {{7, {{1, 0}}}}), {}).of(7)), "");
}

TEST(ItemData, OfTheFirstVersionHasNoIndexWhateverItsWidth) {
    const Bytes table = tableOf(0, {4, 4, 4, 5}, {{7, {{1, 2}}}});
    EXPECT_EQ(textOf(ItemData(kFile, table, {}).of(7)), "bc");
}

TEST(ItemData, InPiecesWithoutLengthsIsNothing) {
    for (const unsigned offset : {0U, 4U, 8U}) {
        const Bytes table =
            tableOf(2, {offset, 0, 0, 4}, {{7, {{1, 0}, {2, 0}, {3, 0}}}, {9, {{0, 0}}}});
        ItemData data(kFile, table, {});
        EXPECT_EQ(textOf(data.of(7)), "");
        EXPECT_EQ(textOf(data.of(9)), "");
        EXPECT_EQ(textOf(data.of(8)), "");
    }
    // A table of 64 kB in which 4,000 items have 65,535 such pieces each takes no gigabytes.
    ByteSink out(true);
    out.u32(1U << 24U).u16(0).u16(4000);
    for (std::uint64_t item = 0; item < 4000; ++item) out.u16(item).u16(0).u16(0).u16(0xFFFF);
    ItemData data(kFile, out.bytes, {});
    EXPECT_EQ(textOf(data.of(3999)), "");
}

TEST(ItemData, MayLieInsideTheBox) {
    const Bytes table = tableOf(1, {}, {{1, {{1, 2}}, 1}, {2, {{0, 2}}}, {3, {{1, 2}}, 2}});
    ItemData data(kFile, table, kInside);
    EXPECT_EQ(textOf(data.of(1)), "vw");
    EXPECT_EQ(textOf(data.of(2)), "ab");
    EXPECT_EQ(textOf(data.of(3)), "none") << "another item knows";
}

TEST(ItemData, OutsideOfTheFileIsNotThere) {
    const std::uint64_t far = std::uint64_t{1} << 63U;
    const Bytes table = tableOf(1, {8, 8, 8, 0},
                                {{1, {{6, 3}}},
                                 {2, {{8, 1}}},
                                 {3, {{9, 1}}},
                                 {4, {{far, far}}},
                                 {5, {{2, ~0ULL}}},
                                 {6, {{far, 2}}, 0, far + 1},
                                 {7, {{6, 5}, {0, 1}}}});
    ItemData data(kFile, table, {});
    EXPECT_EQ(textOf(data.of(1)), "gh");
    for (const std::uint32_t item : {2U, 3U, 4U}) EXPECT_EQ(textOf(data.of(item)), "") << item;
    EXPECT_EQ(textOf(data.of(5)), "cdefgh");
    EXPECT_EQ(textOf(data.of(6)), "bc") << "as numbers of 64 bits are added up";
    EXPECT_EQ(textOf(data.of(7)), "gha");
}

TEST(ItemData, OfAnItemWithTwoPlacesIsNone) {
    const Bytes table = tableOf(1, {}, {{1, {{0, 1}}}, {2, {{0, 1}}}, {1, {{0, 1}}}});
    ItemData data(kFile, table, {});
    EXPECT_EQ(textOf(data.of(1)), "none");
    EXPECT_EQ(textOf(data.of(2)), "a");
}

TEST(ItemData, IsNoneInATableThatNobodyKnows) {
    EXPECT_EQ(textOf(ItemData(kFile, tableOf(3, {}, {{1, {{0, 1}}}}), {}).of(1)), "none");
    for (const unsigned wrong : {1U, 2U, 3U, 5U, 7U, 9U, 15U}) {
        for (const Widths& widths : {Widths{wrong, 4, 4, 0}, Widths{4, wrong, 4, 0},
                                     Widths{4, 4, wrong, 0}, Widths{4, 4, 4, wrong}}) {
            for (const unsigned version : {1U, 2U}) {
                const Bytes table = tableOf(version, widths, {{1, {{0, 1}}}});
                EXPECT_EQ(textOf(ItemData(kFile, table, {}).of(1)), "none") << wrong;
            }
        }
    }
    for (const unsigned index : {4U, 8U}) {
        const Bytes table = tableOf(1, {4, 4, 4, index}, {{1, {{0, 1}}}});
        EXPECT_EQ(textOf(ItemData(kFile, table, {}).of(1)), "none")
            << "some readers overlook the index";
    }
    EXPECT_EQ(textOf(ItemData(kFile, {}, {}).of(1)), "") << "there is none";
}

TEST(ItemData, OfATableThatIsCutIsWhatIsThere) {
    const Bytes table = tableOf(1, {}, {{1, {{0, 1}}}, {2, {{1, 1}}}});
    const std::size_t first = 8 + (table.size() - 8) / 2;
    for (std::size_t size = first; size < table.size(); ++size) {
        EXPECT_EQ(textOf(ItemData(kFile, ByteView(table).first(size), {}).of(1)), "a") << size;
    }
}

TEST(ItemData, OfATableThatStatesMoreThanItHoldsIsWhatIsThere) {
    Bytes items = tableOf(1, {}, {{1, {{0, 1}}}});
    items[7] = 200;
    EXPECT_EQ(textOf(ItemData(kFile, items, {}).of(1)), "a");
    Bytes pieces = tableOf(1, {}, {{1, {{0, 1}, {1, 1}}}});
    pieces[pieces.size() - 2 * 8 - 1] = 200;
    EXPECT_EQ(textOf(ItemData(kFile, pieces, {}).of(1)), "ab");
}

TEST(ItemData, InPiecesIsNotMoreThanTheFileInAll) {
    const Bytes table = tableOf(1, {}, {{1, {{0, 5}, {0, 3}}}, {2, {{0, 1}, {1, 0}}}, {3, {}}});
    ItemData data(kFile, table, {});
    EXPECT_EQ(textOf(data.of(1)), "abcdeabc");
    EXPECT_EQ(textOf(data.of(3)), "");
    EXPECT_EQ(textOf(data.of(2)), "none");
    ItemData other(kFile, table, {});
    EXPECT_EQ(textOf(other.of(2)), "a");
    EXPECT_EQ(textOf(other.of(1)), "none") << "nine bytes of eight";
}

}  // namespace
}  // namespace skarnel::io
