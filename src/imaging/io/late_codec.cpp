#include "imaging/io/late_codec.h"

#include <dlfcn.h>

#include "imaging/io/readers.h"

namespace skarnel::io {

// Never closed: the codecs keep tables and thread-local data that outlive a picture.
CodecLibrary::CodecLibrary(const char* soname)
    : handle_(::dlopen(soname, RTLD_NOW | RTLD_LOCAL)), complete_(handle_ != nullptr) {}

void* CodecLibrary::find(const char* symbol) {
    void* found = handle_ == nullptr ? nullptr : ::dlsym(handle_, symbol);
    if (found == nullptr) complete_ = false;
    return found;
}

CodecNeeds prepareToDecode(ByteView firstBytes) {
    [[maybe_unused]] const ImageType* type = imageTypeOfContent(firstBytes);
#ifdef SKARNEL_HAVE_JXL
    if (type != nullptr && type->identifier == kUTTypeJPEGXL) loadJpegXL();
#endif
#ifdef SKARNEL_HAVE_HEIF
    if (type != nullptr && (type->identifier == kUTTypeHEIF || type->identifier == kUTTypeAVIF)) {
        loadHeif();
        // The HEVC decoder behind libheif always works on a thread of its own.
        return CodecNeeds::Threads;
    }
#endif
    return CodecNeeds::Nothing;
}

}  // namespace skarnel::io
