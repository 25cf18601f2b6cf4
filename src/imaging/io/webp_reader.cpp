// WebP through libwebp: the first frame, lossy or lossless.
#include <algorithm>
#include <cstring>
#include <memory>

#include "imaging/io/exif.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/readers.h"
#include "imaging/io/webp_library.h"

namespace skarnel::io {
namespace {

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DeleteDemuxer>;

/// Frame and chunk iterators hold references that have to be given up.
struct FrameIterator : WebPIterator {
    FrameIterator() : WebPIterator() {}
    ~FrameIterator() { WebPDemuxReleaseIterator(this); }
    FrameIterator(const FrameIterator&) = delete;
    FrameIterator& operator=(const FrameIterator&) = delete;
};

ByteView findChunk(const WebPDemuxer* demuxer, const char* fourcc) {
    WebPChunkIterator chunk;
    if (WebPDemuxGetChunk(demuxer, fourcc, 1, &chunk) == 0) return {};
    const ByteView bytes(chunk.chunk.bytes, chunk.chunk.size);
    WebPDemuxReleaseChunkIterator(&chunk);
    return bytes;  // lies in the file's own bytes
}

bool decodeFrame(const WebPIterator& frame, MutablePixelView canvas) {
    const std::int64_t right = std::int64_t{frame.x_offset} + frame.width;
    const std::int64_t bottom = std::int64_t{frame.y_offset} + frame.height;
    const bool isInside =
        std::min<std::int64_t>({frame.x_offset, frame.y_offset, frame.width - 1, frame.height - 1,
                                canvas.width - right, canvas.height - bottom}) >= 0;
    if (!isInside) return false;
    std::uint8_t* first = canvas.row(frame.y_offset) + std::ptrdiff_t{4} * frame.x_offset;
    const std::size_t size =
        static_cast<std::size_t>(canvas.strideBytes) * static_cast<std::size_t>(frame.height) -
        std::size_t{4} * static_cast<std::size_t>(frame.x_offset);
    return WebPDecodeRGBAInto(frame.fragment.bytes, frame.fragment.size, first, size,
                              static_cast<int>(canvas.strideBytes)) != nullptr;
}

/// Whether the frame's pixels may have alpha although its header denies that: in the lossless form
/// the header's word is a hint that decoding does not follow.
bool mayHideAlpha(const WebPIterator& frame) {
    constexpr int kLossless = 2;
    WebPBitstreamFeatures features{};
    // Of pixels that have been decoded; a failure would leave the format undefined.
    (void)WebPGetFeaturesInternal(frame.fragment.bytes, frame.fragment.size, &features,
                                  WEBP_DECODER_ABI_VERSION);
    return features.format == kLossless;
}

}  // namespace

Result<SourcePicture> readWebP(ByteView bytes, const DecodeLimits& limits) {
    if (auto library = webpLibrary().need(); !library) return library.error();
    const Error damaged{ErrorCode::Damaged, "The WebP picture is damaged"};
    const WebPData data{bytes.data(), bytes.size()};
    const Demuxer demuxer(WebPDemuxInternal(&data, 0, nullptr, WEBP_DEMUX_ABI_VERSION));
    FrameIterator frame;
    // Without a demuxer there is no frame either.
    (void)WebPDemuxGetFrame(demuxer.get(), 1, &frame);
    if (frame.complete == 0) return damaged;
    const auto width = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH);
    const auto height = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT);
    auto pixels = allocatePicture(width, height, limits);
    if (!pixels) return pixels.error();
    SourcePicture picture(*std::move(pixels));
    const MutablePixelView view = picture.pixels.view();
    const bool whole = frame.width == view.width && frame.height == view.height;
    if (!whole) {
        std::memset(
            view.bytes, 0,
            static_cast<std::size_t>(view.strideBytes) * static_cast<std::size_t>(view.height));
    }
    if (!decodeFrame(frame, view)) return damaged;

    const bool hasAlpha =
        frame.has_alpha != 0 || !whole || (mayHideAlpha(frame) && !isOpaque(view));
    picture.alpha = hasAlpha ? Alpha::Straight : Alpha::Opaque;
    const ByteView profile = findChunk(demuxer.get(), "ICCP");
    picture.profile.assign(profile.begin(), profile.end());
    ByteView exif = findChunk(demuxer.get(), "EXIF");
    // Some writers keep the mark that JPEG puts before the block.
    if (exif.size() > 6 && std::memcmp(exif.data(), "Exif\0\0", 6) == 0) exif = exif.subspan(6);
    const ExifFacts facts = readExif(exif, picture.properties);
    picture.orientation = facts.orientation;
    setResolution(picture.properties, facts.dpiHorizontal, facts.dpiVertical);
    describePicture(picture, "RGB", 8, hasAlpha);
    return picture;
}

}  // namespace skarnel::io
