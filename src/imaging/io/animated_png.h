// Animated PNG: the frames are ordinary PNG pictures whose chunks are numbered and strung together.
#pragma once

#include <memory>

#include "imaging/io/animation.h"

namespace skarnel::io {

std::unique_ptr<AnimationEncoder> animatedPngEncoder(int width, int height, int frameMilliseconds,
                                                     const ImageProperties& properties);

}  // namespace skarnel::io
