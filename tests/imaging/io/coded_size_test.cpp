// What the headers inside HEVC and AV1 data say of the size, for units written bit by bit.
#include "imaging/io/coded_size.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "imaging/io/coded_builders.h"
#include "imaging/io/file_builders.h"

namespace skarnel::io {
namespace {

using namespace testing;

// --- HEVC.

/// With three bytes that keep two zeros and a number below four apart.
Bytes escaped(const Bytes& content) {
    Bytes out;
    int zeros = 0;
    for (const std::uint8_t byte : content) {
        if (zeros == 2 && byte <= 3) {
            out.push_back(3);
            zeros = 0;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        out.push_back(byte);
    }
    return out;
}

const Bytes kFirstSlice = hevcUnit(kSlice, {0x80});
const Bytes kNextSlice = hevcUnit(kSlice, {0x7F});

void expectSize(const std::optional<CodedSize>& size, std::uint32_t width, std::uint32_t height,
                std::uint32_t pictures, const std::string& what = "") {
    ASSERT_TRUE(size.has_value()) << what;
    EXPECT_EQ(size->width, width) << what;
    EXPECT_EQ(size->height, height) << what;
    EXPECT_EQ(size->pictures, pictures) << what;
}

TEST(CodedSize, OfHevcIsThatOfItsParameters) {
    const Bytes unit = hevcUnit(kParameters, parameters(4000, 3000));
    expectSize(sizeOfHevc(configurationOf({unit}), dataOf({kFirstSlice})), 4000, 3000, 1);
    expectSize(sizeOfHevc(configurationOf({}), dataOf({unit, kFirstSlice})), 4000, 3000, 1);
    expectSize(sizeOfHevc({}, {}), 0, 0, 0);
}

TEST(CodedSize, OfHevcIsFoundBehindEveryFormOfTheProfile) {
    for (const char* layers : {"-", "p", "l", "b", "-plb-b", "bbbbbbb"}) {
        const Bytes unit = hevcUnit(kParameters, parameters(640, 480, layers));
        expectSize(sizeOfHevc(configurationOf({unit}), {}), 640, 480, 0, layers);
    }
    const Bytes whole = hevcUnit(kParameters, parameters(640, 480, "", 3));
    expectSize(sizeOfHevc(configurationOf({whole}), {}), 640, 480, 0);
}

TEST(CodedSize, OfHevcIsReadWithoutTheBytesThatKeepStartCodesAway) {
    // A profile of nothing but zeros has one after each two.
    Bits out;
    out.zeros(8 + 96).golomb(0).golomb(1).golomb(65535).golomb(33).add(1, 1);
    const Bytes plain = out.bytes();
    const Bytes unit = hevcUnit(kParameters, escaped(plain));
    EXPECT_GT(unit.size(), plain.size() + 2 + 3);
    expectSize(sizeOfHevc(configurationOf({unit}), {}), 65535, 33, 0);
}

TEST(CodedSize, OfHevcKeepsWhatOnlyLooksLikeSuchAByte) {
    // A three behind one zero, and behind the byte that was taken out and one zero more.
    Bits out;
    out.zeros(8).add(0x550003AA, 32).add(0x11000000, 32).add(0x03FF0003, 32);
    const Bytes plain = out.golomb(0).golomb(1).golomb(4000).golomb(33).add(1, 1).bytes();
    const Bytes unit = hevcUnit(kParameters, escaped(plain));
    EXPECT_EQ(unit.size(), plain.size() + 2 + 1);
    expectSize(sizeOfHevc(configurationOf({unit}), {}), 4000, 33, 0);
}

TEST(CodedSize, OfHevcIsTheLargestOfEachSide) {
    const Bytes wide = hevcUnit(kParameters, parameters(900, 10));
    const Bytes tall = hevcUnit(kParameters, parameters(20, 800));
    const Bytes small = hevcUnit(kParameters, parameters(8, 8));
    expectSize(sizeOfHevc(configurationOf({wide, small}), dataOf({tall, small})), 900, 800, 0);
}

TEST(CodedSize, OfHevcCountsThePicturesThatBegin) {
    const Bytes other = hevcUnit(39, {0x80});
    const Bytes data = dataOf({kFirstSlice, kNextSlice, other, kFirstSlice, kNextSlice});
    expectSize(sizeOfHevc(configurationOf({kFirstSlice}), data), 0, 0, 3);
    // Four slices may take as long as a picture.
    std::vector<Bytes> slices(4, kNextSlice);
    expectSize(sizeOfHevc(configurationOf({kFirstSlice}), dataOf(slices)), 0, 0, 2);
    slices.pop_back();
    expectSize(sizeOfHevc(configurationOf({kFirstSlice}), dataOf(slices)), 0, 0, 1);
    // The last kind of a slice, and the first that is none.
    expectSize(sizeOfHevc({}, dataOf({hevcUnit(31, {0x80}), hevcUnit(32, {0x80})})), 0, 0, 1);
}

TEST(CodedSize, OfHevcDoesNotCountWhatNoDecoderLooksAt) {
    const Bytes otherView = hevcUnit(kParameters, parameters(9000, 9000), 1);
    const Bytes farView = hevcUnit(kSlice, {0x80}, 32);
    const Bytes headAlone = hevcUnit(kParameters, {});
    expectSize(sizeOfHevc({}, dataOf({otherView, farView, headAlone, {}, {1}})), 0, 0, 0);
    // Cut within a unit, or its size.
    const Bytes data = dataOf({kFirstSlice, kFirstSlice});
    expectSize(sizeOfHevc({}, data), 0, 0, 2);
    for (std::size_t size = 0; size < data.size(); ++size) {
        expectSize(sizeOfHevc({}, ByteView(data).first(size)), 0, 0, size < data.size() / 2 ? 0 : 1,
                   std::to_string(size));
    }
    const Bytes configuration = configurationOf({kFirstSlice, kFirstSlice});
    for (std::size_t size = 0; size < configuration.size(); ++size) {
        const std::size_t first = 23 + 5 + kFirstSlice.size();
        expectSize(sizeOfHevc(ByteView(configuration).first(size), {}), 0, 0, size < first ? 0 : 1,
                   std::to_string(size));
    }
}

TEST(CodedSize, OfHevcCountsUnitsThatAreThereNotThoseThatAreStated) {
    const Bytes one = ByteSink(true).u16(kFirstSlice.size()).raw(kFirstSlice).bytes;
    const Bytes configuration =
        ByteSink(true).raw(Bytes(22)).u8(9).u8(0).u16(1).raw(one).u8(0).u16(9).raw(one).bytes;
    expectSize(sizeOfHevc(configuration, {}), 0, 0, 2);
}

TEST(CodedSize, OfHevcIsNoneWithDamagedParameters) {
    const Bytes whole = parameters(4000, 3000);
    for (std::size_t size = 1; size < whole.size() - 1; ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(sizeOfHevc({}, dataOf({hevcUnit(kParameters, cut)}))) << size;
        EXPECT_FALSE(sizeOfHevc(configurationOf({hevcUnit(kParameters, cut)}), {})) << size;
    }
    // A number of more than 32 bits.
    Bits out;
    out.zeros(4 + 3).add(1, 1).zeros(96).golomb(0).golomb(1).zeros(32).add(1, 1).zeros(64);
    EXPECT_FALSE(sizeOfHevc({}, dataOf({hevcUnit(kParameters, out.bytes())})));
    Bits largest;
    largest.zeros(7).add(1, 1).zeros(96).golomb(0).golomb(1).golomb(0xFFFFFFFE).golomb(0).add(1, 1);
    expectSize(sizeOfHevc({}, dataOf({hevcUnit(kParameters, largest.bytes())})), 0xFFFFFFFE, 0, 0);
}

TEST(CodedSize, OfHevcIsNoneWithMoreUnitsThanAPictureHas) {
    const std::vector<Bytes> most(4096, kNextSlice);
    expectSize(sizeOfHevc({}, dataOf(most)), 0, 0, 4096 / 4);
    EXPECT_FALSE(sizeOfHevc(configurationOf({kNextSlice}), dataOf(most)));
}

// --- AV1.

Bytes av1UnitToTheEnd(unsigned type, const Bytes& content) {
    return ByteSink(true).u8(static_cast<std::uint8_t>(type << 3U)).raw(content).bytes;
}
Bytes joined(const std::vector<Bytes>& parts) {
    ByteSink out(true);
    for (const Bytes& part : parts) out.raw(part);
    return out.bytes;
}

/// The parts of a whole header that change where the others lie.
struct Whole {
    // The clock: none, one without a model, one with it, one with it and even ticks.
    enum class Clock { None, Plain, Model, EvenModel } clock = Clock::None;
    int points = 1;
    bool highLevels = false;
    bool delays = false;
    bool frameNumbers = false;
    bool order = false;
    // 0, 1 or by frame.
    unsigned screenContent = 0;
    unsigned wholeMotion = 2;
};

Bytes wholeHeader(const Whole& of) {
    const bool hasModel = of.clock == Whole::Clock::Model || of.clock == Whole::Clock::EvenModel;
    const bool isEven = of.clock == Whole::Clock::EvenModel;
    Bits out;
    out.zeros(3 + 1 + 1);
    out.add(of.clock == Whole::Clock::None ? 0 : 1, 1);
    if (of.clock != Whole::Clock::None) {
        out.add(0xFFFFFFFFFFFFFFFF, 64).add(isEven ? 1 : 0, 1);
        if (isEven) out.golomb(77);
        out.add(hasModel ? 1 : 0, 1);
        // Delays of nine bits, times of eleven.
        if (hasModel) out.add(8, 5).add(0xFFFFFFFF, 32).add(31, 5).add(10, 5);
    }
    out.add(of.delays ? 1 : 0, 1).add(static_cast<unsigned>(of.points - 1), 5);
    for (int i = 0; i < of.points; ++i) {
        out.add(0xFFF, 12).add(of.highLevels ? 8 : 7, 5);
        if (of.highLevels) out.add(1, 1);
        if (hasModel) {
            out.add(i % 2 == 0 ? 1 : 0, 1);
            if (i % 2 == 0) out.add(0x7FFFF, 9 + 9 + 1);
        }
        if (of.delays) {
            out.add(i % 2 == 0 ? 1 : 0, 1);
            if (i % 2 == 0) out.add(15, 4);
        }
    }
    addSides(out, 1000, 500, 10);
    out.add(of.frameNumbers ? 1 : 0, 1);
    if (of.frameNumbers) out.add(3, 4).add(2, 3);  // 2 + 1 + 3 + 2 bits
    out.add(7, 3).add(15, 4).add(of.order ? 1 : 0, 1);
    if (of.order) out.add(3, 2);
    out.add(of.screenContent == 2 ? 1 : 0, 1);
    if (of.screenContent != 2) out.add(of.screenContent, 1);
    if (of.screenContent > 0) {
        out.add(of.wholeMotion == 2 ? 1 : 0, 1);
        if (of.wholeMotion != 2) out.add(of.wholeMotion, 1);
    }
    return out.add(1, 1).bytes();
}

/// To where it says whether it has its own size.
struct Frame {
    unsigned type = 0;
    bool isShown = true;
    bool usesScreenContent = false;
};

Bytes frameOf(const Whole& of, const Frame& frame, bool hasOwnSize) {
    Bits out;
    out.zeros(1).add(frame.type, 2).add(frame.isShown ? 1 : 0, 1);
    if (!frame.isShown) out.add(1, 1);
    if (frame.isShown && of.clock == Whole::Clock::Model) out.add(0x7FF, 11);
    const bool isSwitch = frame.type == 3;
    if (!isSwitch && (frame.type != 0 || !frame.isShown)) out.add(1, 1);
    out.add(1, 1);
    if (of.screenContent == 2) out.add(frame.usesScreenContent ? 1 : 0, 1);
    const bool isScreen = of.screenContent == 2 ? frame.usesScreenContent : of.screenContent == 1;
    if (isScreen && of.wholeMotion == 2) out.add(1, 1);
    if (of.frameNumbers) out.add(0xFF, 8);
    if (!isSwitch) out.add(hasOwnSize ? 1 : 0, 1);
    return out.add(hasOwnSize ? 0 : 0x3F, 6).bytes();
}

TEST(CodedSize, OfAv1IsThatOfItsSequence) {
    const Bytes header = av1Unit(kSequenceHeader, stillHeader(4000, 3000));
    const Bytes configuration = joined({Bytes(4, 0x81), header});
    expectSize(sizeOfAv1(configuration, av1Unit(kFrame, {0})), 4000, 3000, 1);
    expectSize(sizeOfAv1({}, joined({header, av1Unit(kFrame, {0})})), 4000, 3000, 1);
    expectSize(sizeOfAv1({}, joined({header, av1UnitToTheEnd(kFrame, {0})})), 4000, 3000, 1);
    expectSize(sizeOfAv1(Bytes(4, 0x81), {}), 0, 0, 0);
    expectSize(sizeOfAv1(Bytes(2), {}), 0, 0, 0);
    const Bytes wide = av1Unit(kSequenceHeader, stillHeader(65536, 2));
    expectSize(sizeOfAv1(configuration, wide), 65536, 3000, 0);
}

TEST(CodedSize, OfAv1CountsTheFramesBehindASequence) {
    const Bytes header = av1Unit(kSequenceHeader, stillHeader(16, 9));
    const Bytes frame = av1Unit(kFrame, {0});
    for (const unsigned type : {kFrameHeader, kFrame, 7U}) {
        expectSize(sizeOfAv1({}, joined({frame, header, av1Unit(type, {0}), av1Unit(4, {0})})), 16,
                   9, 1, std::to_string(type));
    }
    expectSize(sizeOfAv1({}, joined({header, frame, frame, frame})), 16, 9, 3);
}

TEST(CodedSize, OfAFrameOfAv1CountsAsMorePicturesWhereItHasItsOwn) {
    using Clock = Whole::Clock;
    const std::vector<Whole> wholes = {
        {},
        {Clock::Plain},
        {Clock::Model, 3},
        {Clock::EvenModel, 2, true, true},
        {Clock::None, 32, true, true, true},
        {Clock::Model, 1, false, true, true, true, 1, 0},
        {Clock::None, 1, false, false, false, true, 1, 2},
        {Clock::None, 1, false, false, true, false, 2, 1},
        {Clock::None, 1, false, false, false, false, 2, 2},
    };
    const std::vector<Frame> frames = {{0, true}, {0, false}, {1, true},       {2, false},
                                       {3, true}, {3, false}, {0, true, true}, {1, false, true}};
    for (std::size_t i = 0; i < wholes.size(); ++i) {
        const Bytes header = av1Unit(kSequenceHeader, wholeHeader(wholes[i]));
        for (std::size_t j = 0; j < frames.size(); ++j) {
            const std::string what = std::to_string(i) + ", " + std::to_string(j);
            const auto with = [&](bool hasOwnSize) {
                const Bytes frame = frameOf(wholes[i], frames[j], hasOwnSize);
                return sizeOfAv1({}, joined({header, av1Unit(kFrame, frame)}));
            };
            // 1024 x 1024 pixels are more than two of 1000 x 500.
            expectSize(with(true), 1000, 500, 3, what);
            const bool isSwitch = frames[j].type == 3;
            expectSize(with(false), 1000, 500, isSwitch ? 3 : 1, what);
        }
    }
}

TEST(CodedSize, OfAv1HasABoundOfPictures) {
    Bits out;
    out.zeros(3 + 1 + 1 + 1 + 1 + 5 + 12 + 5).add(15, 4).add(15, 4).zeros(16 + 16);
    const Bytes header = av1Unit(kSequenceHeader, out.zeros(1 + 3 + 4 + 1 + 2 + 8).bytes());
    const Bytes frame = av1Unit(kFrame, frameOf({}, {}, true));
    const Bytes two = joined({header, frame, frame});
    expectSize(sizeOfAv1({}, two), 1, 1, 1U << 30U);
}

TEST(CodedSize, OfAv1HasNoFrameWhereOneIsShownAgain) {
    const Bytes header = av1Unit(kSequenceHeader, wholeHeader({}));
    expectSize(sizeOfAv1({}, joined({header, av1Unit(kFrameHeader, {0x80})})), 1000, 500, 0);
}

TEST(CodedSize, OfAv1IsNoneWithADamagedHeader) {
    for (const Bytes& whole : {stillHeader(4000, 3000), wholeHeader({Whole::Clock::Model, 2})}) {
        for (std::size_t size = 0; size + 1 < whole.size(); ++size) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_FALSE(sizeOfAv1({}, av1Unit(kSequenceHeader, cut))) << size;
            EXPECT_FALSE(sizeOfAv1(joined({Bytes(4), av1Unit(kSequenceHeader, cut)}), {})) << size;
        }
    }
    const Bytes header = av1Unit(kSequenceHeader, wholeHeader({}));
    EXPECT_FALSE(sizeOfAv1({}, joined({header, av1Unit(kFrame, {})})));
    EXPECT_FALSE(sizeOfAv1(joined({Bytes(4), av1UnitToTheEnd(kFrame, {0})}), {}))
        << "the library puts the picture's units behind it";
    const Bytes frame = av1Unit(kFrame, Bytes(3));
    for (std::size_t size = 1; size < frame.size(); ++size) {
        const Bytes cut(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(sizeOfAv1(joined({Bytes(4), cut}), {})) << size;
    }
}

TEST(CodedSize, OfAv1EndsWhereAUnitIsCut) {
    const Bytes header = av1Unit(kSequenceHeader, stillHeader(16, 9));
    const Bytes two = joined({header, av1Unit(kFrame, Bytes(200))});
    for (std::size_t size = header.size(); size < two.size(); ++size) {
        expectSize(sizeOfAv1({}, ByteView(two).first(size)), 16, 9, 0, std::to_string(size));
    }
    // A size of nine bytes is none; one of eight is larger than anything.
    const Bytes endless = ByteSink(true).u8(kFrame << 3U | 2U).raw(Bytes(9, 0xFF)).bytes;
    expectSize(sizeOfAv1({}, joined({header, endless})), 16, 9, 0);
    // One of eight, and one of two.
    const Bytes wide =
        ByteSink(true).u8(kFrame << 3U | 2U).u8(0x81).raw(Bytes(6, 0x80)).u16(0).bytes;
    const Bytes large = av1Unit(kFrame, Bytes(300));
    expectSize(sizeOfAv1({}, joined({header, wide, large, large})), 16, 9, 3);
    // Behind a byte for its layer.
    const Bytes layered = ByteSink(true).u8(kFrame << 3U | 6U).u8(0).u8(1).u8(0).bytes;
    expectSize(sizeOfAv1({}, joined({header, layered})), 16, 9, 1);
}

TEST(CodedSize, OfACanvasStandsBehindWhatIsSaidOfItsParts) {
    const Bytes grid = {0, 0, 3, 4, 0x12, 0x34, 0x56, 0x78};
    expectSize(sizeOfGrid(grid), 0x1234, 0x5678, 1);
    const Bytes largeGrid = {0, 1, 3, 4, 0, 0x12, 0x34, 0x56, 0x78, 0, 0, 1};
    expectSize(sizeOfGrid(largeGrid), 0x123456, 0x78000001, 1);
    const Bytes overlay = {0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 0x12, 0x34, 0x56, 0x78, 9};
    expectSize(sizeOfOverlay(overlay), 0x1234, 0x5678, 1);
    const Bytes largeOverlay = {0, 1, 1, 1, 2, 2, 3, 3, 4, 4, 0, 0x12, 0x34, 0x56, 0, 0, 0, 5};
    expectSize(sizeOfOverlay(largeOverlay), 0x123456, 5, 1);
    for (const Bytes& whole : {grid, largeGrid}) {
        EXPECT_FALSE(sizeOfGrid(ByteView(whole).first(whole.size() - 1)));
    }
    EXPECT_FALSE(sizeOfOverlay(ByteView(largeOverlay).first(largeOverlay.size() - 1)));
    EXPECT_FALSE(sizeOfOverlay({}));
}

TEST(CodedSize, OfAv1IsNoneWithMoreUnitsThanAPictureHas) {
    const std::vector<Bytes> most(4096, av1Unit(15, {}));
    expectSize(sizeOfAv1({}, joined(most)), 0, 0, 0);
    EXPECT_FALSE(sizeOfAv1(joined({Bytes(4), av1Unit(15, {})}), joined(most)));
}

}  // namespace
}  // namespace skarnel::io
