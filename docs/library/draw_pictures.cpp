// Draws the pictures of the library's pages with the library itself.
// Usage: draw_library_pictures FOLDER
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include "card.h"
#include "util/image/dragging.h"
#include "util/image/filter_images.h"
#include "util/image/nice_scaling.h"
#include "util/image/nsimage_extensions.h"
#include "util/image/scaling.h"

namespace {

using namespace skarnel;
using namespace skarnel::library;

/// A white page with what `draw` draws.
NSImage page(CGSize size, const std::function<void(NSGraphicsContext&)>& draw) {
    NSImage image = NSImage::initWithSize(size);
    FocusLock focus(image);
    focus->setColor(NSColor::whiteColor());
    focus->fillRect(rectFromSize(size));
    focus->setImageInterpolation(InterpolationQuality::High);
    draw(focus.context());
    focus.unlock();
    return image;
}

void frame(NSGraphicsContext& context, CGRect rect, double white) {
    context.setColor(gray(white));
    context.strokeRect({rect.x - 0.5, rect.y - 0.5, rect.width + 1, rect.height + 1});
}

/// One canvas with what is kept; what is cut off lies faded around it.
void drawAligned(NSGraphicsContext& context, const NSImage& card, int code, CGPoint at) {
    constexpr CGSize kTarget{64, 64};
    const NSImage faded = Dragging::imageWithAlphaComponent(card, 0.5F).value();
    const CGSize scaled = NiceScaling::scaledSizeToCoverSize(card, kTarget);
    const CGPoint origin = NiceScaling::coverOrigin(scaled, kTarget, code);
    drawInto(context, faded, {at.x + origin.x, at.y + origin.y, scaled.width, scaled.height});
    const auto kept = NiceScaling::scaledImageToCoverSize(card, kTarget, InterpolationQuality::High,
                                                          NiceScaling::Box::No, code);
    drawInto(context, *kept, {at.x, at.y, kTarget.width, kTarget.height});
    frame(context, {at.x, at.y, kTarget.width, kTarget.height}, 0);
}

/// A wide and a high picture by each alignment code, in the places that the codes name.
NSImage alignTable() {
    constexpr int kCodes[3][3] = {{2, 1, 3}, {4, 0, 8}, {6, 5, 7}};
    const NSImage wide = testCard(160, 100);
    const NSImage high = testCard(100, 160);
    return page({750, 480}, [&](NSGraphicsContext& context) {
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 3; ++column) {
                const int code = kCodes[row][column];
                const CGPoint at{50 + column * 250.0, 368 - row * 158.0};
                drawAligned(context, wide, code, at);
                drawAligned(context, high, code, {at.x + 116, at.y});
                context.setColor(gray(0.2));
                drawNumber(context, code, {at.x + 87, at.y - 26});
            }
    });
}

/// Rows: a square and a wide target. Columns: landscape, portrait and square sources fitted, then
/// the landscape one covering.
NSImage fitAgainstCover() {
    const NSImage sources[3] = {testCard(160, 100), testCard(100, 160), testCard(120, 120)};
    return page({620, 290}, [&](NSGraphicsContext& context) {
        const CGSize targets[2] = {{120, 120}, {120, 60}};
        for (int row = 0; row < 2; ++row) {
            const CGSize target = targets[row];
            const double y = row == 0 ? 145 : 40;
            for (int column = 0; column < 4; ++column) {
                const CGRect place{25 + column * 150.0, y, target.width, target.height};
                const NSImage& source = sources[column < 3 ? column : 0];
                const auto drawn = column < 3 ? NiceScaling::scaledImageToFitSize(source, target)
                                              : NiceScaling::scaledImageToCoverSize(source, target);
                context.setColor(gray(0.93));
                context.fillRect(place);
                drawInto(context, *drawn, place);
                frame(context, place, 0.45);
            }
        }
    });
}

/// The extent (framed) and the origin (cross) of a card turned by 0, 30, 90, 135 and 270 degrees.
NSImage rotation() {
    const NSImage card = testCard(90, 60);
    return page({760, 260}, [&](NSGraphicsContext& context) {
        const int angles[] = {0, 30, 90, 135, 270};
        const double origins[] = {25, 200, 395, 590, 650};
        for (int each = 0; each < 5; ++each) {
            const CIImage turned =
                RotateCIImage(filterImageOf(card).value(), static_cast<std::int16_t>(angles[each]));
            const CGRect extent = turned.extent();
            const CGPoint origin{origins[each], 130};
            const CGRect place = NSOffsetRect(extent, origin.x, origin.y);
            drawInto(context, NSImageExtensions::imageWithCIImage(turned), place);
            frame(context, place, 0.6);
            context.setColor(NSColor::colorWithDeviceRed(0.85, 0.1, 0.1, 1));
            context.fillRect({origin.x - 8, origin.y - 1, 17, 2});
            context.fillRect({origin.x - 1, origin.y - 8, 2, 17});
            context.setColor(gray(0.2));
            drawNumber(context, angles[each], {place.midX() - 10, 12});
        }
    });
}

/// Eight turns of the hue; below, saturation from 0 to 2.
NSImage hueAndSaturation() {
    const NSImage card = testCard(80, 60);
    return page({740, 160}, [&](NSGraphicsContext& context) {
        for (int each = 0; each < 8; ++each) {
            const double x = 10 + each * 91.0;
            drawInto(context, *Scaling::imageByAdjustingHue(card, static_cast<float>(each) / 8),
                     {x, 90, 80, 60});
            drawInto(context,
                     *Scaling::imageByAdjustingHue(card, 0, static_cast<float>(each) * 2 / 7),
                     {x, 15, 80, 60});
        }
    });
}

/// The card itself, then each named filter with its defaults (the blur with a smaller radius).
NSImage filters() {
    const NSImage card = testCard(110, 80);
    return page({620, 110}, [&](NSGraphicsContext& context) {
        drawInto(context, card, {10, 15, 110, 80});
        double x = 132;
        for (const char* name : {"CISepiaTone", "CIColorInvert"}) {
            drawInto(context, *NSImageExtensions::imageWithCIFilter(card, name), {x, 15, 110, 80});
            x += 122;
        }
        const auto filtered = [&card](const char* name, CIValue value, const char* key) {
            CIFilter filter = CIFilter::filterWithName(name).value();
            filter.setValue(filterImageOf(card).value(), "inputImage");
            filter.setValue(std::move(value), key);
            return filter.outputImage().value();
        };
        const CIImage soft = filtered("CIGaussianBlur", 3.0, "inputRadius");
        drawInto(context, NSImageExtensions::imageWithCIImage(soft),
                 NSOffsetRect(soft.extent(), x, 15));
        const CIImage part = filtered("CICrop", CGRect{40, 20, 60, 45}, "inputRectangle");
        const CGRect place{x + 122, 15, 110, 80};
        frame(context, place, 0.75);
        drawInto(context, NSImageExtensions::imageWithCIImage(part),
                 NSOffsetRect(part.extent(), place.x, place.y));
    });
}

bool write(const std::string& path, const NSImage& image) {
    const auto bitmap = NSImageExtensions::getCGImageRef(image);
    const auto data = encodeImage(*bitmap, kUTTypePNG);
    if (!data) return false;
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(data->data()),
               static_cast<std::streamsize>(data->size()));
    return file.good();
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    const std::string folder = std::string(arguments[1]) + "/";
    const bool written = write(folder + "align-table.png", alignTable()) &&
                         write(folder + "fit-against-cover.png", fitAgainstCover()) &&
                         write(folder + "rotation.png", rotation()) &&
                         write(folder + "hue-and-saturation.png", hueAndSaturation()) &&
                         write(folder + "filters.png", filters());
    return written ? EXIT_SUCCESS : EXIT_FAILURE;
}
