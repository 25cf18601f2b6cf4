// Where the coded bytes of the items of a HEIF or AVIF file lie.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// The table of a file's `iloc` box (ISO/IEC 14496-12 8.11.3).
class ItemData {
  public:
    /// `places` is the content of that box, `inside` that of `idat`; all must outlive this.
    ItemData(ByteView file, ByteView places, ByteView inside);

    /// Its bytes, in one piece, until the next call: as many as there are where some lie outside of
    /// the file; none where the item has no place. Fails where it has two, or one that only
    /// other files or items know, and where items that lie in several pieces have more bytes in
    /// all than the file.
    std::optional<ByteView> of(std::uint32_t item);

  private:
    struct Piece {
        std::uint64_t offset = 0;
        std::uint64_t count = 0;
    };
    struct Place {
        unsigned construction = 0;  // in the file, or inside the box
        std::vector<Piece> pieces;
        bool isOnlyOne = true;
    };
    ByteView file_;
    ByteView inside_;
    std::map<std::uint32_t, Place> places_;
    bool damaged_ = false;
    Bytes joined_;
    std::uint64_t joinedBytes_ = 0;  // by all calls
};

}  // namespace skarnel::io
