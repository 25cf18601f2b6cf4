// Vector twin of the second pass of turn.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/walk_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>

#include "imaging/kernels/turn.h"
#include "imaging/kernels/turn_vector-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if !SKARNEL_VECTOR_BLOCKS  // the definition

void WalkColumns(const WalkTarget& target, const ColumnWalk& walk) {
    scalar::walkColumns(target, walk);
}

#else

/// The rows of one band, one lane each. kTall: positions may pass 2^31, so that row and weight
/// are cut apart as floating-point numbers.
template <bool kTall>
class Band {
  public:
    HWY_INLINE Band(const ColumnWalk& walk, int row)
        : walk_(walk),
          row_(row),
          rows_(hn::Iota(DI32(), row)),
          offset_(hn::ConvertTo(DF(), hn::Iota(DI32(), row - walk.middleRow))),
          last_(hn::Set(DF(), walk.last)),
          evenBytes_(EvenBytes()),
          fraction_(hn::Set(D32(), (kLerpUnit - 1) * 0x10001U)),
          twice_(TwicePattern()),
          one_(Kept(hn::Set(DI32(), 1))) {}

    /// Whether columns x, x + 1, ... cover all rows, none of them walked fast or beyond its ends.
    HWY_INLINE bool IsInside(std::size_t x) const {
        const DI32 di32;
        const ColumnCover& cover = walk_.cover;
        const auto first = hn::Set(di32, row_);
        const auto end = hn::Set(di32, row_ + static_cast<int>(kLanes));
        const auto before = hn::Gt(hn::LoadU(di32, cover.fullBegin + x), first);
        const auto behind = hn::Lt(hn::LoadU(di32, cover.fullEnd + x), end);
        const auto step = hn::LoadU(DF(), walk_.step + x);
        const auto centre = hn::LoadU(DF(), walk_.centre + x);
        const auto positionAt = [&](int row) HWY_ATTR {
            return hn::Add(centre, hn::Mul(hn::Set(DF(), static_cast<float>(row)), step));
        };
        const int offset = row_ - walk_.middleRow;
        const auto fast = hn::Gt(step, hn::Set(DF(), kLargestStep));
        const auto above = hn::Lt(positionAt(offset), hn::Zero(DF()));
        const auto below = hn::Gt(positionAt(offset + static_cast<int>(kLanes) - 1), last_);
        const auto unlike = hn::RebindMask(di32, hn::Or(fast, hn::Or(above, below)));
        return hn::AllFalse(di32, hn::Or(unlike, hn::Or(before, behind)));
    }

    /// Columns x, x + 1, ... of all rows, turned over: vector i holds row i. For columns inside.
    HWY_INLINE void Walk(std::size_t x, V32* HWY_RESTRICT block) const {
        const std::ptrdiff_t strideBytes = 4 * walk_.columnStride;
        const std::uint8_t* column = walk_.source + static_cast<std::ptrdiff_t>(x) * strideBytes;
#pragma GCC unroll 16
        for (std::size_t i = 0; i < kLanes; ++i, column += strideBytes)
            block[i] = Column(column, Positions(walk_.centre[x + i], walk_.step[x + i]));
        Transpose(D32(), block);
    }

    /// The same for any columns. Apart from Walk, whose block then stays in registers.
    HWY_NOINLINE void WalkEdges(std::size_t x, V32* HWY_RESTRICT block) const {
        const DI32 di32;
        const ColumnCover& cover = walk_.cover;
        const auto end = hn::Set(di32, row_ + static_cast<int>(kLanes));
        const auto begun = hn::Lt(hn::LoadU(di32, cover.begin + x), end);
        const auto ended = hn::Gt(hn::LoadU(di32, cover.end + x), hn::Set(di32, row_));
        const bool nothing = hn::AllFalse(di32, hn::And(begun, ended));
        for (std::size_t i = 0; i < kLanes; ++i)
            block[i] = nothing ? hn::Zero(D32()) : EdgeColumn(x + i);
        if (!nothing) Transpose(D32(), block);
    }

  private:
    /// Where the rows lie in a column, but for its ends.
    HWY_INLINE VF Positions(float centre, float step) const {
        return hn::Add(hn::Set(DF(), centre), hn::Mul(offset_, hn::Set(DF(), step)));
    }

    /// What the column of pixels at `column` shows at the positions.
    HWY_INLINE V32 Column(const std::uint8_t* HWY_RESTRICT column, VF position) const {
        const DI32 di32;
        const D32 d32;
        const DF df;
        VI32 at;
        VI32 units;
        if (kTall) {
            at = Truncated(df, hn::Mul(position, hn::Set(df, 1.0F / kLerpUnit)));
            const auto whole = hn::Mul(hn::ConvertTo(df, at), hn::Set(df, 1.0F * kLerpUnit));
            units = Truncated(df, hn::Sub(position, whole));
        } else {
            units = Truncated(df, position);
            at = hn::ShiftRight<15>(units);
        }
        const auto weight = hn::And(TwiceLow(units), fraction_);
        const std::int32_t start = hn::GetLane(at);
        const std::uint8_t* run = column + std::ptrdiff_t{4} * walk_.ring.placeOf(start);
        // What the next band will want of this column; a band takes up to two lines.
        hwy::Prefetch(run + 3 * kLineBytes);
        hwy::Prefetch(run + 4 * kLineBytes);
        const V32 low = LoadPixels(run);
        const V32 high = LoadPixels(run + 4 * kLanes);
        const auto offset = hn::Sub(at, FirstLane(di32, at));
        return LerpPixels(PickFromTwo(d32, low, high, offset),
                          PickFromTwo(d32, low, high, hn::Add(offset, one_)), weight, evenBytes_);
    }

    /// The low 16 bits of each lane twice.
    HWY_INLINE V32 TwiceLow(VI32 units) const {
        return hn::BitCast(
            D32(), hn::TableLookupBytes(hn::BitCast(D8(), units), hn::BitCast(D8(), twice_)));
    }

    /// The same for a step that passes more pixels than two vectors hold.
    HWY_NOINLINE V32 LongColumn(std::size_t x) const {
        HWY_ALIGN std::uint8_t pixels[4 * kLanes];
        for (std::size_t i = 0; i < kLanes; ++i)
            scalar::walkPixel(pixels + 4 * i, walk_, x, row_ + static_cast<int>(i));
        return LoadPixels(pixels);
    }

    /// A column that begins or ends in the rows, or is walked fast.
    HWY_NOINLINE V32 EdgeColumn(std::size_t x) const {
        const DI32 di32;
        const D32 d32;
        const ColumnCover& cover = walk_.cover;
        const auto begin = hn::Set(di32, cover.begin[x]);
        const auto last = hn::Set(di32, cover.end[x] - 1);
        auto level = hn::Set(di32, 255);
        level = hn::IfThenElse(hn::Eq(rows_, last), hn::Set(di32, cover.lastLevel[x]), level);
        level = hn::IfThenElse(hn::Eq(rows_, begin), hn::Set(di32, cover.firstLevel[x]), level);
        const auto outside = hn::Or(hn::Lt(rows_, begin), hn::Gt(rows_, last));
        level = hn::IfThenZeroElse(outside, level);
        const std::uint8_t* column =
            walk_.source + 4 * static_cast<std::ptrdiff_t>(x) * walk_.columnStride;
        const VF sum = Positions(walk_.centre[x], walk_.step[x]);
        const V32 pixels = walk_.step[x] > kLargestStep
                               ? LongColumn(x)
                               : Column(column, hn::Min(hn::Max(sum, hn::Zero(DF())), last_));
        return ScaledPixels(pixels, hn::BitCast(d32, level));
    }

    static HWY_INLINE V32 TwicePattern() {
        alignas(16) static constexpr std::uint32_t kBytes[4] = {0x01000100, 0x05040504, 0x09080908,
                                                                0x0D0C0D0C};
        return hn::LoadDup128(D32(), kBytes);
    }

    /// multiply255 of every component.
    static HWY_INLINE V32 ScaledPixels(V32 pixels, V32 level) {
        const hn::Repartition<std::uint16_t, D32> d16;
        const auto factor = hn::BitCast(d16, hn::Or(level, hn::ShiftLeft<16>(level)));
        const auto scaled = [&](auto bytes) HWY_ATTR {
            const auto t = hn::Add(hn::Mul(bytes, factor), hn::Set(d16, std::uint16_t{128}));
            return hn::ShiftRight<8>(hn::Add(t, hn::ShiftRight<8>(t)));
        };
        const auto v = hn::BitCast(d16, pixels);
        const auto even = scaled(hn::And(v, hn::Set(d16, std::uint16_t{0xFF})));
        const auto odd = scaled(hn::ShiftRight<8>(v));
        return hn::BitCast(D32(), hn::Or(even, hn::ShiftLeft<8>(odd)));
    }

    /// The last of kLanes positions then lies at most 2 * kLanes - 2 rows below the first.
    static constexpr float kLargestStep =
        1.0F * kLerpUnit * static_cast<float>(2 * kLanes - 3) / static_cast<float>(kLanes - 1);

    const ColumnWalk& walk_;
    int row_;
    VI32 rows_;
    VF offset_;
    VF last_;
    V32 evenBytes_;
    V32 fraction_;
    V32 twice_;
    VI32 one_;
};

HWY_INLINE void StoreRows(const V32* HWY_RESTRICT block, std::size_t rows,
                          std::uint8_t* HWY_RESTRICT target, std::ptrdiff_t strideBytes) {
    if (HWY_LIKELY(rows == kLanes)) {
#pragma GCC unroll 16
        for (std::size_t i = 0; i < kLanes; ++i, target += strideBytes)
            hn::StoreU(hn::BitCast(D8(), block[i]), D8(), target);
    } else {
        for (std::size_t i = 0; i < rows; ++i, target += strideBytes)
            hn::StoreU(hn::BitCast(D8(), block[i]), D8(), target);
    }
}

/// The bands of a strip on their way past the caches. Each is gathered, so that whole cache lines
/// of its rows leave for memory, and leaves bit by bit while the next band is walked: stores in a
/// rush would only wait for the memory.
class LineStream {
  public:
    static constexpr std::ptrdiff_t kStride = kLineBytes + 8 * kStripColumns;

    LineStream(std::size_t columns, Strip strip, std::ptrdiff_t targetStride)
        : bytes_(4 * columns), strip_(strip), targetStride_(targetStride) {}

    /// Where the next band's pixels go; its rows lie kStride bytes apart.
    std::uint8_t* Pixels() { return buffers_[filling_] + kLineBytes; }

    /// The band is whole; the one before has left. What does not fill a line yet waits in
    /// `unfinished`, a line for each row, for the next strip.
    void Begin(std::uint8_t* target, int rows, std::uint8_t* unfinished) {
        source_ = Pixels();
        target_ = target;
        unfinished_ = unfinished;
        rowsLeft_ = rows;
        filling_ = 1 - filling_;
    }

    /// Sends the next of the rows that are left, if any.
    HWY_INLINE void SendRow() {
        if (rowsLeft_ == 0) return;
        FlushRow();
        target_ += targetStride_;
        source_ += kStride;
        unfinished_ += kLineBytes;
        --rowsLeft_;
    }

    void SendAll() {
        while (rowsLeft_ > 0) SendRow();
    }

  private:
    HWY_INLINE void FlushRow() {
        std::uint8_t* HWY_RESTRICT target = target_;
        std::uint8_t* HWY_RESTRICT source = source_;
        constexpr auto kLine = static_cast<std::ptrdiff_t>(kLineBytes);
        const auto end = static_cast<std::ptrdiff_t>(bytes_);
        auto i =
            -static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(target) % kLineBytes);
        if (strip_ == Strip::Middle || strip_ == Strip::Last) {
            std::memcpy(source - kLine, unfinished_, kLineBytes);
        } else if (i < 0) {
            i += kLine;
            std::memcpy(target, source, static_cast<std::size_t>(i));
        }
        for (; i + kLine <= end; i += kLine)
            for (std::size_t part = 0; part < kLineBytes; part += 4 * kLanes)
                hn::Stream(hn::LoadU(D8(), source + i + part), D8(), target + i + part);
        if (strip_ == Strip::First || strip_ == Strip::Middle)
            std::memcpy(unfinished_, source + end - kLine, kLineBytes);
        else
            std::memcpy(target + i, source + i, static_cast<std::size_t>(end - i));
    }

    std::size_t bytes_;  // of a row
    Strip strip_;
    std::ptrdiff_t targetStride_;
    std::uint8_t* source_ = nullptr;
    std::uint8_t* target_ = nullptr;
    std::uint8_t* unfinished_ = nullptr;
    int rowsLeft_ = 0;
    std::size_t filling_ = 0;
    alignas(kLineBytes) std::uint8_t buffers_[2][kBlockRows * kStride];
};

/// Columns begin .. end - 1 of a whole band of `rows` rows; at least kLanes columns. Now and then
/// `lines`, if any, sends two rows of the band before.
template <bool kTall>
HWY_INLINE void WalkInto(std::uint8_t* target, std::ptrdiff_t strideBytes, const ColumnWalk& walk,
                         int row, int rows, std::size_t begin, std::size_t end, LineStream* lines) {
    for (int done = 0; done < rows; done += static_cast<int>(kLanes)) {
        const Band<kTall> band(walk, row + done);
        const auto count = std::min(kLanes, static_cast<std::size_t>(rows - done));
        std::uint8_t* HWY_RESTRICT out = target + done * strideBytes;
        for (std::size_t at = begin; at < end; at += kLanes) {
            // The last block overlaps the one before; both write the same bytes.
            const std::size_t x = std::min(at, end - kLanes);
            V32 block[kLanes];
            if (HWY_LIKELY(band.IsInside(x))) {
                band.Walk(x, block);
                StoreRows(block, count, out + 4 * (x - begin), strideBytes);
            } else {
                V32 edges[kLanes];
                band.WalkEdges(x, edges);
                StoreRows(edges, count, out + 4 * (x - begin), strideBytes);
            }
            if (lines == nullptr || at % kBlockRows != 0) continue;
            lines->SendRow();
            lines->SendRow();
        }
    }
}

#if HWY_TARGET == HWY_AVX3

/// Up to kLanes rows of a strip on their way past the caches, for vectors of a whole cache line:
/// each line of the target is put together in registers from two vectors of its row.
///
///   vectors   | x .. x + 15 | x + 16 .. x + 31 |
///   lines        |  target, cut at multiples of 64 bytes  |
class WholeLines {
  public:
    /// `waiting` has a line for each row: the vector before the next one.
    WholeLines(std::uint8_t* target, std::ptrdiff_t strideBytes, std::size_t rows,
               std::uint8_t* waiting)
        : target_(target), stride_(strideBytes), rows_(rows), waiting_(waiting) {
        for (std::size_t i = 0; i < kLanes; ++i) {
            std::uint8_t* row = target + static_cast<std::ptrdiff_t>(i) * strideBytes;
            const std::size_t beyond = reinterpret_cast<std::uintptr_t>(row) % kLineBytes;
            lines_[i] = row - beyond;
            hn::Store(hn::Iota(DI32(), static_cast<std::int32_t>(kLanes - beyond / 4)), DI32(),
                      picks_[i]);
        }
    }

    /// The vectors of the target's pixels x, x + 1, ...: completes a line of each row.
    HWY_INLINE void Complete(std::size_t x, const V32* HWY_RESTRICT block) {
        if (HWY_LIKELY(rows_ == kLanes)) {
#pragma GCC unroll 16
            for (std::size_t i = 0; i < kLanes; ++i) CompleteRow(x, i, block[i]);
        } else {
            for (std::size_t i = 0; i < rows_; ++i) CompleteRow(x, i, block[i]);
        }
    }

    /// The same vectors at the beginning or the end of a target's rows, where a line has other
    /// pixels too.
    HWY_INLINE void StoreEdge(std::size_t x, const V32* HWY_RESTRICT block) {
        StoreRows(block, rows_, target_ + 4 * x, stride_);
    }

    /// The vectors wait for those behind them.
    HWY_INLINE void Keep(const V32* HWY_RESTRICT block) {
        for (std::size_t i = 0; i < rows_; ++i)
            hn::StoreU(hn::BitCast(D8(), block[i]), D8(), waiting_ + i * kLineBytes);
    }

  private:
    HWY_INLINE void CompleteRow(std::size_t x, std::size_t i, V32 pixels) {
        std::uint8_t* HWY_RESTRICT waiting = waiting_ + i * kLineBytes;
        const V32 line =
            PickFromTwo(D32(), LoadPixels(waiting), pixels, hn::Load(DI32(), picks_[i]));
        hn::Stream(hn::BitCast(D8(), line), D8(), lines_[i] + 4 * x);
        hn::StoreU(hn::BitCast(D8(), pixels), D8(), waiting);
    }

    std::uint8_t* target_;
    std::ptrdiff_t stride_;
    std::size_t rows_;
    std::uint8_t* waiting_;
    std::uint8_t* lines_[kLanes];
    alignas(kLineBytes) std::int32_t picks_[kLanes][kLanes];
};

static_assert(kLanes * 4 == kLineBytes && kBlockRows == kLanes);

/// One band of a strip of whole vectors of columns; only the last strip may have some more.
template <bool kTall>
HWY_INLINE void WalkLines(const WalkTarget& target, const ColumnWalk& walk, std::size_t begin,
                          std::size_t end, Strip strip, int done) {
    const Band<kTall> band(walk, target.firstRow + done);
    WholeLines lines(target.bytes + done * target.strideBytes + 4 * begin, target.strideBytes,
                     static_cast<std::size_t>(std::min(kBlockRows, target.rows - done)),
                     walk.unfinishedLines + kLineBytes * static_cast<std::size_t>(done));
    const bool begins = strip == Strip::Only || strip == Strip::First;
    const bool ends = strip == Strip::Only || strip == Strip::Last;
    const auto put = [&](std::size_t x, const V32* HWY_RESTRICT block) HWY_ATTR
        __attribute__((always_inline)) {
        const bool isFirst = begins && x == begin;
        if (HWY_LIKELY(!isFirst)) lines.Complete(x - begin, block);
        if (isFirst) lines.Keep(block);
        const bool isLast = ends && x + 2 * kLanes > end;
        if (isFirst || isLast) lines.StoreEdge(x - begin, block);
    };
    const auto walkAt = [&](std::size_t x, auto use) HWY_ATTR __attribute__((always_inline)) {
        V32 block[kLanes];
        if (HWY_LIKELY(band.IsInside(x))) {
            band.Walk(x, block);
            use(x, block);
        } else {
            V32 edges[kLanes];
            band.WalkEdges(x, edges);
            use(x, edges);
        }
    };
    std::size_t x = begin;
    for (; x + kLanes <= end; x += kLanes) walkAt(x, put);
    if (x == end) return;
    walkAt(end - kLanes, [&](std::size_t at, const V32* HWY_RESTRICT block)
                             HWY_ATTR { lines.StoreEdge(at - begin, block); });
}

#endif

template <bool kTall>
void WalkStrip(const WalkTarget& target, const ColumnWalk& walk, std::size_t begin, std::size_t end,
               Strip strip) {
    const bool streams = walk.unfinishedLines != nullptr && walk.columns >= kStripColumns;
#if HWY_TARGET == HWY_AVX3
    if (streams) {
        for (int done = 0; done < target.rows; done += kBlockRows)
            WalkLines<kTall>(target, walk, begin, end, strip, done);
        return;
    }
#endif
    LineStream lines(end - begin, strip, target.strideBytes);
    std::uint8_t* bytes = target.bytes + 4 * begin;
    for (int done = 0; done < target.rows; done += kBlockRows) {
        const int row = target.firstRow + done;
        const int rows = std::min(kBlockRows, target.rows - done);
        if (streams) {
            WalkInto<kTall>(lines.Pixels(), LineStream::kStride, walk, row, rows, begin, end,
                            &lines);
            lines.SendAll();
            lines.Begin(bytes, rows,
                        walk.unfinishedLines + kLineBytes * static_cast<std::size_t>(done));
        } else {
            WalkInto<kTall>(bytes, target.strideBytes, walk, row, rows, begin, end, nullptr);
        }
        bytes += kBlockRows * target.strideBytes;
    }
    lines.SendAll();
}

/// Columns are walked in strips from top to bottom, so that each column is read in its own order
/// and what a band needs of a strip stays in the nearest cache.
void WalkColumns(const WalkTarget& target, const ColumnWalk& walk) {
    if (walk.columns < kLanes) return scalar::walkColumns(target, walk);
    const auto walkStrip = walk.last >= 2147483648.0F ? WalkStrip<true> : WalkStrip<false>;
    const bool begins = walk.strip == Strip::Only || walk.strip == Strip::First;
    const bool ends = walk.strip == Strip::Only || walk.strip == Strip::Last;
    std::size_t x = 0;
    // The last strip takes what would not make a strip of its own.
    for (; x + 2 * kStripColumns <= walk.columns; x += kStripColumns)
        walkStrip(target, walk, x, x + kStripColumns,
                  x == 0 && begins ? Strip::First : Strip::Middle);
    if (x == 0)
        walkStrip(target, walk, x, walk.columns, walk.strip);
    else
        walkStrip(target, walk, x, walk.columns, ends ? Strip::Last : Strip::Middle);
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(WalkColumns);

namespace vector {
void walkColumns(const WalkTarget& target, const ColumnWalk& walk) {
    HWY_DYNAMIC_DISPATCH(WalkColumns)(target, walk);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
