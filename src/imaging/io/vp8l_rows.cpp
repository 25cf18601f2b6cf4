#include "imaging/io/vp8l_rows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "imaging/io/picture_rows.h"
#include "imaging/io/vp8l_predictor.h"

namespace skarnel::io {

namespace {
constexpr std::size_t kMostGroups = 16;
constexpr std::size_t kPixelBytes = 4;
}  // namespace

/// The rows of a picture as they are predicted: straight red and blue less green, with a pixel on
/// either side. The one on the right is the first of the next row, which is how the format has it.
class GreenlessRows {
  public:
    explicit GreenlessRows(const CGImage& image)
        : rows_(image),
          width_(static_cast<std::size_t>(image.width())),
          current_((width_ + 2) * kPixelBytes),
          above_((width_ + 2) * kPixelBytes) {}

    void next() {
        std::swap(current_, above_);
        std::uint8_t* out = current_.data() + kPixelBytes;
        const std::uint8_t* row = rows_.next();
        if (rows_.shape().samples == 3) {
            for (std::size_t x = 0; x < width_; ++x) {
                std::copy_n(row + 3 * x, 3, out + 4 * x);
                out[4 * x + 3] = 255;
            }
        } else if (rows_.shape().opaque) {
            std::memcpy(out, row, width_ * kPixelBytes);
        } else {
            unpremultiplyRow(row, out, width_);
        }
        for (std::size_t x = 0; x < width_; ++x) {
            out[4 * x] = static_cast<std::uint8_t>(out[4 * x] - out[4 * x + 1]);
            out[4 * x + 2] = static_cast<std::uint8_t>(out[4 * x + 2] - out[4 * x + 1]);
        }
        std::memcpy(above_.data() + (width_ + 1) * kPixelBytes, out, kPixelBytes);
    }
    const std::uint8_t* current() const { return current_.data() + kPixelBytes; }
    const std::uint8_t* above() const { return above_.data() + kPixelBytes; }

  private:
    ImageRows rows_;
    std::size_t width_;
    Bytes current_;
    Bytes above_;
};

namespace {

/// Where a block's average left over belongs: finely at first, where codes differ most.
std::uint8_t groupOf(std::uint64_t cost, std::uint64_t pixels) {
    const std::uint64_t level = 4 * cost / std::max<std::uint64_t>(pixels, 1);
    if (level == 0) return cost == 0 ? 0 : 1;
    const auto top = static_cast<unsigned>(std::bit_width(level)) - 1;
    const auto half = top == 0 ? 0U : static_cast<unsigned>(level >> (top - 1) & 1U);
    return static_cast<std::uint8_t>(std::min<std::size_t>(2 + 2 * top + half, kMostGroups - 1));
}

/// Chooses predictors and groups by every fourth row.
class Planner {
  public:
    explicit Planner(const CGImage& image)
        : image_(image),
          width_(static_cast<std::size_t>(image.width())),
          costs_((width_ + kVp8lBlockSide - 1) / kVp8lBlockSide) {}

    Vp8lPlan make() {
        plan_.columns = costs_.size();
        GreenlessRows rows(image_);
        constexpr std::size_t kStep = 4;
        const auto height = static_cast<std::size_t>(image_.height());
        for (std::size_t y = 0; y < height; ++y) {
            rows.next();
            // The first row has nothing above it; in a picture of one row all is predicted left.
            if (y % kStep == 1) addRow(rows);
            if (y % kVp8lBlockSide == kVp8lBlockSide - 1 || y + 1 == height) choose();
        }
        numberGroups();
        return std::move(plan_);
    }

  private:
    struct BlockCosts {
        std::array<std::uint64_t, kVp8lModes> byMode{};
        std::uint64_t pixels = 0;
    };

    void addRow(const GreenlessRows& rows) {
        std::array<std::uint8_t, kVp8lBlockSide * kPixelBytes> residual;
        for (std::size_t column = 0; column < costs_.size(); ++column) {
            const std::size_t x = column * kVp8lBlockSide;
            const std::size_t count = std::min(kVp8lBlockSide, width_ - x);
            BlockCosts& costs = costs_[column];
            costs.pixels += count;
            for (unsigned mode = 1; mode < kVp8lModes; ++mode) {
                vp8lResidual(mode, rows.current() + x * kPixelBytes, rows.above() + x * kPixelBytes,
                             residual.data(), count);
                costs.byMode[mode] += vp8lCost(residual.data(), count * kPixelBytes);
            }
        }
    }

    void choose() {
        for (BlockCosts& costs : costs_) {
            const auto best = std::min_element(costs.byMode.begin() + 1, costs.byMode.end());
            plan_.modes.push_back(static_cast<std::uint8_t>(best - costs.byMode.begin()));
            plan_.groups.push_back(groupOf(*best, costs.pixels));
            costs = {};
        }
    }

    /// Numbers those that occur from 0 on.
    void numberGroups() {
        std::array<bool, kMostGroups> used{};
        for (const std::uint8_t group : plan_.groups) used[group] = true;
        std::array<std::uint8_t, kMostGroups> number{};
        for (std::size_t i = 0; i < kMostGroups; ++i) {
            if (used[i]) number[i] = static_cast<std::uint8_t>(plan_.groupCount++);
        }
        for (std::uint8_t& group : plan_.groups) group = number[group];
    }

    const CGImage& image_;
    std::size_t width_;
    std::vector<BlockCosts> costs_;
    Vp8lPlan plan_;
};

}  // namespace

Vp8lPlan planVp8l(const CGImage& image) {
    return Planner(image).make();
}

Vp8lRows::Vp8lRows(const CGImage& image, const Vp8lPlan& plan)
    : plan_(plan),
      width_(static_cast<std::size_t>(image.width())),
      rows_(std::make_unique<GreenlessRows>(image)),
      current_(width_),
      above_(width_) {}

Vp8lRows::~Vp8lRows() = default;

void Vp8lRows::next() {
    std::swap(current_, above_);
    rows_->next();
    const std::size_t firstBlock = y_ / kVp8lBlockSide * plan_.columns;
    constexpr unsigned kLeft = 1;
    constexpr unsigned kTop = 2;
    for (std::size_t column = 0; column < plan_.columns; ++column) {
        const std::size_t x = column * kVp8lBlockSide;
        put(y_ == 0 ? kLeft : plan_.modes[firstBlock + column], x,
            std::min(kVp8lBlockSide, width_ - x));
    }
    // The first pixel of a row has none on its left, and the very first is beside black.
    put(y_ == 0 ? 0 : kTop, 0, 1);
    groups_ = plan_.groups.data() + firstBlock;
    ++y_;
}

void Vp8lRows::put(unsigned mode, std::size_t x, std::size_t count) {
    vp8lResidual(mode, rows_->current() + x * kPixelBytes, rows_->above() + x * kPixelBytes,
                 reinterpret_cast<std::uint8_t*>(current_.data()) + x * kPixelBytes, count);
}

}  // namespace skarnel::io
