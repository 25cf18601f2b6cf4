// Shared by the TIFF reader and writer: a libtiff handle over memory, with its errors kept.
#pragma once

#include <array>
#include <cstdarg>
#include <cstdio>
#include <memory>

#include "imaging/io/tiff_library.h"

namespace skarnel::io {

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

/// The first error is the cause; later ones follow from it. Warnings are dropped.
struct TiffErrors {
    std::array<char, 200> message{};

    static int onError(TIFF*, void* self, const char*, const char* format, va_list arguments) {
        auto& message = static_cast<TiffErrors*>(self)->message;
        if (message[0] == 0) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
            std::vsnprintf(message.data(), message.size(), format, arguments);
#pragma GCC diagnostic pop
        }
        return 1;
    }
    static int onWarning(TIFF*, void*, const char*, const char*, va_list) {
        return 1;
    }
};

/// Opens over client functions; `maxAllocation` bounds each single allocation of the library.
struct TiffClient {
    thandle_t data;
    TIFFReadWriteProc read;
    TIFFReadWriteProc write;
    TIFFSeekProc seek;
    TIFFSizeProc size;
    TIFFMapFileProc map = nullptr;
};

inline TiffHandle openTiff(const TiffClient& client, const char* mode, TiffErrors& errors,
                           tmsize_t maxAllocation) {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (options == nullptr) return nullptr;
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, maxAllocation);
    TIFFOpenOptionsSetErrorHandlerExtR(options, TiffErrors::onError, &errors);
    TIFFOpenOptionsSetWarningHandlerExtR(options, TiffErrors::onWarning, nullptr);
    TiffHandle tiff(TIFFClientOpenExt(
        "picture", mode, client.data, client.read, client.write, client.seek,
        [](thandle_t) { return 0; }, client.size, client.map, [](thandle_t, void*, toff_t) {},
        options));
    TIFFOpenOptionsFree(options);
    return tiff;
}

}  // namespace skarnel::io
