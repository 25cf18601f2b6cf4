#include "render/column_plans.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

#include "imaging/kernels/exact_weight.h"

namespace skarnel {
namespace {

/// The plans that nobody uses; the last ones that were given back.
struct IdlePlans {
    std::mutex mutex;
    std::unique_ptr<ColumnPlans> plans;
};

/// Never destroyed: a result may outlive every other object of the process.
IdlePlans& idle() {
    static IdlePlans* const instance = new IdlePlans;
    return *instance;
}

ColumnPlan planned(int width, int span) {
    const auto count = static_cast<std::size_t>(span) + 1;
    std::vector<std::int32_t> from(count);
    std::vector<std::uint32_t> weight(count);
    ColumnPlan plan;
    plan.inDoubles.resize(count);
    const kernels::ColumnPositions positions{0, (width - 1) / static_cast<double>(span), width - 1};
    const std::size_t found = kernels::planShapeColumns(positions, 0, count, from.data(),
                                                        weight.data(), plan.inDoubles.data());
    plan.inDoubles.resize(found);
    plan.inDoubles.shrink_to_fit();
    plan.fractions.reserve(found);
    for (const std::int32_t x : plan.inDoubles)
        plan.fractions.push_back(x * positions.scale - from[static_cast<std::size_t>(x)]);
    plan.packed.reserve(count);
    for (std::size_t x = 0; x < count; ++x)
        plan.packed.push_back((weight[x] & 0xFFFF0000U) | static_cast<std::uint32_t>(from[x]));
    return plan;
}

}  // namespace

const ColumnPlan* ColumnPlans::plan(int span) {
    const auto place = static_cast<std::size_t>(span);
    if (place < plans_.size() && plans_[place]) return plans_[place].get();
    const std::size_t size = sizeof(std::uint32_t) * (place + 1);
    if (bytes_ + size > kLimit) return nullptr;
    try {
        if (place >= plans_.size()) plans_.resize(place + 1);
        plans_[place] = std::make_unique<const ColumnPlan>(planned(width_, span));
        bytes_ += size;
        return plans_[place].get();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void ColumnPlans::expect(int span) const {
    if (span < 1 || static_cast<std::size_t>(span) >= plans_.size()) return;
    const ColumnPlan* plan = plans_[static_cast<std::size_t>(span)].get();
    if (plan == nullptr) return;
    // The first lines, after which the processor sees by itself where this goes, and the last one.
    constexpr std::size_t kLine = 16;
    for (std::size_t line = 0; line < 4; ++line) {
        const std::size_t at = std::min(line * kLine, plan->packed.size() - 1);
        __builtin_prefetch(plan->packed.data() + at);
    }
    __builtin_prefetch(&plan->packed.back());
}

void ColumnPlans::Return::operator()(ColumnPlans* plans) const {
    std::unique_ptr<ColumnPlans> kept(plans);
    IdlePlans& store = idle();
    const std::lock_guard lock(store.mutex);
    std::swap(store.plans, kept);
}

ColumnPlans::Handle ColumnPlans::take(int width) {
    if (width < 1 || width > kMostPixels) return nullptr;
    {
        IdlePlans& store = idle();
        const std::lock_guard lock(store.mutex);
        if (store.plans && store.plans->width() == width) return Handle(store.plans.release());
    }
    return Handle(new (std::nothrow) ColumnPlans(width));
}

}  // namespace skarnel
