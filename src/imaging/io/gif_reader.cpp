// GIF through giflib: the first frame on its canvas.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "imaging/io/gif_library.h"
#include "imaging/io/readers.h"

namespace skarnel::io {
namespace {

int readMemory(GifFileType* gif, GifByteType* target, int count) {
    auto& rest = *static_cast<ByteView*>(gif->UserData);
    const std::size_t part = std::min(rest.size(), static_cast<std::size_t>(std::max(count, 0)));
    if (part > 0) std::memcpy(target, rest.data(), part);
    rest = rest.subspan(part);
    return static_cast<int>(part);
}

struct CloseGif {
    void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};
using GifHandle = std::unique_ptr<GifFileType, CloseGif>;

/// Reads up to the first frame's description; the transparent index, or -1.
bool findFirstFrame(GifFileType* gif, int& transparent) {
    for (;;) {
        GifRecordType record = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif, &record) == GIF_ERROR) return false;
        if (record == IMAGE_DESC_RECORD_TYPE) return DGifGetImageDesc(gif) != GIF_ERROR;
        if (record != EXTENSION_RECORD_TYPE) return false;
        int code = 0;
        GifByteType* block = nullptr;
        if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) return false;
        while (block != nullptr) {
            GraphicsControlBlock control;
            if (code == GRAPHICS_EXT_FUNC_CODE &&
                DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
                transparent = control.TransparentColor;
            }
            if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) return false;
        }
    }
}

using Palette = std::array<std::array<std::uint8_t, 4>, 256>;

Palette makePalette(const GifFileType& gif, int transparent) {
    Palette palette;
    palette.fill({0, 0, 0, 255});
    const ColorMapObject* colors =
        gif.Image.ColorMap != nullptr ? gif.Image.ColorMap : gif.SColorMap;
    for (int i = 0; colors != nullptr && i < std::min(colors->ColorCount, 256); ++i) {
        const GifColorType& color = colors->Colors[i];
        palette[static_cast<std::size_t>(i)] = {color.Red, color.Green, color.Blue, 255};
    }
    if (transparent >= 0) palette[static_cast<std::size_t>(transparent)] = {};
    return palette;
}

bool readFrame(GifFileType* gif, const Palette& palette, MutablePixelView canvas) {
    const GifImageDesc& frame = gif->Image;
    Bytes line(static_cast<std::size_t>(frame.Width));
    struct Pass {
        int first;
        int step;
    };
    constexpr std::array<Pass, 4> kInterlaced = {{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
    const std::size_t passes = frame.Interlace ? kInterlaced.size() : 1;
    for (std::size_t i = 0; i < passes; ++i) {
        const Pass pass = frame.Interlace ? kInterlaced[i] : Pass{0, 1};
        for (int y = pass.first; y < frame.Height; y += pass.step) {
            if (DGifGetLine(gif, line.data(), frame.Width) == GIF_ERROR) return false;
            std::uint8_t* out = canvas.row(frame.Top + y) + std::ptrdiff_t{4} * frame.Left;
            for (const std::uint8_t index : line) {
                std::copy(palette[index].begin(), palette[index].end(), out);
                out += 4;
            }
        }
    }
    return true;
}

}  // namespace

Result<SourcePicture> readGif(ByteView bytes, const DecodeLimits& limits) {
    if (auto library = gifLibrary().need(); !library) return library.error();
    const Error damaged{ErrorCode::Damaged, "The GIF picture is damaged"};
    ByteView rest = bytes;
    int error = 0;
    const GifHandle gif(DGifOpen(&rest, readMemory, &error));
    int transparent = -1;
    if (!gif || !findFirstFrame(gif.get(), transparent)) return damaged;
    const GifImageDesc& frame = gif->Image;
    if (frame.Width < 1 || frame.Height < 1) return damaged;
    // A frame that reaches beyond its canvas enlarges it, as all viewers have it.
    const std::int64_t width =
        std::max<std::int64_t>(gif->SWidth, std::int64_t{frame.Left} + frame.Width);
    const std::int64_t height =
        std::max<std::int64_t>(gif->SHeight, std::int64_t{frame.Top} + frame.Height);
    if (auto tooLarge = checkPictureSize(width, height, limits)) return *tooLarge;
    auto buffer = PixelBuffer::zeroed(static_cast<int>(width), static_cast<int>(height));
    if (!buffer) return {ErrorCode::OutOfMemory, "Not enough memory for the picture"};
    SourcePicture picture(*std::move(buffer));
    if (!readFrame(gif.get(), makePalette(*gif, transparent), picture.pixels.view())) {
        return damaged;
    }
    const bool whole = frame.Width == width && frame.Height == height;
    const bool hasAlpha = transparent >= 0 || !whole;
    picture.alpha = hasAlpha ? Alpha::Straight : Alpha::Opaque;
    describePicture(picture, "RGB", 8, hasAlpha);
    return picture;
}

}  // namespace skarnel::io
