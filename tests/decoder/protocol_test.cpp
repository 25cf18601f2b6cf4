#include "imaging/io/decoder_protocol.h"

#include <gtest/gtest.h>

#include <random>

namespace skarnel::io {
namespace {

ImageProperties manyProperties() {
    return {{"PixelWidth", std::int64_t{-7}},
            {"DPIWidth", 299.9994},
            {"{TIFF}.Make", std::string("Ca\0mera", 7)},
            {"{Exif}.Block", Bytes{1, 0, 255}},
            {"empty", std::string()}};
}

TEST(DecoderProtocol, PropertiesSurviveTheJourney) {
    const Bytes packed = packProperties(kUTTypePNG, manyProperties());
    const auto unpacked = unpackProperties(packed);
    ASSERT_TRUE(unpacked);
    EXPECT_EQ(unpacked->type, kUTTypePNG);
    EXPECT_EQ(unpacked->properties, manyProperties());
}

TEST(DecoderProtocol, EveryPrefixOfTheTextIsRefusedOrShorter) {
    const Bytes packed = packProperties(kUTTypePNG, manyProperties());
    for (std::size_t size = 0; size < packed.size(); ++size) {
        const auto unpacked = unpackProperties(ByteView(packed).first(size));
        if (unpacked) {
            EXPECT_LT(unpacked->properties.size(), manyProperties().size()) << size;
        }
    }
}

TEST(DecoderProtocol, DamagedTextNeverDoesHarm) {
    const Bytes packed = packProperties(kUTTypePNG, manyProperties());
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        Bytes damaged = packed;
        damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
        (void)unpackProperties(damaged);
    }
}

TEST(DecoderProtocol, TextOfAnUnknownTypeIsRefused) {
    EXPECT_FALSE(unpackProperties(packProperties("public.nothing", {})));
}

AnswerHeader goodHeader() {
    AnswerHeader header;
    header.magic = kAnswerMagic;
    header.isPicture = 1;
    header.width = 10;
    header.height = 20;
    header.pixelOffset = 4096;
    header.textOffset = 8192;
    header.textBytes = 100;
    return header;
}

TEST(DecoderProtocol, AGoodHeaderIsTaken) {
    EXPECT_TRUE(checkAnswer(goodHeader(), 8292, {}));
}

TEST(DecoderProtocol, AHeaderThatLiesIsRefused) {
    struct Row {
        const char* name;
        void (*change)(AnswerHeader&);
    };
    for (const Row& row : {
             Row{"magic", [](AnswerHeader& h) { h.magic = 0; }},
             Row{"no width", [](AnswerHeader& h) { h.width = 0; }},
             Row{"no height", [](AnswerHeader& h) { h.height = 0; }},
             Row{"width beyond the file", [](AnswerHeader& h) { h.width = 1000; }},
             Row{"area beyond 64 bits", [](AnswerHeader& h) { h.width = h.height = 0xFFFFFFFF; }},
             Row{"area above the limit", [](AnswerHeader& h) { h.width = h.height = 30000; }},
             Row{"pixels in the header", [](AnswerHeader& h) { h.pixelOffset = 0; }},
             Row{"pixels inside a page", [](AnswerHeader& h) { h.pixelOffset = 4100; }},
             Row{"pixels past the end", [](AnswerHeader& h) { h.pixelOffset = 8192; }},
             Row{"pixels far away", [](AnswerHeader& h) { h.pixelOffset = ~std::uint64_t{4095}; }},
             Row{"text in the header", [](AnswerHeader& h) { h.textOffset = 8; }},
             Row{"text past the end", [](AnswerHeader& h) { h.textBytes = 101; }},
             Row{"text far away", [](AnswerHeader& h) { h.textOffset = ~std::uint64_t{0}; }},
             Row{"text without end", [](AnswerHeader& h) { h.textBytes = ~std::uint64_t{0}; }},
         }) {
        AnswerHeader header = goodHeader();
        row.change(header);
        EXPECT_FALSE(checkAnswer(header, 8292, {})) << row.name;
    }
}

}  // namespace
}  // namespace skarnel::io
