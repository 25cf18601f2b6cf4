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

    /// A frame with alpha as bytes that `add` takes; in any process, in any order. `before` is the
    /// frame that it will follow, or null: what is the same there may be left out. InvalidArgument
    /// when a size or a form is another.
    virtual Result<Bytes> encode(const CGImage& frame, const CGImage* before) const = 0;

    /// Appends a frame that an encoder of the same kind has encoded.
    virtual Result<void> add(ByteView encoded) = 0;

    /// Whether frames are smaller for knowing the one before them.
    virtual bool usesFrameBefore() const = 0;

    /// The whole file, looked at as by encodeImage; InvalidArgument without any frame. The encoder
    /// is used up.
    virtual Result<Bytes> finish() = 0;
};

}  // namespace skarnel
