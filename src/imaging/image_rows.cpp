#include "imaging/image_rows.h"

#include <algorithm>
#include <new>

#include "imaging/readable.h"

namespace skarnel {

std::optional<ImageRows> ImageRows::create(PixelView source, const AxisPlan& columns,
                                           const AxisPlan& rows) {
    try {
        ImageRows made(source, columns, rows);
        int most = 0;
        for (int i = 0; i < rows.size(); ++i) most = std::max(most, rows.taps(i).count);
        made.tapRows_.resize(static_cast<std::size_t>(most));
        if (most > 1) made.tall_.resize(4 * (static_cast<std::size_t>(source.width) + kPadding));
        if (!columns.copyShift())
            made.wide_.resize(4 * (static_cast<std::size_t>(columns.size()) + kPadding));
        return made;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

const std::uint8_t* ImageRows::combinedRow(const kernels::Taps& taps) {
    if (taps.count == 1) return source_.row(taps.first);
    const std::size_t from = std::size_t{4} * static_cast<std::size_t>(columns_->firstUsed());
    const std::size_t bytes = std::size_t{4} * static_cast<std::size_t>(columns_->endUsed()) - from;
    for (int j = 0; j < taps.count; ++j)
        tapRows_[static_cast<std::size_t>(j)] = source_.row(taps.first + j) + from;
    kernels::combineRows(tall_.data() + from, tapRows_.data(), taps, bytes);
    return tall_.data();
}

const std::uint8_t* ImageRows::row(int i) {
    const std::uint8_t* tall = combinedRow(rows_->taps(i));
    if (const auto shift = columns_->copyShift()) return tall + std::ptrdiff_t{4} * *shift;
    kernels::combineColumns(wide_.data(), tall, static_cast<std::size_t>(source_.width),
                            columns_->allTaps(), static_cast<std::size_t>(columns_->size()));
    return wide_.data();
}

std::size_t ImageRows::readableFrom(int i) const {
    if (!columns_->copyShift()) return static_cast<std::size_t>(columns_->size()) + kPadding;
    const auto shift = static_cast<std::size_t>(*columns_->copyShift());
    if (rows_->taps(i).count > 1) return static_cast<std::size_t>(source_.width) + kPadding - shift;
    return readablePixels(source_, rows_->taps(i).first) - shift;
}

}  // namespace skarnel
