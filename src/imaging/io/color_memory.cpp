#include "imaging/io/color_memory.h"

#include <cstdlib>
#include <new>

#include "imaging/io/color_library.h"

namespace skarnel::io {
namespace {

/// The library's own bound: nothing but a damaged profile asks for more.
constexpr cmsUInt32Number kMostBytes = cmsUInt32Number{512} << 20;

thread_local bool refused = false;

void* noted(void* block) {
    if (block == nullptr) refused = true;
    return block;
}

void* take(cmsContext, cmsUInt32Number size) {
    return size > kMostBytes ? nullptr : noted(std::malloc(size));
}

void giveBack(cmsContext, void* block) {
    std::free(block);
}

void* resize(cmsContext, void* block, cmsUInt32Number size) {
    return size > kMostBytes ? nullptr : noted(std::realloc(block, size));
}

bool listen() {
    static cmsPluginMemHandler handler = {
        {cmsPluginMagicNumber, LCMS_VERSION, cmsPluginMemHandlerSig, nullptr},
        take,
        giveBack,
        resize,
        nullptr,
        nullptr,
        nullptr};
    return cmsPlugin(&handler) != 0;
}

}  // namespace

ColorMemoryWatch::ColorMemoryWatch() {
    static const bool listening = listen();
    refused = !listening;
}

void ColorMemoryWatch::throwIfRefused() const {
    if (refused) throw std::bad_alloc();
}

}  // namespace skarnel::io
