// Encoding and decoding 12 megapixels; checked by the picture that comes back.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "bench_case.h"
#include "imaging/io/image_io.h"

namespace skarnel::bench {
namespace {

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;
constexpr double kMegapixels = 12;
constexpr std::size_t kBytes = std::size_t{4} * kWidth * kHeight;
constexpr const char* kSize = " 4000x3000";

enum class Loss { None, Some };

bool samePixels(const CGImage& a, const CGImage& b) {
    if (a.width() != kWidth || a.height() != kHeight || b.width() != kWidth ||
        b.height() != kHeight) {
        return false;
    }
    for (int y = 0; y < kHeight; ++y) {
        if (std::memcmp(a.pixels().row(y), b.pixels().row(y), std::size_t{4} * kWidth) != 0) {
            return false;
        }
    }
    return true;
}

Verdict verdictOf(bool right) {
    return right ? Verdict::Right : Verdict::Wrong;
}

void addFormat(std::vector<Case>& cases, const CGImage& image, const std::string& name,
               std::string_view type, const ImageProperties& properties, Loss loss) {
    const auto bytes = std::make_shared<Bytes>();
    const auto comesBack = [=] {
        // Not before it is asked for: some formats take seconds.
        if (auto encoded = encodeImage(image, type, properties)) *bytes = *std::move(encoded);
        const auto decoded = decodeImage(*bytes);
        return verdictOf(decoded && decoded->image.width() == kWidth &&
                         decoded->image.height() == kHeight &&
                         (loss == Loss::Some || samePixels(decoded->image, image)));
    };
    cases.push_back({"encode " + name + kSize, [] { return kBytes; }, kMegapixels, comesBack,
                     [=] { (void)encodeImage(image, type, properties); }});
    cases.push_back({"decode " + name + kSize, [] { return kBytes; }, kMegapixels, comesBack,
                     [=] { (void)decodeImage(*bytes); }});
}

/// A file that is removed when the last case lets go of it.
std::shared_ptr<const std::string> temporaryFile(const Bytes& bytes) {
    std::string path = "/tmp/skarnel-bench-XXXXXX";
    const int descriptor = ::mkstemp(path.data());
    if (descriptor < 0) return nullptr;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(::fdopen(descriptor, "wb"),
                                                               std::fclose);
    if (!file) return nullptr;
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    return {new std::string(path), [](const std::string* name) {
                ::unlink(name->c_str());
                delete name;
            }};
}

/// The same file by both roads: what the wall costs is the difference of their wall times.
void addRoads(std::vector<Case>& cases, const CGImage& image) {
    const auto bytes = encodeImage(image, kUTTypeJPEG, {{std::string(kPropertyLossyQuality), 0.9}});
    if (!bytes) return;
    const auto path = temporaryFile(*bytes);
    if (!path) return;
    const auto alike = [=] {
        const auto here = decodeOwnImageFile(*path);
        const auto there = decodeImageFile(*path);
        return verdictOf(decoderWalls().front().stands && here && there &&
                         samePixels(here->image, there->image));
    };
    cases.push_back({std::string("open JPEG in process") + kSize, [] { return kBytes; },
                     kMegapixels, alike, [=] { (void)decodeOwnImageFile(*path); }});
    cases.push_back({std::string("open JPEG behind the wall") + kSize, [] { return kBytes; },
                     kMegapixels, alike, [=] { (void)decodeImageFile(*path); }});
}

}  // namespace

std::vector<Case> codecCases() {
    std::vector<Case> cases;
    const CGImage image = photoLike(kWidth, kHeight);
    const auto tiff = [](std::int64_t compression) {
        return ImageProperties{{std::string(kPropertyTiffCompression), compression}};
    };
    const ImageProperties lossy{{std::string(kPropertyLossyQuality), 0.9}};
    addFormat(cases, image, "TIFF-LZW", kUTTypeTIFF, tiff(5), Loss::None);
    addFormat(cases, image, "TIFF-deflate", kUTTypeTIFF, tiff(8), Loss::None);
    addFormat(cases, image, "TIFF-raw", kUTTypeTIFF, tiff(1), Loss::None);
    addFormat(cases, image, "PNG", kUTTypePNG, {}, Loss::None);
    addFormat(cases, image, "BMP", kUTTypeBMP, {}, Loss::None);
    addFormat(cases, image, "JPEG", kUTTypeJPEG, lossy, Loss::Some);
    addFormat(cases, image, "WebP", kUTTypeWebP, lossy, Loss::Some);
    addFormat(cases, image, "JPEG-2000", kUTTypeJPEG2000, lossy, Loss::Some);
    addRoads(cases, image);
    return cases;
}

}  // namespace skarnel::bench
