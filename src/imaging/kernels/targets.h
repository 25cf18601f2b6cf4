// Which processor targets the kernels run on: chosen at start, overridable for tests.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace skarnel::kernels {

/// A vector target of this build, or `kScalarTarget`.
using Target = std::int64_t;
inline constexpr Target kScalarTarget = 0;

/// False when the build has no vector kernels, or the environment says SKARNEL_SIMD=scalar, or a
/// test chose the scalar definition.
bool useVectors();

/// The vector targets that this processor can run, best first; without kScalarTarget. Only one
/// where the environment's SKARNEL_SIMD names it (avx3, avx2, sse4, ssse3); a name that the
/// processor cannot run counts as none.
std::vector<Target> supportedTargets();

std::string targetName(Target target);

/// The target of that name in any case, "scalar" among them; none where the processor cannot run
/// it.
std::optional<Target> targetNamed(const char* name);

/// Until the object goes, kernels run on this target alone. For tests and benchmarks, one at a
/// time; not for use beside running renders.
class ScopedTarget {
  public:
    explicit ScopedTarget(Target target);
    ~ScopedTarget();
    ScopedTarget(const ScopedTarget&) = delete;
    ScopedTarget& operator=(const ScopedTarget&) = delete;

  private:
    bool before_;
};

}  // namespace skarnel::kernels
