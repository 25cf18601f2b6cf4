// Shared by the JPEG 2000 reader and writer: owners of OpenJPEG's objects, and the file's boxes.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "imaging/io/jp2_library.h"
#include "imaging/io/writers.h"
#include "util/log/result.h"

namespace skarnel::io {

/// OpenJPEG names its streams and codecs by untyped pointers, so each needs a type of its own.
class JpStream {
  public:
    explicit JpStream(opj_stream_t* stream) : stream_(stream) {}
    JpStream(JpStream&& other) noexcept : stream_(std::exchange(other.stream_, nullptr)) {}
    JpStream& operator=(JpStream&&) = delete;
    ~JpStream() {
        if (stream_ != nullptr) opj_stream_destroy(stream_);
    }
    opj_stream_t* get() const { return stream_; }
    explicit operator bool() const { return stream_ != nullptr; }

  private:
    opj_stream_t* stream_;
};

class JpCodec {
  public:
    explicit JpCodec(opj_codec_t* codec) : codec_(codec) {}
    JpCodec(const JpCodec&) = delete;
    JpCodec& operator=(const JpCodec&) = delete;
    ~JpCodec() {
        if (codec_ != nullptr) opj_destroy_codec(codec_);
    }
    opj_codec_t* get() const { return codec_; }
    explicit operator bool() const { return codec_ != nullptr; }

  private:
    opj_codec_t* codec_;
};

struct DestroyJpImage {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using JpImage = std::unique_ptr<opj_image_t, DestroyJpImage>;

/// Keeps the codec's first error; the rest and all warnings are dropped.
class JpMessages {
  public:
    void listenTo(opj_codec_t* codec);
    Error error() const;

  private:
    std::string first_;
};

/// The capture or display resolution of a file's "res " box.
std::optional<Resolution> jp2Resolution(ByteView file);

/// The file with a resolution box put into its header; unchanged where it has no such header.
Bytes withJp2Resolution(Bytes file, const Resolution& resolution);

}  // namespace skarnel::io
