#include "imaging/io/color_memory.h"

#include <cstdlib>
#include <new>

#include "imaging/io/color_library.h"

namespace skarnel::io {
namespace {

/// All requests under one watch together, given back or not. A table of 129 points a side asks for
/// 103 MB, the printer profiles that come with systems for 3. To fill as much as this takes the
/// library a third of a second.
constexpr std::size_t kMostBytes = std::size_t{192} << 20;

struct Requests {
    bool watched = false;
    bool refused = false;
    bool tooMuch = false;
    std::size_t bytes = 0;
};
thread_local Requests requests;

bool mayHave(std::size_t size) {
    if (!requests.watched) return true;
    requests.bytes += size;
    if (requests.bytes > kMostBytes) requests.tooMuch = true;
    return !requests.tooMuch || size <= kSmallColorRequest;
}

void* noted(void* block) {
    if (block == nullptr) requests.refused = true;
    return block;
}

void* take(cmsContext, cmsUInt32Number size) {
    return mayHave(size) ? noted(std::malloc(size)) : nullptr;
}

void giveBack(cmsContext, void* block) {
    std::free(block);
}

void* resize(cmsContext, void* block, cmsUInt32Number size) {
    return mayHave(size) ? noted(std::realloc(block, size)) : nullptr;
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
    requests = {.watched = true, .refused = !listening};
}

ColorMemoryWatch::~ColorMemoryWatch() {
    requests.watched = false;
}

void ColorMemoryWatch::throwIfRefused() const {
    if (requests.refused) throw std::bad_alloc();
}

bool ColorMemoryWatch::hasAskedTooMuch() const {
    return requests.tooMuch;
}

}  // namespace skarnel::io
