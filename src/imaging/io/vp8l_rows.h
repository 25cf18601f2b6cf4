// A picture as lossless WebP codes it: what its predictors leave of each row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"

namespace skarnel::io {

inline constexpr unsigned kVp8lBlockBits = 4;
inline constexpr std::size_t kVp8lBlockSide = std::size_t{1} << kVp8lBlockBits;

/// What is chosen for each block: its predictor, and the group of codes for what is left.
struct Vp8lPlan {
    std::size_t columns = 0;  // of blocks
    std::vector<std::uint8_t> modes;
    std::vector<std::uint8_t> groups;  // 0 to groupCount - 1
    std::size_t groupCount = 0;
};

/// Chooses the predictor that leaves least of every fourth row of a block, and its group by how
/// much that is. Throws std::bad_alloc.
Vp8lPlan planVp8l(const CGImage& image);

class GreenlessRows;

/// Gives what is left of each row, top row first, and the groups of its blocks. Picture and plan
/// must outlive it.
class Vp8lRows {
  public:
    Vp8lRows(const CGImage& image, const Vp8lPlan& plan);
    ~Vp8lRows();

    void next();
    /// Pixels of four bytes: red, green, blue, alpha.
    const std::vector<std::uint32_t>& current() const { return current_; }
    const std::vector<std::uint32_t>& above() const { return above_; }
    bool isFirst() const { return y_ == 1; }
    std::size_t groupAt(std::size_t x) const { return groups_[x / kVp8lBlockSide]; }

  private:
    void put(unsigned mode, std::size_t x, std::size_t count);

    const Vp8lPlan& plan_;
    std::size_t width_;
    std::unique_ptr<GreenlessRows> rows_;
    std::vector<std::uint32_t> current_;
    std::vector<std::uint32_t> above_;
    const std::uint8_t* groups_ = nullptr;
    std::size_t y_ = 0;  // rows given
};

}  // namespace skarnel::io
