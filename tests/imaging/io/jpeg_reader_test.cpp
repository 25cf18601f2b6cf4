// JPEG varieties that our own writer does not make, put together by the reference library.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

/// A picture of 8 x 8 equal pixels, so that coding leaves them as they are within a step.
Bytes flatJpeg(const std::vector<std::uint8_t>& pixel, J_COLOR_SPACE given, J_COLOR_SPACE stored,
               bool adobe) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &out, &size);
    info.image_width = info.image_height = 8;
    info.input_components = static_cast<int>(pixel.size());
    info.in_color_space = given;
    jpeg_set_defaults(&info);
    jpeg_set_colorspace(&info, stored);
    jpeg_set_quality(&info, 100, TRUE);
    info.write_Adobe_marker = adobe ? TRUE : FALSE;
    jpeg_start_compress(&info, TRUE);
    std::vector<std::uint8_t> row;
    for (int x = 0; x < 8; ++x) row.insert(row.end(), pixel.begin(), pixel.end());
    for (int y = 0; y < 8; ++y) {
        JSAMPROW rows[] = {row.data()};
        jpeg_write_scanlines(&info, rows, 1);
    }
    jpeg_finish_compress(&info);
    const Bytes file(out, out + size);
    jpeg_destroy_compress(&info);
    std::free(out);
    return file;
}

Rgba decodedPixel(const Bytes& file) {
    const auto picture = decodeImage(file);
    EXPECT_TRUE(picture) << picture.error().message;
    return picture ? pixelAt(picture->image, 3, 3) : Rgba{};
}

TEST(JpegReader, GreyStandsThreeTimes) {
    const Bytes file = flatJpeg({77}, JCS_GRAYSCALE, JCS_GRAYSCALE, false);
    EXPECT_EQ(decodedPixel(file), (Rgba{77, 77, 77, 255}));
    EXPECT_EQ(textProperty(decodeImage(file)->properties, kPropertyColorModel), "Gray");
}

TEST(JpegReader, InksAreInvertedWhereTheAdobeMarkerStands) {
    // Full cyan: 255 in a plain file, 0 in one of Adobe's.
    for (const J_COLOR_SPACE stored : {JCS_CMYK, JCS_YCCK}) {
        for (const bool adobe : {false, true}) {
            // A file of YCCK is known by the marker alone.
            if (stored == JCS_YCCK && !adobe) continue;
            const std::uint8_t full = adobe ? 0 : 255;
            const std::uint8_t none = adobe ? 255 : 0;
            const Bytes cyan = flatJpeg({full, none, none, none}, JCS_CMYK, stored, adobe);
            const Rgba pixel = decodedPixel(cyan);
            EXPECT_LT(pixel[0], 80) << stored << adobe;
            EXPECT_GT(pixel[2], 180) << stored << adobe;
            const Rgba paper =
                decodedPixel(flatJpeg({none, none, none, none}, JCS_CMYK, stored, adobe));
            for (const std::uint8_t sample : paper) EXPECT_GE(sample, 252) << stored << adobe;
            EXPECT_EQ(textProperty(decodeImage(cyan)->properties, kPropertyColorModel), "CMYK");
        }
    }
}

/// The file with markers put in right behind its start.
Bytes withMarkers(const Bytes& file, const Bytes& markers) {
    Bytes all = file;
    all.insert(all.begin() + 2, markers.begin(), markers.end());
    return all;
}

Bytes marker(unsigned code, const Bytes& data) {
    return ByteSink(true).u16(code).u16(2 + data.size()).raw(data).bytes;
}

Bytes profilePiece(unsigned number, unsigned count, const Bytes& piece) {
    return marker(0xFFE2, ByteSink(true)
                              .text(std::string_view("ICC_PROFILE\0", 12))
                              .u8(number)
                              .u8(count)
                              .raw(piece)
                              .bytes);
}

TEST(JpegReader, AProfileWhosePiecesDoNotMatchCountsAsNone) {
    const Bytes plain = flatJpeg({77, 77, 77}, JCS_RGB, JCS_YCbCr, false);
    const Rgba expected = decodedPixel(plain);
    const auto joined = [](const std::vector<Bytes>& markers) {
        ByteSink all(true);
        for (const Bytes& each : markers) all.raw(each);
        return all.bytes;
    };
    const Bytes piece(40, 'p');
    for (const Bytes& markers : {
             joined({profilePiece(0, 1, piece)}),                             // counted from 0
             joined({profilePiece(1, 2, piece), profilePiece(1, 2, piece)}),  // one of them twice
             joined({profilePiece(2, 2, piece)}),                             // one is missing
             joined({profilePiece(1, 1, piece)}),                             // no profile at all
             joined({marker(0xFFE2, Bytes(13, 'I'))}),  // too short for a head
             joined({marker(0xFFE2, Bytes(60, 'M'))}),  // of another kind
             joined({marker(0xFFE1, Bytes(60, 'h'))}),  // another program's notes, not EXIF
             joined({marker(0xFFE1, Bytes(4, 'E'))}),
         }) {
        const auto picture = decodeImage(withMarkers(plain, markers));
        ASSERT_TRUE(picture) << picture.error().message;
        EXPECT_EQ(pixelAt(picture->image, 3, 3), expected);
        EXPECT_EQ(picture->properties.count(kPropertyProfileName), 0U);
        EXPECT_EQ(picture->properties.count(kPropertyExifBlock), 0U);
    }
}

TEST(JpegReader, TheJfifMarkerGivesTheResolutionPerInchOrPerCentimetre) {
    // "JFIF\0", version 1.1, the unit, 100 by 50 dots.
    const Bytes plain = flatJpeg({77}, JCS_GRAYSCALE, JCS_GRAYSCALE, false);
    const auto dpi = [&](unsigned unit) {
        Bytes file = plain;
        constexpr std::size_t kUnit = 13;
        file[kUnit] = static_cast<std::uint8_t>(unit);
        file[kUnit + 1] = 0;
        file[kUnit + 2] = 100;
        file[kUnit + 3] = 0;
        file[kUnit + 4] = 50;
        const auto picture = decodeImage(file);
        EXPECT_TRUE(picture);
        return std::pair(numberProperty(picture->properties, kPropertyDpiWidth),
                         numberProperty(picture->properties, kPropertyDpiHeight));
    };
    EXPECT_EQ(dpi(1), std::pair(100.0, 50.0));
    EXPECT_EQ(dpi(2), std::pair(254.0, 127.0));
    EXPECT_EQ(dpi(0), std::pair(-1.0, -1.0)) << "a ratio of sides only";
}

/// A progressive grey picture of one block, with tables of one code of one bit and scans that hold
/// nothing but `between`.
Bytes scansOf(int count, const Bytes& between) {
    ByteSink out(true);
    out.u16(0xFFD8).u16(0xFFDB).u16(67).u8(0).raw(Bytes(64, 1));
    out.u16(0xFFC2).u16(11).u8(8).u16(8).u16(8).u8(1).u8(1).u8(0x11).u8(0);
    for (unsigned table : {0x00U, 0x10U}) out.u16(0xFFC4).u16(20).u8(table).u8(1).zeros(15).u8(0);
    for (int i = 0; i < count; ++i) {
        const unsigned band = i == 0 ? 0 : 63;
        out.u16(0xFFDA).u16(8).u8(1).u8(1).u8(0).u8(i == 0 ? 0 : 1).u8(band).u8(0).raw(between);
    }
    return out.bytes;
}

ErrorCode codeOf(const Bytes& file) {
    const auto picture = decodeImage(file);
    return picture ? ErrorCode::Failed : picture.error().code;
}

TEST(JpegReader, MoreThanAHundredScansAreRefusedBeforeAnythingIsRead) {
    const auto code = [](int count) {
        return codeOf(ByteSink(true).raw(scansOf(count, {})).u16(0xFFD9).bytes);
    };
    EXPECT_EQ(code(100), ErrorCode::Damaged) << "nothing in them";
    EXPECT_EQ(code(101), ErrorCode::TooLarge);
}

TEST(JpegReader, ScansAreCountedBehindMarkersThatHaveNoLength) {
    // Taken for a length, what follows these markers would lead past all later scans.
    const Bytes restart = {0xFF, 0xD7, 0xFF, 0x00};
    const Bytes fill = {0xFF, 0xFF, 0xFF, 0x00};
    const Bytes stuffed = {0xFF, 0x00, 0xFF, 0x00};
    for (const Bytes& between : {restart, fill, stuffed}) {
        EXPECT_EQ(codeOf(scansOf(100, between)), ErrorCode::Damaged) << int{between[1]};
        EXPECT_EQ(codeOf(scansOf(101, between)), ErrorCode::TooLarge) << int{between[1]};
    }
}

TEST(JpegReader, AMarkerWhoseLengthIsCutOffEndsTheCount) {
    const Bytes scans = ByteSink(true).raw(scansOf(2, {})).zeros(4).bytes;
    for (const Bytes& end : {Bytes{0xFF, 0xE1, 0x00}, Bytes{0xFF, 0xE1}, Bytes{0xFF}}) {
        EXPECT_EQ(codeOf(ByteSink(true).raw(scans).raw(end).bytes), ErrorCode::Damaged);
    }
}

}  // namespace
}  // namespace skarnel
