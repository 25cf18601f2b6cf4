// How large a coded picture says that it is, before any library decodes it.
#pragma once

#include <cstdint>
#include <optional>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// What the headers inside coded data state, whatever the file says of it outside. The sides are
/// in pixels, before a crop, the largest that any header states; all 0 where there is none.
struct CodedSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t pictures = 0;  // that are made of the data, 2^30 at most
};

/// Of HEVC: `configuration` is the content of the file's `hvcC` box (ISO/IEC 14496-15), `coded` the
/// units, each behind its size in four bytes. Four slices count as a picture. None where a
/// header is damaged, and where there are more units than any picture has.
std::optional<CodedSize> sizeOfHevc(ByteView configuration, ByteView coded);

/// Of AV1: `configuration` is the content of the `av1C` box, `coded` the units. None where a header
/// is damaged, a unit of the configuration is cut or has no size, and where there are more units
/// than any picture has. A frame of its own size counts as the largest that its header has room
/// for.
std::optional<CodedSize> sizeOfAv1(ByteView configuration, ByteView coded);

/// Of a canvas, a `grid` or an overlay (`iovl`, ISO/IEC 23008-12 6.6.2), that parts are laid on:
/// one picture. None where its head is cut.
std::optional<CodedSize> sizeOfGrid(ByteView data);
std::optional<CodedSize> sizeOfOverlay(ByteView data);

}  // namespace skarnel::io
