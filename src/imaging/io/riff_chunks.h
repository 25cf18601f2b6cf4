// The container of WebP (RFC 9649, 2): chunks of RIFF, written in place.
#pragma once

#include <cstddef>
#include <string_view>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// A chunk that is begun, filled by somebody else, and ended: with its size, and a byte more where
/// that is odd. Chunks may lie in one another. Throws std::bad_alloc.
class RiffChunk {
  public:
    /// Appends the front to `out`, which must outlive this. `name` has four letters.
    RiffChunk(Bytes& out, std::string_view name);
    void end();

  private:
    Bytes& out_;
    std::size_t start_;
};

/// Appends a whole chunk.
void appendRiffChunk(Bytes& out, std::string_view name, ByteView data);

/// What a file with more than a picture begins with, behind the name of the form.
struct WebPFeatures {
    int width;
    int height;
    bool alpha;
    bool exif;
};
void appendWebPFeatures(Bytes& out, const WebPFeatures& features);

}  // namespace skarnel::io
