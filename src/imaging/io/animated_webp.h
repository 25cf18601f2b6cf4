// Animated WebP through the format's own library.
#pragma once

#include <memory>

#include "imaging/io/animation.h"

namespace skarnel::io {

/// Null when the library cannot be set up.
std::unique_ptr<AnimationEncoder> animatedWebPEncoder(int width, int height, int frameMilliseconds,
                                                      const ImageProperties& properties);

}  // namespace skarnel::io
