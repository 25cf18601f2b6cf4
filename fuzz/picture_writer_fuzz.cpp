// A writer with pictures and properties of any kind: it succeeds, and a lossless one gives the
// very pixels back.
#include <algorithm>
#include <array>

#include "imaging/io/animation.h"
#include "imaging/io/image_io.h"
#include "input.h"
#ifdef FUZZ_WRITER
#include "imaging/io/vp8l_writer.h"
#endif
#ifdef FUZZ_BANDS
#include "imaging/io/webp_lossy_writer.h"
#include "imaging/io/writers.h"
#endif

using namespace skarnel;

namespace {

constexpr std::string_view kType = FUZZ_TYPE;
constexpr bool kAnimated = FUZZ_ANIMATED;

/// Wide enough for rows of several kilobytes, small enough for thousands of runs a second.
constexpr int kLargestSide = 96;

/// Pixels from the bytes, again and again; each time changed where `noisy`, so that both what
/// packs well and what does not is met.
CGImage pictureOf(fuzz::Input& input, int width, int height, int samples, bool noisy) {
    const auto bytes = input.rest();
    std::uint32_t noise = 1;
    std::size_t at = 0;
    const auto next = [&] {
        if (noisy) noise = noise * 1664525 + 1013904223;
        const std::uint8_t byte = bytes.empty() ? 0 : bytes[at++ % bytes.size()];
        return static_cast<std::uint8_t>(byte ^ (noisy ? noise >> 24 : 0));
    };
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const auto size = count * static_cast<std::size_t>(samples);
    const std::shared_ptr<std::uint8_t> pixels(new std::uint8_t[size],
                                               std::default_delete<std::uint8_t[]>());
    for (std::size_t i = 0; i < size; i += static_cast<std::size_t>(samples)) {
        const std::uint8_t alpha = samples == 4 ? next() : 255;
        for (std::size_t k = 0; k < 3; ++k) pixels.get()[i + k] = std::min(alpha, next());
        if (samples == 4) pixels.get()[i + 3] = alpha;
    }
    const auto stride = static_cast<std::size_t>(width) * static_cast<std::size_t>(samples);
    return *CGImage::share(pixels, width, height, stride, samples);
}

double anyNumber(fuzz::Input& input) {
    static constexpr std::array kNumbers{-1.0, 0.0, 0.01, 0.5,  0.95, 1.0,
                                         2.0,  6.0, 12.0, 72.0, 1e300};
    const std::uint8_t choice = input.byte();
    return choice < kNumbers.size() ? kNumbers[choice] : input.number<double>();
}

ImageProperties propertiesOf(fuzz::Input& input) {
    static constexpr std::array<std::int64_t, 8> kCompressions{1, 5, 8, 32946, 32773, 7, 0, -1};
    const std::uint8_t set = input.byte();
    ImageProperties properties;
    const auto put = [&](std::string_view key, PropertyValue value) {
        properties.emplace(std::string(key), std::move(value));
    };
    if ((set & 1) != 0) put(kPropertyCompressionLevel, anyNumber(input));
    if ((set & 2) != 0) put(kPropertyLossyQuality, anyNumber(input));
    if ((set & 4) != 0) put(kPropertyDpiWidth, anyNumber(input));
    if ((set & 8) != 0) put(kPropertyDpiHeight, anyNumber(input));
    if ((set & 16) != 0) put(kPropertyTiffCompression, kCompressions[input.byte() % 8]);
    if ((set & 32) != 0) put(kPropertyMatteColor, std::string(input.text().substr(0, 7)));
    if ((set & 64) != 0) {
        const auto block = input.rest();
        put(kPropertyExifBlock, Bytes(block.begin(), block.end()));
    }
    return properties;
}

bool isLossless(const ImageProperties& properties) {
#ifdef FUZZ_WRITER
    return true;
#endif
#ifdef FUZZ_BANDS
    return false;
#endif
    if (kType == kUTTypeJPEG) return false;
    if (kType != kUTTypeWebP && kType != kUTTypeJPEG2000) return true;
    const auto quality = properties.find(kPropertyLossyQuality);
    return quality == properties.end() || (!kAnimated && !(std::get<double>(quality->second) < 1));
}

Result<Bytes> encode(const CGImage& image, const ImageProperties& properties) {
#ifdef FUZZ_WRITER
    return io::FUZZ_WRITER(image, properties);
#endif
#ifdef FUZZ_BANDS
    io::ImageRows rows(image);
    return io::writeLossyWebPInBands(rows, std::min(io::qualityOf(properties, 0.8), 0.99), {});
#endif
    if (!kAnimated) return encodeImage(image, kType, properties);
    const auto encoder =
        AnimationEncoder::create(kType, image.width(), image.height(), 40, properties);
    for (const CGImage* before : {static_cast<const CGImage*>(nullptr), &image}) {
        const auto frame = encoder->encode(image, before);
        if (!frame) return frame.error();
        if (auto added = encoder->add(*frame); !added) return added.error();
    }
    return encoder->finish();
}

#ifdef FUZZ_BANDS
bool haveSameAlpha(const CGImage& actual, const CGImage& expected) {
    const PixelView a = actual.pixels();
    const PixelView b = expected.pixels();
    for (int y = 0; y < a.height; ++y) {
        for (int i = 3; i < 4 * a.width; i += 4) {
            if (a.row(y)[i] != b.row(y)[i]) return false;
        }
    }
    return true;
}
#endif

bool haveSamePixels(const CGImage& actual, const CGImage& expected) {
    const PixelView a = actual.pixels();
    const PixelView b = expected.pixels();
    if (a.width != b.width || a.height != b.height) return false;
    const auto rowBytes = std::ptrdiff_t{4} * a.width;
    for (int y = 0; y < a.height; ++y)
        if (!std::equal(a.row(y), a.row(y) + rowBytes, b.row(y))) return false;
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    const std::uint8_t shape = input.byte();
    const int width = 1 + input.byte() % kLargestSide;
    const int height = 1 + input.byte() % kLargestSide;
    const ImageProperties properties = propertiesOf(input);
    const int samples = (shape & 1) != 0 ? 3 : 4;
    const CGImage image = pictureOf(input, width, height, samples, (shape & 2) != 0);
    const auto file = encode(image, properties);
    if (kAnimated && samples == 3) {
        fuzz::demand(!file && file.error().code == ErrorCode::InvalidArgument);
        return 0;
    }
    fuzz::demand(file.hasValue());
    const auto back = decodeImage(*file);
    fuzz::demand(back && back->image.width() == width && back->image.height() == height);
#ifdef FUZZ_BANDS
    fuzz::demand(haveSameAlpha(back->image, *image.withAlpha()));
#endif
    if (isLossless(properties)) fuzz::demand(haveSamePixels(back->image, *image.withAlpha()));
    return 0;
}
