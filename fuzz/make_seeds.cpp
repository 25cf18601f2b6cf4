// make_seeds FOLDER: writes the readers' seeds, small files of every variety.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "imaging/io/decoder_protocol.h"
#include "imaging/io/encoder_protocol.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"
#include "imaging/io/profile_files.h"

using namespace skarnel;
using namespace skarnel::testing;

namespace {

std::filesystem::path folder;

void save(const std::string& target, const std::string& name, const Bytes& bytes) {
    std::filesystem::create_directories(folder / target);
    std::ofstream(folder / target / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

Bytes encoded(std::string_view type, const ImageProperties& properties = {}) {
    return *encodeImage(randomValidPicture(9, 7, 3), type, properties);
}

ImageProperties with(std::string_view key, PropertyValue value) {
    return {{std::string(key), std::move(value)}, {std::string(kPropertyDpiWidth), 300.0}};
}

void saveTiffs() {
    for (const std::int64_t compression : {1, 5, 8, 32773}) {
        save("tiff", "rgba" + std::to_string(compression),
             encoded(kUTTypeTIFF, with(kPropertyTiffCompression, compression)));
    }
    for (const std::uint32_t photometric : {0U, 1U, 3U}) {
        for (const std::uint32_t bits : {1U, 4U, 8U, 16U}) {
            if (photometric == 3 && bits > 8) continue;
            TiffBuilder tiff(4, 3, photometric, {bits});
            tiff.blocks = {Bytes(24, 0x5A)};
            if (photometric == 3) tiff.tags[320] = std::vector<std::uint32_t>(3U << bits, 999);
            tiff.bigEndian = bits == 4;
            tiff.bigTiff = bits == 8;
            save("tiff", "grey" + std::to_string(photometric) + "_" + std::to_string(bits),
                 tiff.build());
        }
    }
    TiffBuilder tiles(20, 5, 5, {8, 8, 8, 8});
    tiles.tags[322] = tiles.tags[323] = {16};
    tiles.tags[274] = {6};
    tiles.blocks.assign(2, Bytes(1024, 70));
    save("tiff", "cmyktiles", tiles.build());
    TiffBuilder planes(4, 2, 2, {8, 8, 8});
    planes.tags[284] = {2};
    planes.blocks.assign(3, Bytes(8, 70));
    save("tiff", "planes", planes.build());
    TiffBuilder ycc(4, 4, 6, {8, 8, 8});
    ycc.tags[530] = {2, 2};
    ycc.blocks = {Bytes(24, 120)};
    save("tiff", "ycc", ycc.build());
}

void savePsds() {
    for (const std::uint16_t packing : {0, 1, 2, 3}) {
        for (const std::uint16_t depth : {8, 16, 32}) {
            PsdBuilder psd;
            psd.width = 3;
            psd.height = 2;
            psd.depth = depth;
            psd.packing = packing;
            psd.big = depth == 16;
            psd.mode = packing == 2 ? 4 : 3;
            psd.rows.assign(packing == 2 ? 10U : 8U, Bytes(3U * depth / 8U, 0x3E));
            psd.resources = ByteSink(true).text("8BIM").u16(1005).u16(0).u32(16).zeros(16).bytes;
            save("psd", std::to_string(packing) + "_" + std::to_string(depth), psd.build());
        }
    }
    PsdBuilder indexed;
    indexed.mode = 2;
    indexed.palette = Bytes(768, 9);
    indexed.rows = {{5}};
    save("psd", "indexed", indexed.build());
    PsdBuilder bitmap;
    bitmap.mode = 0;
    bitmap.depth = 1;
    bitmap.rows = {{0x80}};
    save("psd", "bitmap", bitmap.build());
}

void saveBmps() {
    save("bmp", "alpha", encoded(kUTTypeBMP));
    for (const std::uint16_t bits : {1, 4, 8, 16, 24, 32}) {
        BmpBuilder bmp;
        bmp.width = 5;
        bmp.height = bits == 4 ? -2 : 2;
        bmp.bits = bits;
        bmp.headerBytes = bits == 1 ? 12 : 40;
        if (bits <= 8) bmp.palette = Bytes((bits == 1 ? 3U : 4U) << bits, 80);
        bmp.pixels = Bytes(60, 0x21);
        save("bmp", std::to_string(bits), bmp.build());
    }
    BmpBuilder runs;
    runs.bits = 8;
    runs.width = 4;
    runs.height = 3;
    runs.compression = 1;
    runs.colors = 4;
    runs.palette = Bytes(16, 50);
    runs.pixels = {2, 1, 1, 2, 0, 0, 0, 3, 3, 2, 1, 0, 0, 2, 1, 0, 1, 3, 0, 1};
    save("bmp", "runs8", runs.build());
    runs.bits = 4;
    runs.compression = 2;
    save("bmp", "runs4", runs.build());
}

/// A BMP, since a PNG packs its profile.
void saveProfile() {
    const Bytes curve =
        curveOf({0, 1}, {formulaSegment(1), sampledSegment({0.5F, 1}), formulaSegment(1)});
    const std::vector<Bytes> elements = {curvesElement(3, curve),
                                         tableElement(3, 3, std::vector<float>(24, 0.5F)),
                                         matrixElement(3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0})};
    BmpBuilder bmp;
    bmp.headerBytes = 124;
    bmp.bits = 32;
    bmp.compression = 3;
    bmp.masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    bmp.pixels = {1, 2, 3, 255};
    bmp.profile = profileOf({{"wtpt", whitePoint()}, {"D2B1", chainOf(3, 3, elements)}});
    save("bmp", "profile", bmp.build());
}

void savePngs() {
    save("png", "rgba", encoded(kUTTypePNG));
    save("png", "palette",
         buildPng(3, 1, 2, 3, {0x18}, {{"PLTE", Bytes(9, 90)}, {"tRNS", {255, 128}}}));
    save("png", "grey16", buildPng(1, 2, 16, 4, Bytes(8, 0x90), {{"gAMA", {0, 1, 2, 3}}}));
    save("png", "text",
         buildPng(1, 1, 8, 0, {7},
                  {{"pHYs", {0, 0, 9, 9, 0, 0, 9, 9, 1}}, {"tEXt", {'a', 0, 'b'}}}));
}

Bytes exifBlock() {
    ByteSink out(true);
    out.text("MM").u16(42).u32(8).u16(4);
    out.u16(0x0112).u16(3).u32(1).u16(6).u16(0);
    out.u16(0x011A).u16(5).u32(1).u32(62);
    out.u16(0x0128).u16(3).u32(1).u16(2).u16(0);
    out.u16(0x010F).u16(2).u32(4).text("Cam").u8(0).u32(0);
    return out.u32(300).u32(1).bytes;
}

void append(Bytes& answer, io::RecordKind kind, std::uint32_t first, std::uint32_t second,
            const Bytes& data) {
    const io::AnswerRecord record{kind, first, second};
    const auto* raw = reinterpret_cast<const std::uint8_t*>(&record);
    answer.insert(answer.end(), raw, raw + sizeof record);
    answer.insert(answer.end(), data.begin(), data.end());
}

void saveAnswers() {
    const Bytes text = io::packProperties(
        kUTTypePNG, {{"a", std::int64_t{1}}, {"b", 2.5}, {"c", std::string("x")}, {"d", Bytes{9}}});
    Bytes picture;
    append(picture, io::RecordKind::Picture, 2, 3, {});
    append(picture, io::RecordKind::Rows, 1, 0, Bytes(8, 1));
    append(picture, io::RecordKind::Rows, 2, 0, Bytes(16, 2));
    append(picture, io::RecordKind::Done, static_cast<std::uint32_t>(text.size()), 0, text);
    save("decoder_protocol", "picture", picture);
    Bytes error;
    append(error, io::RecordKind::Failed, 3, 5, {'b', 'a', 'd'});
    save("decoder_protocol", "error", error);
}

void saveEncodeAnswers() {
    Bytes file;
    append(file, io::RecordKind::Encoded, 5, 0, {'f', 'i', 'l', 'e', 's'});
    save("encode_answer", "file", file);
    Bytes error;
    append(error, io::RecordKind::Failed, 4, 6, {'w', 'i', 'd', 'e'});
    save("encode_answer", "error", error);
    Bytes huge;
    append(huge, io::RecordKind::Encoded, 5, 1, {'f', 'i', 'l', 'e', 's'});
    save("encode_answer", "huge", huge);
}

void saveEncodeRequest(const std::string& name, std::string_view type, const CGImage& image,
                       const ImageProperties& properties) {
    const PixelView view = image.pixels();
    const Bytes packed = io::packProperties(type, properties);
    const io::EncodeRequest request{view.width, view.height, view.samplesPerPixel, 0,
                                    packed.size()};
    const auto* raw = reinterpret_cast<const std::uint8_t*>(&request);
    Bytes bytes(raw, raw + sizeof request);
    bytes.insert(bytes.end(), packed.begin(), packed.end());
    for (int y = 0; y < view.height; ++y) {
        bytes.insert(bytes.end(), view.row(y),
                     view.row(y) + std::ptrdiff_t{view.samplesPerPixel} * view.width);
    }
    save("encode_request", name, bytes);
}

void saveEncodeRequests() {
    const ImageProperties lossy = with(kPropertyLossyQuality, 0.5);
    for (const auto& [name, type] : {std::pair("webp", kUTTypeWebP), {"jp2", kUTTypeJPEG2000}}) {
        saveEncodeRequest(name, type, randomValidPicture(9, 7, 3), {});
        saveEncodeRequest(std::string(name) + "-lossy", type, randomValidPicture(5, 11, 3), lossy);
        // Wider than one tile.
        saveEncodeRequest(std::string(name) + "-wide", type, randomValidPicture(1030, 1, 3), {});
    }
    saveEncodeRequest("exif", kUTTypeWebP, randomValidPicture(3, 3, 3),
                      with(kPropertyExifBlock, exifBlock()));
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    folder = arguments[1];
    saveTiffs();
    savePsds();
    saveBmps();
    savePngs();
    saveProfile();
    for (const double quality : {0.3, 1.0}) {
        const std::string name = quality < 1 ? "lossy" : "best";
        save("jpeg", name, encoded(kUTTypeJPEG, with(kPropertyLossyQuality, quality)));
        save("webp", name, encoded(kUTTypeWebP, with(kPropertyLossyQuality, quality)));
        save("jp2", name, encoded(kUTTypeJPEG2000, with(kPropertyLossyQuality, quality)));
    }
    save("gif", "clear", buildGif(7, 5, Bytes(768, 9), Bytes(35, 3), 2));
    save("gif", "opaque", buildGif(2, 2, Bytes(768, 9), Bytes(4, 3)));
    save("exif", "block", exifBlock());
    saveAnswers();
    saveEncodeAnswers();
    saveEncodeRequests();
    return 0;
}
