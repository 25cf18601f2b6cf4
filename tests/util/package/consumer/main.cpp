// A program that knows the utility library only as it is installed: uses a part of each unit.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "imaging/cgcontext.h"
#include "util/geometry/geometry.h"
#include "util/image/average.h"
#include "util/image/dragging.h"
#include "util/image/nice_scaling.h"
#include "util/image/nsimage_extensions.h"
#include "util/image/scaling.h"
#include "util/misc/find_folder.h"
#include "util/misc/image_browser_item.h"
#include "util/misc/rand.h"
#include "util/package/skarnel_util_version.h"
#include "util/string/nsstring_extensions.h"

namespace {

using namespace skarnel;

int failures = 0;

void check(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    ++failures;
}
#define CHECK(condition) check(condition, #condition)

NSImage redImage(int width, int height) {
    auto context = CGContext::create(width, height);
    context->setFillColor({1, 0, 0, 1});
    context->fillRect({0, 0, static_cast<double>(width), static_cast<double>(height)});
    NSImage image =
        NSImage::initWithSize({static_cast<double>(width), static_cast<double>(height)});
    image.addRepresentation(NSBitmapImageRep::initWithCGImage(*context->createImage()));
    return image;
}

void checkStrings() {
    using namespace NSStringExtensions;
    CHECK(stringByDecodingHTMLEntities(u"a &amp; b"_ns) == u"a & b"_ns);
    CHECK(flattenHTML(u"<p>caf&eacute;</p>"_ns) == u"caf\u00E9\n"_ns);
    CHECK(extractBetweenPattern(u"<B>bold</b>"_ns, u"<b>"_ns, u"</b>"_ns) == u"bold"_ns);
    CHECK(runScript(u"6 * 7"_ns) == u"42"_ns);
    const NSMutableString item(u"/a/b.png"_ns);
    CHECK(NSMutableString_IKImageBrowserView::imageTitle(item) == u"b.png"_ns);
}

void checkImages() {
    NSImage image = redImage(40, 20);
    const auto fitted = NiceScaling::scaledImageToFitSize(image, {10, 10});
    CHECK(fitted && fitted->size() == (CGSize{10, 10}));
    CHECK(Scaling::createRepresentationOfSize(image, {16, 16}));
    CHECK(NSImageExtensions::getCGImageRef(image)->width() == 40);
    CHECK(Scaling::imageByAdjustingHue(image, 0.5F).has_value());
    CHECK(Average::averageColor(image).has_value());
    CHECK(Dragging::imageWithAlphaComponent(image, 1).has_value());
    const auto turned = NSImageExtensions::imageByRotatingByDegrees(image, 90);
    CHECK(turned && turned->size() == (CGSize{20, 40}));
}

}  // namespace

int main() {
    CHECK(std::string_view(skarnelUtilVersion()).starts_with("1."));
    CHECK(rectFromSize({2, 3}) == (CGRect{0, 0, 2, 3}));
    CHECK(Rand(0) == 0);
    FSRef reference;
    CHECK(FSPathMakeRef("/", &reference, nullptr) == 0);
    CHECK(GetObjectDisplayName(reference) == u"/"_ns);
    checkStrings();
    checkImages();
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
