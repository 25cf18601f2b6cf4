// Several pictures of one size as one animated file, PNG or WebP, that plays for ever.
#pragma once

#include <memory>
#include <string_view>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel {

class AnimationEncoder {
  public:
    /// Null for a type that cannot be animated here. `properties` as for encodeImage; without a
    /// quality WebP frames are lossless. Sides at least 1; frames last at least a millisecond.
    static std::unique_ptr<AnimationEncoder> create(std::string_view typeIdentifier, int width,
                                                    int height, int frameMilliseconds,
                                                    const ImageProperties& properties = {});
    AnimationEncoder() = default;
    AnimationEncoder(const AnimationEncoder&) = delete;
    AnimationEncoder& operator=(const AnimationEncoder&) = delete;
    virtual ~AnimationEncoder() = default;

    /// Appends a frame with alpha; InvalidArgument when its size or its form is another.
    virtual Result<void> add(const CGImage& frame) = 0;

    /// The whole file; InvalidArgument without any frame. The encoder is used up.
    virtual Result<Bytes> finish() = 0;
};

}  // namespace skarnel
