#include "imaging/column_turn.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "imaging/pixel_memory.h"
#include "imaging/readable.h"
#include "imaging/streaming.h"

namespace skarnel {
namespace {

using kernels::kLerpUnit;

bool hasUprightSides(const Quad& quad) {
    return quad.topLeft.x == quad.bottomLeft.x && quad.topRight.x == quad.bottomRight.x &&
           quad.topLeft.x < quad.topRight.x && quad.topLeft.y > quad.bottomLeft.y &&
           quad.topRight.y > quad.bottomRight.y && quad.isConvex();
}

double mix(double a, double b, double t) {
    return (1 - t) * a + t * b;
}

/// The rows of a picture in memory.
class WholePicture final : public PictureRows {
  public:
    explicit WholePicture(PixelView picture) : picture_(picture) {}

    RowSpans piece(int row, int count, int /*first*/, int /*end*/) override {
        for (int i = 0; i < count; ++i) rows_[i] = picture_.row(row + i);
        return {rows_, 0, picture_.width, readablePixels(picture_, row + count - 1),
                kernels::kBlockRows * picture_.strideBytes};
    }

  private:
    PixelView picture_;
    const std::uint8_t* rows_[kernels::kBlockRows];
};

/// How many rows lie in memory for `rows` shown.
int sourceRows(int rows, const RowSpans& spans) {
    return rows + (spans.belowWeight != 0 ? 1 : 0);
}

std::uint8_t* columnBlock(int row, std::size_t column, const SqueezedPicture& target) {
    return target.bytes.get() +
           4 * (static_cast<std::ptrdiff_t>(column - target.firstColumn) * target.columnStride +
                row % target.ringRows);
}

}  // namespace

std::optional<ColumnTurn> ColumnTurn::plan(int width, int height, const Quad& quad,
                                           CGPoint lowerLeft, int targetWidth, int targetHeight) {
    if (!hasUprightSides(quad) || width < 1 || height < 1 || targetWidth < 1 || targetHeight < 1)
        return std::nullopt;
    const double lengthLeft = quad.topLeft.y - quad.bottomLeft.y;
    const double lengthRight = quad.topRight.y - quad.bottomRight.y;
    const double upper = lowerLeft.y + targetHeight;  // the target's top edge
    ColumnTurn turn;
    turn.width_ = width;
    turn.height_ = height;
    // Positions are kept from the middle row on, where single precision loses least.
    turn.middleRow_ = targetHeight / 2;
    try {
        for (int x = 0; x < targetWidth; ++x) {
            const double t = std::clamp(
                (lowerLeft.x + x + 0.5 - quad.topLeft.x) / (quad.topRight.x - quad.topLeft.x), 0.0,
                1.0);
            const double share = t * lengthRight / (t * lengthRight + (1 - t) * lengthLeft);
            const double top = upper - mix(quad.topLeft.y, quad.topRight.y, t);
            turn.planColumn(share * width, top, mix(lengthLeft, lengthRight, t), targetHeight);
        }
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
    return turn;
}

/// Adds the column that shows the source at `position`, from row `top` on over `length` rows.
void ColumnTurn::planColumn(double position, double top, double length, int targetHeight) {
    const double centre = std::clamp(position - 0.5, 0.0, width_ - 1.0);
    const auto from = static_cast<std::int32_t>(centre);
    const auto weight = static_cast<std::uint32_t>((centre - from) * kLerpUnit);
    const double step = height_ / length;
    from_.push_back(from);
    weight_.push_back(weight | weight << 16);
    step_.push_back(static_cast<float>(step) * kLerpUnit);
    centre_.push_back(static_cast<float>((middleRow_ + 0.5 - top) * step - 0.5) * kLerpUnit);

    const double bottom = top + length;
    const auto rowAt = [&](double row) {
        return static_cast<std::int32_t>(std::clamp(row, 0.0, 1.0 * targetHeight));
    };
    const auto level = [&](int row) {
        const double covered = std::min(bottom, row + 1.0) - std::max(top, 1.0 * row);
        return static_cast<std::uint8_t>(std::lround(std::clamp(covered, 0.0, 1.0) * 255));
    };
    const std::int32_t begin = rowAt(std::floor(top));
    const std::int32_t end = std::max(begin, rowAt(std::ceil(bottom)));
    begin_.push_back(begin);
    end_.push_back(end);
    firstLevel_.push_back(level(begin));
    lastLevel_.push_back(level(end - 1));
    // What lies beyond the target counts as covered, whatever it is.
    const bool toTheEnd = end == targetHeight && lastLevel_.back() == 255;
    fullBegin_.push_back(firstLevel_.back() == 255 ? begin : begin + 1);
    fullEnd_.push_back(toTheEnd ? std::numeric_limits<std::int32_t>::max()
                                : end - (lastLevel_.back() == 255 ? 0 : 1));
}

//   picture row    0 .. first kept .. first walked .. emptyRows ..
//                  neither kept       transparent     content
//
// The first target row that is walked shows rows above the content alone, so that those before it
// are transparent, and none above the first kept one.
void ColumnTurn::leaveOut(const std::vector<int>& emptyRows) {
    const int margin = 2 + (height_ >> 20);  // single precision may move a position by so much
    try {
        firstKeptRow_.resize(from_.size());
    } catch (const std::bad_alloc&) {
        return;
    }
    for (std::size_t x = 0; x < from_.size(); ++x) {
        const auto from = static_cast<std::size_t>(from_[x]);
        const std::size_t next = std::min(from + 1, emptyRows.size() - 1);
        const double step = static_cast<double>(step_[x]) / kLerpUnit;
        const double centre = static_cast<double>(centre_[x]) / kLerpUnit;
        const double walked = std::min(emptyRows[from], emptyRows[next]) - margin;
        const double kept = walked - step - margin;
        if (kept < kernels::kBlockRows) continue;
        firstKeptRow_[x] =
            static_cast<std::int32_t>(kept) / kernels::kBlockRows * kernels::kBlockRows;
        beginColumnAt(x, std::floor((walked - centre) / step) + middleRow_);
    }
}

/// The column is transparent above this target row.
void ColumnTurn::beginColumnAt(std::size_t column, double row) {
    if (!(row > begin_[column])) return;
    if (row >= end_[column]) {
        begin_[column] = fullBegin_[column] = end_[column];
        return;
    }
    const auto begin = static_cast<std::int32_t>(row);
    const bool isLast = begin == end_[column] - 1;
    firstLevel_[column] = isLast ? lastLevel_[column] : std::uint8_t{255};
    begin_[column] = begin;
    fullBegin_[column] = firstLevel_[column] == 255 ? begin : begin + 1;
}

std::optional<SqueezedPicture> ColumnTurn::squeezedPicture() const {
    // Columns begin cache lines, an odd number of these apart so that they do not all fall into
    // the same few places of a cache. Flat pictures would become much larger by that.
    constexpr int kBlock = kernels::kBlockRows;
    constexpr int kTall = 512;
    std::ptrdiff_t stride = height_;
    if (height_ >= kBlock) stride = (stride + kBlock - 1) / kBlock * kBlock;
    if (height_ >= kTall) stride = (stride / kBlock | 1) * kBlock;
    const std::size_t pixels = from_.size() * static_cast<std::size_t>(stride);
    auto bytes =
        allocatePixelMemory(4 * (pixels + kernels::kReadBehindColumns), PixelContents::Undefined);
    if (!bytes) return std::nullopt;
    return SqueezedPicture{std::move(bytes), stride, height_ >= kBlock && passesCaches(4 * pixels)};
}

void ColumnTurn::squeezeRows(int row, const std::uint8_t* const* sources,
                             std::size_t readablePixels, SqueezedPicture& target) const {
    squeezeColumns(row, 0, from_.size(), {sources, 0, width_, readablePixels}, target);
}

/// Columns [begin, end), which need no pixel beside the spans; after the last readable one comes
/// that one again.
void ColumnTurn::squeezeColumns(int row, std::size_t begin, std::size_t end, const RowSpans& spans,
                                SqueezedPicture& target) const {
    if (begin == end) return;
    kernels::SqueezeTarget block{columnBlock(row, begin, target), target.columnStride,
                                 blockRows(row), target.stream};
    const std::uint8_t* const* sources = spans.rows;
    const std::uint8_t* whole[kernels::kBlockRows + 1];
    if (target.columnStride >= kernels::kBlockRows && block.rows < kernels::kBlockRows) {
        // The room behind the last row takes that row again.
        const int last = sourceRows(block.rows, spans) - 1;
        for (int i = 0; i <= kernels::kBlockRows; ++i) whole[i] = sources[std::min(i, last)];
        sources = whole;
        block.rows = kernels::kBlockRows;
    }
    kernels::squeezeRows(block, sources, spans.readablePixels,
                         {from_.data() + begin, weight_.data() + begin, end - begin, spans.first,
                          spans.aheadBytes, spans.belowWeight});
}

/// Columns [begin, end), each between the span's first or last pixel and the transparent one
/// beside it.
void ColumnTurn::squeezeEdge(int row, std::size_t begin, std::size_t end, Edge edge,
                             const RowSpans& spans, SqueezedPicture& target) const {
    if (begin == end) return;
    std::uint8_t pixels[kernels::kBlockRows + 1][8] = {};
    const std::uint8_t* rows[kernels::kBlockRows + 1];
    const int last = spans.end - spans.first - 1;
    for (int i = 0; i < sourceRows(blockRows(row), spans); ++i) {
        if (edge == Edge::Left)
            std::memcpy(pixels[i] + 4, spans.rows[i], 4);
        else
            std::memcpy(pixels[i], spans.rows[i] + std::ptrdiff_t{4} * last, 4);
        rows[i] = pixels[i];
    }
    const int first = edge == Edge::Left ? spans.first - 1 : spans.end - 1;
    squeezeColumns(row, begin, end,
                   {rows, first, first + 2, 2, spans.aheadBytes, spans.belowWeight}, target);
}

void ColumnTurn::clearColumns(int row, std::size_t begin, std::size_t end,
                              SqueezedPicture& target) const {
    const int rows =
        target.columnStride >= kernels::kBlockRows ? kernels::kBlockRows : blockRows(row);
    std::uint8_t* column = columnBlock(row, begin, target);
    for (; begin < end; ++begin, column += 4 * target.columnStride)
        if (firstKeptRow_.empty() || row >= firstKeptRow_[begin])
            std::memset(column, 0, std::size_t{4} * static_cast<std::size_t>(rows));
}

//              first           end
//   transparent  | picture ... |  transparent
//       a column from first - 1 or from end - 1 on has one neighbour in each
void ColumnTurn::squeezeSpans(int row, const RowSpans& spans, ColumnRange columns,
                              SqueezedPicture& target) const {
    const auto columnFrom = [&](int pixel) {
        const auto at = [&](std::size_t x) {
            return from_.begin() + static_cast<std::ptrdiff_t>(x);
        };
        return static_cast<std::size_t>(
            std::lower_bound(at(columns.begin), at(columns.end), pixel) - from_.begin());
    };
    const std::size_t leftEdge = columnFrom(spans.first - 1);
    const std::size_t inside = columnFrom(spans.first);
    const std::size_t rightEdge = columnFrom(spans.end - 1);
    const std::size_t beyond = columnFrom(spans.end);
    clearColumns(row, columns.begin, leftEdge, target);
    squeezeEdge(row, leftEdge, inside, Edge::Left, spans, target);
    squeezeColumns(row, inside, std::max(inside, rightEdge), spans, target);
    squeezeEdge(row, std::max(inside, rightEdge), beyond, Edge::Right, spans, target);
    clearColumns(row, beyond, columns.end, target);
}

/// Scratch for a walk of `target`; null where that is not stored past the caches.
std::shared_ptr<std::uint8_t> ColumnTurn::unfinishedLinesFor(const MutablePixelView& target) {
    if (!usesStreaming(target)) return nullptr;
    return allocatePixelMemory(kernels::kLineBytes * static_cast<std::size_t>(target.height),
                               PixelContents::Undefined);
}

kernels::ColumnWalk ColumnTurn::walkOf(const SqueezedPicture& squeezed, ColumnRange columns) const {
    // Single precision may round the last row of a very tall picture to one behind it.
    float last = static_cast<float>(height_ - 1);
    if (static_cast<double>(last) > height_ - 1) last = std::nextafter(last, 0.0F);
    const std::size_t x = columns.begin;
    return {squeezed.bytes.get(),
            squeezed.columnStride,
            columns.end - x,
            centre_.data() + x,
            step_.data() + x,
            last * kLerpUnit,
            middleRow_,
            {begin_.data() + x, fullBegin_.data() + x, fullEnd_.data() + x, end_.data() + x,
             firstLevel_.data() + x, lastLevel_.data() + x},
            nullptr,
            kernels::Strip::Only,
            {}};
}

void ColumnTurn::walkRows(const SqueezedPicture& squeezed, int firstRow,
                          MutablePixelView target) const {
    kernels::ColumnWalk walk = walkOf(squeezed, {0, from_.size()});
    const auto unfinishedLines = unfinishedLinesFor(target);
    walk.unfinishedLines = unfinishedLines.get();
    kernels::walkColumns({target.bytes, target.strideBytes, firstRow, target.height}, walk);
}

std::optional<CGImage> drawColumnTurn(const CGImage& picture, const Quad& quad, CGPoint lowerLeft,
                                      int targetWidth, int targetHeight) {
    const auto source = picture.withAlpha();
    const auto turn = ColumnTurn::plan(picture.width(), picture.height(), quad, lowerLeft,
                                       targetWidth, targetHeight);
    if (!source || !turn) return std::nullopt;
    auto target = PixelBuffer::uninitialized(targetWidth, targetHeight);
    if (!target) return std::nullopt;
    const auto room = turn->roomToDraw(target->view());
    if (!room) return std::nullopt;
    WholePicture rows(source->pixels());
    turn->draw(rows, *room, target->view());
    return CGImage(*std::move(target));
}

}  // namespace skarnel
