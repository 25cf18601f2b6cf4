// What decoding an item of a HEIF or AVIF file costs, by what is said of it outside and inside its
// data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "imaging/io/image_io.h"
#include "imaging/io/item_data.h"

namespace skarnel::io {

struct CodedSize;

/// An item that is another one, turned or cut.
inline constexpr std::string_view kStandsForAnother = "iden";

/// An item on which others are laid, whose size stands in its own data.
bool isCanvas(std::string_view type);

struct Weight {
    std::uint64_t pixels = 0;
    std::uint64_t times = 1;  // that they are made, once more for each turn or cut
};

/// What the file says of each item: its size, how often it is turned or cut, and how it is coded.
class ItemProperties {
  public:
    /// Of one item.
    struct Facts {
        std::uint64_t width = 0;  // 0 where it is not stated
        std::uint64_t height = 0;
        std::uint64_t times = 1;                // that its pixels are made
        std::optional<ByteView> configuration;  // of its decoder
    };

    /// `box` is the content of `iprp` (ISO/IEC 23008-12 9.3), which must outlive this.
    explicit ItemProperties(ByteView box);

    /// None where it has several sizes or decoders, or is turned more than eight times.
    std::optional<Facts> factsOf(std::uint32_t item) const;

  private:
    struct Kind {
        std::string_view type;
        ByteView content;
    };
    void addKinds(ByteView box);
    void addUses(ByteView box);

    std::vector<Kind> kinds_;  // by number, from 1 on
    std::map<std::uint32_t, std::vector<int>> uses_;
};

class ItemWeights {
  public:
    /// `meta` is what stands behind version and flags of the file's box of that name; both must
    /// outlive this.
    ItemWeights(ByteView file, ByteView meta);

    /// Of an item alone, by the larger of what is stated outside its data and inside, at least 1024
    /// pixels. None where the two do not belong together or one is damaged, and where there are
    /// more bytes to look at than twice the file has and a megabyte, as of items that share theirs.
    std::optional<Weight> of(std::uint32_t item, std::string_view type);

  private:
    std::optional<CodedSize> sizeInside(std::uint32_t item, std::string_view type,
                                        ByteView configuration);

    ItemProperties properties_;
    ItemData data_;
    std::size_t left_;  // bytes that may be looked at
};

}  // namespace skarnel::io
