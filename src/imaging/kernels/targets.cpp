#include "imaging/kernels/targets.h"

#include <cstdlib>
#include <string_view>

#if SKARNEL_VECTOR
#include <hwy/targets.h>
#endif

namespace skarnel::kernels {

#if SKARNEL_VECTOR

namespace {

bool environmentAllowsVectors() {
    const char* choice = std::getenv("SKARNEL_SIMD");
    return choice == nullptr || std::string_view(choice) != "scalar";
}

bool& vectorsChosen() {
    static bool chosen = environmentAllowsVectors();
    return chosen;
}

}  // namespace

bool useVectors() {
    return vectorsChosen();
}

std::vector<Target> supportedTargets() {
    std::vector<Target> targets;
    for (std::int64_t rest = hwy::SupportedTargets() & HWY_TARGETS & ~HWY_SCALAR; rest != 0;
         rest &= rest - 1)
        targets.push_back(rest & -rest);
    return targets;
}

std::string targetName(Target target) {
    return target == kScalarTarget ? "scalar" : hwy::TargetName(target);
}

ScopedTarget::ScopedTarget(Target target) : before_(vectorsChosen()) {
    vectorsChosen() = target != kScalarTarget;
    if (target == kScalarTarget) return;
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

ScopedTarget::~ScopedTarget() {
    vectorsChosen() = before_;
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

#else

bool useVectors() {
    return false;
}
std::vector<Target> supportedTargets() {
    return {};
}
std::string targetName(Target) {
    return "scalar";
}
ScopedTarget::ScopedTarget(Target) : before_(false) {}
ScopedTarget::~ScopedTarget() = default;

#endif

}  // namespace skarnel::kernels
