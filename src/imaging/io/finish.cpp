// The last steps of every reader: colours, alpha, orientation.
#include "imaging/io/color_profile.h"
#include "imaging/io/orientation.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/readers.h"

namespace skarnel::io {
namespace {

void settleAlpha(SourcePicture& picture) {
    if (picture.alpha == Alpha::Opaque) return;
    const MutablePixelView view = picture.pixels.view();
    const auto count = static_cast<std::size_t>(view.width);
    for (int y = 0; y < view.height; ++y) {
        switch (picture.alpha) {
            case Alpha::Straight:
                premultiplyRow(view.row(y), count);
                break;
            case Alpha::OverWhite:
                removeWhiteRow(view.row(y), count);
                break;
            default:
                clearTransparentRow(view.row(y), count);
        }
    }
}

}  // namespace

Result<DecodedImage> finishPicture(SourcePicture picture, std::string_view type) {
    if (!picture.profile.empty()) {
        if (std::string name = profileName(picture.profile); !name.empty()) {
            picture.properties.insert_or_assign(std::string(kPropertyProfileName), std::move(name));
        }
    }
    if (auto converted = convertToSrgb(picture); !converted) return converted.error();
    settleAlpha(picture);
    auto upright = turnUpright(std::move(picture.pixels), picture.orientation);
    if (!upright) return {ErrorCode::OutOfMemory, "Not enough memory to turn the picture"};
    return DecodedImage{CGImage(*std::move(upright)), std::move(picture.properties),
                        std::string(type)};
}

}  // namespace skarnel::io
