#include "imaging/kernels/targets.h"

#include <strings.h>

#include <cstdlib>

#if SKARNEL_VECTOR
#include <hwy/targets.h>
#endif

namespace skarnel::kernels {

#if SKARNEL_VECTOR

namespace {

/// All targets that the processor can run.
constexpr Target kAnyTarget = -1;

std::vector<Target> targetsInUse() {
    std::vector<Target> targets;
    for (std::int64_t rest = hwy::SupportedTargets() & HWY_TARGETS & ~HWY_SCALAR; rest != 0;
         rest &= rest - 1)
        targets.push_back(rest & -rest);
    return targets;
}

void limitTo(Target target) {
    hwy::SetSupportedTargetsForTest(target == kAnyTarget ? 0 : target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

Target targetOfEnvironment() {
    const char* name = std::getenv("SKARNEL_SIMD");
    return name == nullptr ? kAnyTarget : targetNamed(name).value_or(kAnyTarget);
}

struct Choice {
    Choice() {
        if (target != kAnyTarget && target != kScalarTarget) limitTo(target);
    }
    Target target = targetOfEnvironment();  // what holds outside any ScopedTarget
    bool vectors = target != kScalarTarget;
};

Choice& choice() {
    static Choice made;
    return made;
}

}  // namespace

bool useVectors() {
    return choice().vectors;
}

std::vector<Target> supportedTargets() {
    choice();
    return targetsInUse();
}

std::optional<Target> targetNamed(const char* name) {
    if (::strcasecmp(name, "scalar") == 0) return kScalarTarget;
    for (const Target target : targetsInUse())
        if (::strcasecmp(name, hwy::TargetName(target)) == 0) return target;
    return std::nullopt;
}

std::string targetName(Target target) {
    return target == kScalarTarget ? "scalar" : hwy::TargetName(target);
}

ScopedTarget::ScopedTarget(Target target) : before_(useVectors()) {
    choice().vectors = target != kScalarTarget;
    if (target != kScalarTarget) limitTo(target);
}

ScopedTarget::~ScopedTarget() {
    choice().vectors = before_;
    limitTo(choice().target == kScalarTarget ? kAnyTarget : choice().target);
}

#else

bool useVectors() {
    return false;
}
std::vector<Target> supportedTargets() {
    return {};
}
std::optional<Target> targetNamed(const char*) {
    return std::nullopt;
}
std::string targetName(Target) {
    return "scalar";
}
ScopedTarget::ScopedTarget(Target) : before_(false) {}
ScopedTarget::~ScopedTarget() = default;

#endif

}  // namespace skarnel::kernels
