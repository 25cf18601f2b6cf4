#include "imaging/image_rows.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "imaging/kernels/turn.h"
#include "imaging/pixel_memory.h"
#include "imaging/readable.h"

namespace skarnel {
namespace {

std::size_t bytesOf(int pixels) {
    return std::size_t{4} * static_cast<std::size_t>(pixels);
}

}  // namespace

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
            made.rowBytes_ = rowBytes;
            if (source->strips() > 1) {
                made.combined_ = allocatePixelMemory(
                    rowBytes * static_cast<std::size_t>(rows.size()), PixelContents::Undefined);
                if (!made.combined_) return std::nullopt;
            }
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
std::uint8_t* ImageRows::placeOf(int y) {
    return heldMemory_.data() + static_cast<std::size_t>(y) % held_.size() * rowBytes_;
}

const std::uint8_t* ImageRows::wholeRow(int y) {
    SourceRow& row = heldRow(y).row;
    if (!row.isWhole) {
        std::uint8_t* place = placeOf(y);
        std::memset(place, 0, bytesOf(row.first));
        std::memcpy(place + bytesOf(row.first), row.bytes, bytesOf(row.end - row.first));
        std::memset(place + bytesOf(row.end), 0, bytesOf(source_.width - row.end));
        row.bytes = place + bytesOf(row.first);
        row.isWhole = true;
    }
    return row.bytes - bytesOf(row.first);
}

ImageRows::HeldRow& ImageRows::heldRow(int y) {
    HeldRow& held = held_[static_cast<std::size_t>(y) % held_.size()];
    if (held.y == y) return held;
    held = {y, rowSource_->row(y, placeOf(y))};
    if (held_.size() > static_cast<std::size_t>(RowSource::kKeptRows)) {
        // The source would take the row back before the last of its neighbours is made.
        const std::uint8_t* own = placeOf(y) + bytesOf(held.row.first);
        if (held.row.bytes != own) {
            held.row.isWhole = false;
            wholeRow(y);
        }
    }
    return held;
}

/// Of rows that are made only the columns where one of them has content are combined.
const std::uint8_t* ImageRows::combinedMadeRow(const kernels::Taps& taps) {
    contentFirst_ = source_.width;
    contentEnd_ = 0;
    for (int j = 0; j < taps.count; ++j) {
        const SourceRow& row = heldRow(taps.first + j).row;
        if (row.first >= row.end) continue;
        contentFirst_ = std::min(contentFirst_, row.first);
        contentEnd_ = std::max(contentEnd_, row.end);
    }
    contentFirst_ = std::min(contentFirst_, contentEnd_);
    if (taps.count == 1) return wholeRow(taps.first);
    for (int j = 0; j < taps.count; ++j) {
        const SourceRow& row = heldRow(taps.first + j).row;
        const bool reaches = row.first <= contentFirst_ && row.end >= contentEnd_;
        tapRows_[static_cast<std::size_t>(j)] =
            reaches ? row.bytes + bytesOf(contentFirst_ - row.first)
                    : wholeRow(taps.first + j) + bytesOf(contentFirst_);
    }
    std::memset(tall_.data(), 0, bytesOf(contentFirst_));
    kernels::combineRows(tall_.data() + bytesOf(contentFirst_), tapRows_.data(), taps,
                         bytesOf(contentEnd_ - contentFirst_));
    std::memset(tall_.data() + bytesOf(contentEnd_), 0, bytesOf(source_.width - contentEnd_));
    return tall_.data();
}

/// Row y of the strip that was begun; a target row asks for rising ones, the next may begin with
/// some of the same.
const SourceRow& ImageRows::stripRow(int y) {
    constexpr std::size_t kKept = RowSource::kKeptRows;
    if (held_.size() > kKept) return heldRow(y).row;
    SourceRow& row = stripRows_[static_cast<std::size_t>(y) % kKept];
    if (y >= stripEnd_) {
        // Made in its place: a copy would wait until the parts of the original have been stored.
        new (&row) SourceRow(rowSource_->row(y, placeOf(y)));
        stripEnd_ = y + 1;
    }
    return row;
}

void ImageRows::combineStrips() {
    for (int strip = 0; strip < rowSource_->strips(); ++strip) {
        rowSource_->beginStrip(strip);
        stripEnd_ = 0;
        for (HeldRow& held : held_) held.y = -1;
        std::uint8_t* target = combined_.get();
        for (int i = 0; i < rows_->size(); ++i, target += rowBytes_) {
            const kernels::Taps& taps = rows_->taps(i);
            for (int j = 0; j < taps.count; ++j)
                tapRows_[static_cast<std::size_t>(j)] = stripRow(taps.first + j).bytes;
            const SourceRow& row = stripRow(taps.first);
            const std::size_t bytes = bytesOf(row.end - row.first);
            if (taps.count == 1)
                std::memcpy(target + bytesOf(row.first), row.bytes, bytes);
            else
                kernels::combineRows(target + bytesOf(row.first), tapRows_.data(), taps, bytes);
        }
    }
}

const std::uint8_t* ImageRows::combinedStripsRow(int i) {
    if (!std::exchange(isCombined_, true)) combineStrips();
    contentFirst_ = 0;
    contentEnd_ = source_.width;
    return combined_.get() + rowBytes_ * static_cast<std::size_t>(i);
}

const std::uint8_t* ImageRows::combinedRow(int i) {
    const kernels::Taps& taps = rows_->taps(i);
    if (combined_) return combinedStripsRow(i);
    if (rowSource_ != nullptr) return combinedMadeRow(taps);
    contentFirst_ = 0;
    contentEnd_ = source_.width;
    return combinedPiece(taps, columns_->firstUsed(), columns_->endUsed());
}

/// The source's columns [begin, end) of a row after the vertical step.
const std::uint8_t* ImageRows::combinedPiece(const kernels::Taps& taps, int begin, int end) {
    if (taps.count == 1) return source_.row(taps.first);
    const std::size_t from = bytesOf(begin);
    for (int j = 0; j < taps.count; ++j)
        tapRows_[static_cast<std::size_t>(j)] = source_.row(taps.first + j) + from;
    kernels::combineRows(tall_.data() + from, tapRows_.data(), taps, bytesOf(end) - from);
    return tall_.data();
}

const std::uint8_t* ImageRows::rowPiece(int i, int begin, int end) {
    const auto shift = columns_->copyShift();
    if (!shift) return row(i);
    // Whole vectors where the picture has them: a rest costs as much as two.
    constexpr int kWhole = 16;
    const int first = begin + *shift;
    const int wanted = end - begin;
    const int most = source_.width - first;
    const int width = wanted < most - kWhole ? (wanted + kWhole - 1) / kWhole * kWhole : wanted;
    if (width < source_.width) askForRowsAhead(i, first, first + width);
    return combinedPiece(rows_->taps(i), first, first + width) + std::ptrdiff_t{4} * *shift;
}

/// A piece of a row is too short for the processor to find out by itself what comes next.
void ImageRows::askForRowsAhead(int i, int begin, int end) const {
    constexpr int kRowsAhead = 3;
    constexpr std::ptrdiff_t kLineBytes = 64;
    if (i + kRowsAhead >= rows_->size()) return;
    const kernels::Taps& before = rows_->taps(i + kRowsAhead - 1);
    const kernels::Taps& taps = rows_->taps(i + kRowsAhead);
    for (int y = std::max(taps.first, before.first + before.count); y < taps.first + taps.count;
         ++y) {
        const std::uint8_t* row = source_.row(y);
        for (auto at = std::ptrdiff_t{4} * begin; at < std::ptrdiff_t{4} * end; at += kLineBytes)
            __builtin_prefetch(row + at);
    }
}

void ImageRows::combineAcross(std::uint8_t* target, const std::uint8_t* tall) const {
    if (contentFirst_ == 0 && contentEnd_ == source_.width)
        combiner_.combine(target, tall);
    else
        combiner_.combineContent(target, tall, contentFirst_, contentEnd_);
}

const std::uint8_t* ImageRows::row(int i) {
    const std::uint8_t* tall = combinedRow(i);
    if (const auto shift = columns_->copyShift()) return tall + std::ptrdiff_t{4} * *shift;
    combineAcross(wide_.data(), tall);
    return wide_.data();
}

void ImageRows::drawRow(int i, std::uint8_t* target) {
    const std::uint8_t* tall = combinedRow(i);
    if (const auto shift = columns_->copyShift())
        std::memcpy(target, tall + std::ptrdiff_t{4} * *shift,
                    std::size_t{4} * static_cast<std::size_t>(columns_->size()));
    else
        combineAcross(target, tall);
}

std::optional<ImageRows::MixedRows> ImageRows::mixedRows(int i, int count,
                                                         const std::uint8_t** rows) const {
    static_assert(kernels::kLerpUnit == 2 * kernels::kTapUnit);
    if (rowSource_ != nullptr || !columns_->copyShift()) return std::nullopt;
    const kernels::Taps& first = rows_->taps(i);
    for (int k = 0; k < count; ++k) {
        const kernels::Taps& taps = rows_->taps(i + k);
        if (taps.count != 2 || taps.first != first.first + k || taps.weights[1] != first.weights[1])
            return std::nullopt;
    }
    const int shift = *columns_->copyShift();
    for (int k = 0; k <= count; ++k) rows[k] = source_.row(first.first + k) + bytesOf(shift);
    return MixedRows{2 * first.weights[1], readablePixels(source_, first.first + count) -
                                               static_cast<std::size_t>(shift)};
}

std::size_t ImageRows::readableFrom(int i) const {
    if (!columns_->copyShift()) return static_cast<std::size_t>(columns_->size()) + kPadding;
    const auto shift = static_cast<std::size_t>(*columns_->copyShift());
    if (rows_->taps(i).count > 1) return static_cast<std::size_t>(source_.width) + kPadding - shift;
    return readablePixels(source_, rows_->taps(i).first) - shift;
}

}  // namespace skarnel
