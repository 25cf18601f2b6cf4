#include "imaging/io/png_filter.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <span>

#include "imaging/io/pixel_rows.h"
#include "imaging/kernels/row_coding.h"

namespace skarnel::io {
namespace {

enum Filter : std::uint8_t { kSub = 1, kUp = 2, kPaeth = 4 };

int paethPredictor(int left, int up, int upLeft) {
    const int estimate = left + up - upLeft;
    const int toLeft = std::abs(estimate - left);
    const int toUp = std::abs(estimate - up);
    const int toUpLeft = std::abs(estimate - upLeft);
    if (toLeft <= toUp && toLeft <= toUpLeft) return left;
    return toUp <= toUpLeft ? up : upLeft;
}

/// The usual measure: the sum of the differences taken as signed bytes.
std::uint64_t costOf(const std::uint8_t* filtered, std::size_t size) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < size; ++i) {
        sum += static_cast<unsigned>(std::abs(static_cast<std::int8_t>(filtered[i])));
    }
    return sum;
}

/// Writes the filter's number and the differences; gives their cost.
std::uint64_t applyFilter(Filter filter, const Bytes& current, const Bytes& previous,
                          std::size_t pixelBytes, std::uint8_t* __restrict out) {
    const std::uint8_t* row = current.data() + pixelBytes;
    const std::uint8_t* left = current.data();
    const std::uint8_t* up = previous.data() + pixelBytes;
    const std::uint8_t* upLeft = previous.data();
    const std::size_t size = current.size() - pixelBytes;
    *out++ = filter;
    if (filter != kPaeth) return kernels::subtractRow(out, row, filter == kSub ? left : up, size);
    for (std::size_t i = 0; i < size; ++i) {
        out[i] = static_cast<std::uint8_t>(row[i] - paethPredictor(left[i], up[i], upLeft[i]));
    }
    return costOf(out, size);
}

/// The filters to try after Sub.
std::span<const Filter> furtherFilters(PngFilters filters) {
    static constexpr std::array<Filter, 2> kFilters = {kUp, kPaeth};
    const std::size_t count = filters == PngFilters::Sub       ? 0
                              : filters == PngFilters::SubOrUp ? 1
                                                               : 2;
    return std::span(kFilters).first(count);
}

}  // namespace

PngRows::PngRows(const CGImage& image, bool opaque, PngFilters filters)
    : view_(image.pixels()), pixelBytes_(opaque ? 3 : 4), filters_(filters) {
    rowBytes_ = static_cast<std::size_t>(view_.width) * pixelBytes_;
    for (auto& row : rows_) row.assign(rowBytes_ + pixelBytes_, 0);
    trial_.resize(lineBytes());
}

void PngRows::filter(int y, std::uint8_t* out) {
    if (loaded_ != y - 1) load(y - 1);
    load(y);
    std::uint64_t best = applyFilter(kSub, rows_[0], rows_[1], pixelBytes_, out);
    for (const Filter filter : furtherFilters(filters_)) {
        const std::uint64_t cost =
            applyFilter(filter, rows_[0], rows_[1], pixelBytes_, trial_.data());
        if (cost < best) {
            best = cost;
            std::memcpy(out, trial_.data(), lineBytes());
        }
    }
}

/// Row y becomes the current one and what was current the previous one; above the picture all is 0.
void PngRows::load(int y) {
    std::swap(rows_[0], rows_[1]);
    loaded_ = y;
    std::uint8_t* out = rows_[0].data() + pixelBytes_;
    if (y < 0) {
        std::memset(out, 0, rowBytes_);
        return;
    }
    const std::uint8_t* in = view_.row(y);
    const auto count = static_cast<std::size_t>(view_.width);
    if (pixelBytes_ == 4) {
        unpremultiplyRow(in, out, count);
    } else if (view_.samplesPerPixel == 3) {
        std::memcpy(out, in, rowBytes_);
    } else {
        for (std::size_t x = 0; x < count; ++x) std::memcpy(out + 3 * x, in + 4 * x, 3);
    }
}

}  // namespace skarnel::io
