// A picture of the WebP library that frees its pixels.
#pragma once

#include "imaging/io/webp_library.h"

namespace skarnel::io {

/// To be begun with WebPPictureInitInternal.
struct WebPPictureHolder : WebPPicture {
    WebPPictureHolder() : WebPPicture() {}
    ~WebPPictureHolder() { WebPPictureFree(this); }
    WebPPictureHolder(const WebPPictureHolder&) = delete;
    WebPPictureHolder& operator=(const WebPPictureHolder&) = delete;
};

}  // namespace skarnel::io
