#include "imaging/io/late_codec.h"

#include <dlfcn.h>

#include "imaging/io/color_library.h"
#include "imaging/io/exif_library.h"
#include "imaging/io/jp2_library.h"
#include "imaging/io/jpeg_library.h"
#include "imaging/io/png_library.h"
#include "imaging/io/readers.h"
#include "imaging/io/tiff_library.h"
#include "imaging/io/webp_library.h"
#include "imaging/io/zlib_library.h"
#ifdef SKARNEL_HAVE_GIF
#include "imaging/io/gif_library.h"
#include "util/log/message.h"
#endif

namespace skarnel::io {

// Never closed: the codecs keep tables and thread-local data that outlive a picture.
CodecLibrary::CodecLibrary(const char* soname)
    : handle_(::dlopen(soname, RTLD_NOW | RTLD_LOCAL)), complete_(handle_ != nullptr) {}

void* CodecLibrary::find(const char* symbol) {
    void* found = handle_ == nullptr ? nullptr : ::dlsym(handle_, symbol);
    if (found == nullptr) complete_ = false;
    return found;
}

bool LateLibraries::load() {
    const std::lock_guard lock(mutex_);
    if (loaded_) return true;
    std::vector<CodecLibrary> libraries;
    libraries.reserve(sonames_.size());
    for (const char* soname : sonames_) libraries.emplace_back(soname);
    bind_(libraries);
    loaded_ = true;
    for (const CodecLibrary& library : libraries) loaded_ = loaded_ && library.complete();
    return loaded_;
}

Result<void> LateLibraries::need() {
    if (load()) return {};
    std::string names;
    for (const char* soname : sonames_) names += std::string(names.empty() ? "" : ", ") + soname;
    return {ErrorCode::Unsupported, filled("This cannot be loaded or does not fit: %1", {names})};
}

namespace {

LateLibraries* libraryOfType(std::string_view type) {
    if (type == kUTTypeJPEG) return &jpegLibrary();
    if (type == kUTTypePNG) return &pngLibrary();
    if (type == kUTTypeTIFF) return &tiffLibrary();
    if (type == kUTTypePSD) return &zlibLibrary();
    if (type == kUTTypeJPEG2000) return &jp2Library();
    if (type == kUTTypeWebP) return &webpLibrary();
#ifdef SKARNEL_HAVE_GIF
    if (type == kUTTypeGIF) return &gifLibrary();
#endif
    return nullptr;
}

}  // namespace

void prepareToEncode(std::string_view type) {
    if (LateLibraries* library = libraryOfType(type)) (void)library->load();
}

CodecNeeds prepareToDecode(ByteView firstBytes, Rest rest) {
    const ImageType* type = imageTypeOfContent(firstBytes);
    if (type == nullptr) return CodecNeeds::Nothing;
    if (LateLibraries* library = libraryOfType(type->identifier)) (void)library->load();
    if (rest == Rest::Unknown) {
        (void)colorLibrary().load();
        (void)exifLibrary().load();
    }
#ifdef SKARNEL_HAVE_JXL
    if (type->identifier == kUTTypeJPEGXL) {
        loadJpegXL();
        return CodecNeeds::Bounds;
    }
#endif
#ifdef SKARNEL_HAVE_HEIF
    if (type->identifier == kUTTypeHEIF || type->identifier == kUTTypeAVIF) {
        loadHeif();
        // The HEVC decoder behind libheif always works on a thread of its own.
        return CodecNeeds::Threads;
    }
#endif
    return type->identifier == kUTTypeJPEG2000 ? CodecNeeds::Bounds : CodecNeeds::Nothing;
}

}  // namespace skarnel::io
