#include "imaging/io/animation.h"

#include "imaging/io/animated_png.h"
#include "imaging/io/animated_webp.h"

namespace skarnel {

std::unique_ptr<AnimationEncoder> AnimationEncoder::create(std::string_view typeIdentifier,
                                                           int width, int height,
                                                           int frameMilliseconds,
                                                           const ImageProperties& properties) {
    if (typeIdentifier == kUTTypePNG) {
        return io::animatedPngEncoder(width, height, frameMilliseconds, properties);
    }
    if (typeIdentifier == kUTTypeWebP) {
        return io::animatedWebPEncoder(width, height, frameMilliseconds, properties);
    }
    return nullptr;
}

}  // namespace skarnel
