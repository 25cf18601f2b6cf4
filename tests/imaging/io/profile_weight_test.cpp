// Profiles that ask for more work than any honest one are told from the others before the library
// reads them.
#include "imaging/io/profile_weight.h"

#include <gtest/gtest.h>

#include "imaging/io/pictures.h"
#include "imaging/io/profile_files.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

const Bytes kPower = curveOf({}, {formulaSegment(1)});

Bytes matrix(unsigned in, unsigned out) {
    return matrixElement(in, out, std::vector<float>(std::size_t{out} * (in + 1)));
}

/// One corner alone is there: it is the head that counts.
Bytes table(unsigned in, unsigned out) {
    return tableElement(in, out, std::vector<float>(out));
}

Bytes curveOfSegments(std::size_t count) {
    return curveOf(std::vector<float>(count - 1), std::vector<Bytes>(count, formulaSegment(1)));
}

Bytes sampledCurve(std::size_t samples) {
    return curveOf({0, 1}, {formulaSegment(1), sampledSegment(std::vector<float>(samples)),
                            formulaSegment(1)});
}

/// A sampled segment behind a formula of each kind, which have 4, 5 and 5 numbers; one of no known
/// kind at the end.
Bytes curveOfEveryFormula(std::size_t samples) {
    std::vector<Bytes> segments;
    for (const unsigned formula : {0U, 1U, 2U}) {
        ByteSink segment(true);
        segment.text("parf").u32(0).u16(formula).u16(0);
        segments.push_back(putFloats(segment, std::vector<float>(formula == 0 ? 4 : 5)).bytes);
        segments.push_back(sampledSegment(std::vector<float>(samples)));
    }
    segments.push_back(ByteSink(true).text("parf").u32(0).u16(3).u16(0).bytes);
    return curveOf(std::vector<float>(segments.size() - 1), segments);
}

struct Row {
    const char* name;
    std::vector<Bytes> elements;
    bool heavy;
};

// 32 elements of 16 channels; 2048 units of work, of which a matrix takes inputs x outputs, a table
// 2^inputs x outputs and a curve 32 and its segments; 512 segments and 16,384 samples a curve,
// 262,144 samples in all.
TEST(ProfileWeight, AChainIsHeavyOnlyAboveItsBounds) {
    std::vector<Bytes> matricesOf2049(8, matrix(16, 16));
    matricesOf2049.push_back(matrix(1, 1));
    const Bytes unknown = ByteSink(true).text("none").zeros(8).bytes;
    const auto curves = [](unsigned channels) { return curvesElement(channels, kPower); };
    const std::vector<Row> rows = {
        {"nothing", {}, false},
        {"32 elements", std::vector<Bytes>(32, matrix(3, 3)), false},
        {"33 elements", std::vector<Bytes>(33, matrix(3, 3)), true},
        {"16 channels", {matrix(16, 16)}, false},
        {"17 inputs", {matrix(17, 1)}, true},
        {"17 outputs", {matrix(1, 17)}, true},
        {"matrices of 2048", std::vector<Bytes>(8, matrix(16, 16)), false},
        {"matrices of 2049", matricesOf2049, true},
        {"a table of 2048", {table(11, 1)}, false},
        {"a table of 2048 and a number", {table(11, 1), matrix(1, 1)}, true},
        {"a table of 32768", {table(15, 1)}, true},
        {"62 curves", {curves(16), curves(16), curves(16), curves(14)}, false},
        {"63 curves", {curves(16), curves(16), curves(16), curves(15)}, true},
        {"512 segments", {curvesElement(1, curveOfSegments(512))}, false},
        {"513 segments", {curvesElement(1, curveOfSegments(513))}, true},
        {"3 x 512 segments", {curvesElement(3, curveOfSegments(512))}, false},
        {"4 x 512 segments", {curvesElement(4, curveOfSegments(512))}, true},
        {"no segment", {curvesElement(3, curveOf({}, {}))}, false},
        {"16384 samples", {curvesElement(1, sampledCurve(16384))}, false},
        {"16385 samples", {curvesElement(1, sampledCurve(16385))}, true},
        {"16 x 16384 samples", {curvesElement(16, sampledCurve(16384))}, false},
        {"16 x 16384 samples and 16",
         {curvesElement(16, sampledCurve(16384)), curvesElement(16, sampledCurve(1))},
         true},
        {"16384 samples behind each formula",
         {curvesElement(1, curveOfEveryFormula(16384))},
         false},
        {"16385 samples behind each formula", {curvesElement(1, curveOfEveryFormula(16385))}, true},
        {"elements of no known kind", std::vector<Bytes>(32, unknown), false},
    };
    for (const Row& row : rows) {
        const Bytes profile = profileOf({{"D2B1", chainOf(3, 3, row.elements)}});
        EXPECT_EQ(io::isHeavyProfile(profile), row.heavy) << row.name;
    }
}

// The library takes 100 tags.
TEST(ProfileWeight, EveryTagThatTheLibraryTakesIsLookedAt) {
    const ProfileTag heavy = {"B2D0", chainOf(3, 3, std::vector<Bytes>(33, matrix(3, 3)))};
    std::vector<ProfileTag> tags(99, {"wtpt", whitePoint()});
    tags.push_back(heavy);
    EXPECT_TRUE(io::isHeavyProfile(profileOf(tags)));
    tags.insert(tags.begin(), {"wtpt", whitePoint()});
    EXPECT_FALSE(io::isHeavyProfile(profileOf(tags)));
}

TEST(ProfileWeight, OtherKindsOfTagsAreNotWeighed) {
    Bytes notAChain = chainOf(3, 3, std::vector<Bytes>(33, matrix(3, 3)));
    notAChain[0] = 'M';
    EXPECT_FALSE(io::isHeavyProfile(profileOf({{"D2B1", notAChain}})));
}

// Places go round at 32 bits: 20 bytes before the chain, where another tag's data hold an element.
TEST(ProfileWeight, PlacesAreCountedAsTheLibraryCountsThem) {
    Bytes element = matrixElement(17, 17, {});
    element.resize(20);
    const auto chain = [](std::uint32_t place) {
        return ByteSink(true).text("mpet").u32(0).u16(3).u16(3).u32(1).u32(place).u32(12).bytes;
    };
    EXPECT_TRUE(io::isHeavyProfile(profileOf({{"tech", element}, {"D2B1", chain(0xFFFFFFEC)}})));
    EXPECT_FALSE(io::isHeavyProfile(profileOf({{"tech", element}, {"D2B1", chain(0xFFFFFFF0)}})));
}

TEST(ProfileWeight, WhatIsCutOffWeighsNothing) {
    const Bytes whole = profileOf({{"D2B1", chainOf(3, 3, {table(15, 1)})}});
    // The table's head: kind, 4 bytes, inputs, outputs.
    const std::size_t needed = kProfileHeadBytes + 4 + 12 + 16 + 8 + 12;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(io::isHeavyProfile(cut), size >= needed) << size;
    }
}

TEST(ProfileWeight, CurvesThatAreCutOffEnd) {
    const Bytes whole = profileOf({{"D2B1", chainOf(3, 3, {curvesElement(3, sampledCurve(2))})}});
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(io::isHeavyProfile(cut)) << size;
    }
}

}  // namespace
}  // namespace skarnel
