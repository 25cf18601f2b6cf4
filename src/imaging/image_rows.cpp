#include "imaging/image_rows.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "imaging/readable.h"

namespace skarnel {

std::optional<ImageRows> ImageRows::create(PixelView source, const AxisPlan& columns,
                                           const AxisPlan& rows) {
    return create(source, nullptr, columns, rows);
}

std::optional<ImageRows> ImageRows::create(RowSource& source, int width, const AxisPlan& columns,
                                           const AxisPlan& rows) {
    PixelView view;
    view.width = width;
    return create(view, &source, columns, rows);
}

std::optional<ImageRows> ImageRows::create(PixelView view, RowSource* source,
                                           const AxisPlan& columns, const AxisPlan& rows) {
    try {
        ImageRows made(view, columns, rows);
        std::size_t most = 0;
        for (int i = 0; i < rows.size(); ++i)
            most = std::max(most, static_cast<std::size_t>(rows.taps(i).count));
        made.tapRows_.resize(most);
        const std::size_t rowBytes = 4 * (static_cast<std::size_t>(view.width) + kPadding);
        if (most > 1) made.tall_.resize(rowBytes);
        if (source != nullptr) {
            made.rowSource_ = source;
            made.held_.resize(most);
            made.heldMemory_.resize(most * rowBytes);
        }
        if (!columns.copyShift()) {
            made.wide_.resize(4 * (static_cast<std::size_t>(columns.size()) + kPadding));
            made.combiner_ = ColumnCombiner(columns, view.width);
        }
        return made;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

/// The rows of one target row follow each other, so that no two of them share a place.
const std::uint8_t* ImageRows::sourceRow(int y) {
    if (rowSource_ == nullptr) return source_.row(y);
    const std::size_t place = static_cast<std::size_t>(y) % held_.size();
    HeldRow& held = held_[place];
    if (held.y != y)
        held = {y, rowSource_->row(
                       y, heldMemory_.data() + place * (heldMemory_.size() / held_.size()))};
    return held.bytes;
}

const std::uint8_t* ImageRows::combinedRow(const kernels::Taps& taps) {
    if (taps.count == 1) return sourceRow(taps.first);
    const std::size_t from = std::size_t{4} * static_cast<std::size_t>(columns_->firstUsed());
    const std::size_t bytes = std::size_t{4} * static_cast<std::size_t>(columns_->endUsed()) - from;
    for (int j = 0; j < taps.count; ++j)
        tapRows_[static_cast<std::size_t>(j)] = sourceRow(taps.first + j) + from;
    kernels::combineRows(tall_.data() + from, tapRows_.data(), taps, bytes);
    return tall_.data();
}

const std::uint8_t* ImageRows::row(int i) {
    const std::uint8_t* tall = combinedRow(rows_->taps(i));
    if (const auto shift = columns_->copyShift()) return tall + std::ptrdiff_t{4} * *shift;
    combiner_.combine(wide_.data(), tall);
    return wide_.data();
}

void ImageRows::drawRow(int i, std::uint8_t* target) {
    const std::uint8_t* tall = combinedRow(rows_->taps(i));
    if (const auto shift = columns_->copyShift())
        std::memcpy(target, tall + std::ptrdiff_t{4} * *shift,
                    std::size_t{4} * static_cast<std::size_t>(columns_->size()));
    else
        combiner_.combine(target, tall);
}

std::size_t ImageRows::readableFrom(int i) const {
    if (!columns_->copyShift()) return static_cast<std::size_t>(columns_->size()) + kPadding;
    const auto shift = static_cast<std::size_t>(*columns_->copyShift());
    if (rows_->taps(i).count > 1) return static_cast<std::size_t>(source_.width) + kPadding - shift;
    return readablePixels(source_, rows_->taps(i).first) - shift;
}

}  // namespace skarnel
