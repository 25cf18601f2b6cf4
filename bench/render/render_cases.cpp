// The render's cases: each step alone, the whole render, the preview and the shrink to it.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>

#include "bench_case.h"
#include "imaging/cgcontext.h"
#include "imaging/kernels/targets.h"
#include "render/fitting.h"
#include "render/reflection.h"

namespace skarnel::bench {
namespace {

struct Settings {
    const char* name;
    float width, height, offset, start, gradient, alpha, turn;
};
constexpr Settings kDefaults{"defaults", 0, 100, 0, 0, 7, 200, 50};
constexpr Settings kTurned{"turned", 10, 60, 5, 10, 7, 200, 30};

std::optional<CGImage> rendered(const CGImage& picture, const Settings& s,
                                Drawing drawing = Drawing::AtOnce) {
    const RenderInputReaders readers([&] { return s.alpha; }, [] { return std::nullopt; },
                                     [&] { return s.turn; });
    auto result = addReflectionToCGImage(picture, s.width, s.height, s.offset, s.start, s.gradient,
                                         readers, drawing);
    if (!result) return std::nullopt;
    return std::move(result->image);
}

std::optional<CGImage> scaled(const CGImage& picture, CGSize size) {
    const auto context = CGContext::create(static_cast<int>(std::lround(size.width)),
                                           static_cast<int>(std::lround(size.height)));
    if (!context) return std::nullopt;
    context->setInterpolationQuality(InterpolationQuality::High);
    context->drawImage(picture, {0, 0, 1.0 * context->width(), 1.0 * context->height()});
    return std::move(*context).takeImage();
}

std::optional<CGImage> fitted(const CGImage& picture, CGSize room) {
    const CGRect place = GetDestinationRect({0, 0, 1.0 * picture.width(), 1.0 * picture.height()},
                                            {0, 0, room.width, room.height});
    return scaled(picture, place.size());
}

std::size_t bytesOf(const CGImage& image) {
    return image.bytesPerRow() * static_cast<std::size_t>(image.height());
}

Verdict compared(const std::optional<CGImage>& a, const std::optional<CGImage>& b) {
    if (!a && !b) return Verdict::NoResult;
    const bool same = a && b && a->width() == b->width() && a->height() == b->height() &&
                      std::memcmp(a->pixels().bytes, b->pixels().bytes, bytesOf(*a)) == 0;
    return same ? Verdict::Right : Verdict::Wrong;
}

/// Checked against the scalar definition of every kernel.
Case checkedCase(std::string name, const CGImage& source,
                 std::function<std::optional<CGImage>()> work) {
    Case made;
    made.name = std::move(name);
    made.bytes = [source, work] {
        const std::optional<CGImage> result = work();
        return (bytesOf(source) + (result ? bytesOf(*result) : 0)) / 2;
    };
    made.megapixels = 1e-6 * source.width() * source.height();
    made.check = [work] {
        const auto fast = work();
        const kernels::ScopedTarget scalarOnly(kernels::kScalarTarget);
        return compared(fast, work());
    };
    made.run = [work] { work(); };
    return made;
}

void addRenderCases(std::vector<Case>& cases, const std::string& size, const CGImage& picture) {
    for (const Settings& s : {kDefaults, kTurned}) {
        const std::string suffix = std::string(" ") + s.name + " " + size;
        cases.push_back(checkedCase("shape" + suffix, picture, [=] {
            const auto shaped =
                PerspectiveCIImage(*ReflectCIImage(CIImage::imageWithCGImage(picture)), s.width,
                                   s.height, s.start, s.gradient, s.alpha);
            return shaped ? CIImageGetCGImage(*shaped) : std::nullopt;
        }));
        Settings still = s;
        still.turn = 50;
        cases.push_back(
            checkedCase("composite" + suffix, picture, [=] { return rendered(picture, still); }));
        cases.push_back(
            checkedCase("render" + suffix, picture, [=] { return rendered(picture, s); }));
    }
    cases.push_back(checkedCase("turn " + size, picture,
                                [=] { return perspectiveImage(picture, kTurned.turn); }));
}

}  // namespace

CGImage photoLike(int width, int height) {
    PixelBuffer buffer = *PixelBuffer::uninitialized(width, height);
    std::uint32_t state = 1;
    for (int y = 0; y < height; ++y) {
        std::uint8_t* pixel = buffer.view().row(y);
        for (int x = 0; x < width; ++x, pixel += 4) {
            state = state * 1664525U + 1013904223U;
            const int noise = static_cast<int>(state >> 29);
            const int tile = ((x / 97) + (y / 61)) % 3 * 40;
            pixel[0] = static_cast<std::uint8_t>(100 * x / width + tile + noise);
            pixel[1] = static_cast<std::uint8_t>(120 * y / height + tile + noise);
            pixel[2] = static_cast<std::uint8_t>(60 + tile + noise);
            pixel[3] = 255;
        }
    }
    return CGImage(std::move(buffer));
}

std::vector<Case> renderCases(const std::vector<std::string>& sizes) {
    std::vector<Case> cases;
    for (const std::string& size : sizes) {
        int width = 0;
        int height = 0;
        if (std::sscanf(size.c_str(), "%dx%d", &width, &height) != 2 || width < 1 || height < 1)
            continue;
        addRenderCases(cases, size, photoLike(width, height));
    }
    const CGImage photo = photoLike(4000, 3000);
    const CGSize room{1600, 1000};
    cases.push_back(
        checkedCase("shrink 4000x3000 to 1600x1000", photo, [=] { return fitted(photo, room); }));
    const CGImage working = *fitted(photo, room);
    for (const Settings& s : {kDefaults, kTurned})
        cases.push_back(checkedCase(std::string("preview ") + s.name + " 1600x1000", working, [=] {
            const auto result = rendered(working, s, Drawing::WhenRead);
            return result ? fitted(*result, room) : std::nullopt;
        }));
    return cases;
}

}  // namespace skarnel::bench
