// libwebp and its two companions for the container, loaded when the first WebP is met.
#pragma once

#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include "imaging/io/late_codec.h"

namespace skarnel::io {

LateLibraries& webpLibrary();

// The headers' inline functions call the library by themselves; what they call stands here.
#define SKARNEL_WEBP(each)                                                                     \
    each(WebPConfigInitInternal) each(WebPConfigLosslessPreset) each(WebPValidateConfig)       \
        each(WebPPictureInitInternal) each(WebPPictureAlloc) each(WebPPictureFree)             \
            each(WebPPictureImportRGBA) each(WebPMemoryWriterInit) each(WebPMemoryWriterClear) \
                each(WebPMemoryWrite) each(WebPEncode) each(WebPFree) each(WebPDecodeRGBAInto) \
                    each(WebPGetFeaturesInternal)
#define SKARNEL_WEBP_DEMUX(each)                                                              \
    each(WebPDemuxInternal) each(WebPDemuxDelete) each(WebPDemuxGetI) each(WebPDemuxGetFrame) \
        each(WebPDemuxReleaseIterator) each(WebPDemuxGetChunk) each(WebPDemuxReleaseChunkIterator)
#define SKARNEL_WEBP_MUX(each)                                                     \
    each(WebPNewInternal) each(WebPMuxPushFrame) each(WebPMuxSetAnimationParams)   \
        each(WebPMuxSetCanvasSize) each(WebPMuxCreateInternal) each(WebPMuxDelete) \
            each(WebPMuxSetChunk) each(WebPMuxAssemble)
SKARNEL_WEBP(SKARNEL_LATE)
SKARNEL_WEBP_DEMUX(SKARNEL_LATE)
SKARNEL_WEBP_MUX(SKARNEL_LATE)

}  // namespace skarnel::io
