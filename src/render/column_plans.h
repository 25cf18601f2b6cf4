// Where the columns of shaped rows come from, kept from one preview to the next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace skarnel {

/// The columns 0 .. span of a row that shows a mirror's pixels 0 .. width - 1: column x lies at
/// x * ((width - 1) / span), in double precision.
struct ColumnPlan {
    std::vector<std::uint32_t> packed;  // as kernels::shapePackedRow has them
    std::vector<std::int32_t>
        inDoubles;                  // columns whose bytes only double arithmetic gives, rising
    std::vector<double> fractions;  // of these
};

/// The plans for mirrors of one width. They depend on nothing but that and the span, and while a
/// setting is dragged most rows of a preview have spans of the one before.
class ColumnPlans {
  public:
    /// Positions and weights have 16 bits each.
    static constexpr int kMostPixels = 1 << 16;
    /// Bytes of columns that are kept; beyond, rows are planned one by one.
    static constexpr std::size_t kLimit = std::size_t{24} << 20;

    /// 1 <= width <= kMostPixels.
    explicit ColumnPlans(int width) : width_(width) {}

    int width() const { return width_; }

    /// The plan for a span >= 1; null beyond the limit and without memory. Valid as long as this
    /// object.
    const ColumnPlan* plan(int span);

    /// Asks for the memory of a kept plan that will soon be wanted; nothing where there is none.
    void expect(int span) const;

    std::size_t bytes() const { return bytes_; }

    /// Hands the plans to the next who asks for them.
    struct Return {
        void operator()(ColumnPlans* plans) const;
    };
    using Handle = std::unique_ptr<ColumnPlans, Return>;

    /// Those of the last render that are not in use, if they are for this width; otherwise new
    /// ones. Null for a width without plans and without memory.
    static Handle take(int width);

  private:
    int width_;
    std::size_t bytes_ = 0;
    std::vector<std::unique_ptr<const ColumnPlan>> plans_;  // by span; null where there is none
};

}  // namespace skarnel
