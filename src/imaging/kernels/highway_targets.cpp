// The functions of Highway's library that its headers call, for x86. The library itself also
// has a clock whose resolution it measures whenever it is loaded; that took 3.5 ms of each start,
// a third of what a small picture takes in all.
#include <cpuid.h>
#include <hwy/targets.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace hwy {
namespace {

std::int64_t targetsForTest = 0;

/// The compiler's own probe also asks whether the system saves the wide registers.
bool hasAvx2() {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    const bool hasHalfFloats = __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (ecx & bit_F16C) != 0;
    return hasHalfFloats && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
           __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma");
}

/// A target counts when the processor has everything that its functions are compiled for.
std::int64_t targetsOfProcessor() {
    __builtin_cpu_init();
    std::int64_t targets = HWY_SCALAR | HWY_EMU128;
    if (!__builtin_cpu_supports("ssse3")) return targets;
    targets |= HWY_SSSE3;
    if (!__builtin_cpu_supports("sse4.1") || !__builtin_cpu_supports("sse4.2") ||
        !__builtin_cpu_supports("pclmul") || !__builtin_cpu_supports("aes")) {
        return targets;
    }
    targets |= HWY_SSE4;
    if (!hasAvx2()) return targets;
    targets |= HWY_AVX2;
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512cd")) {
        targets |= HWY_AVX3;
    }
    return targets;
}

}  // namespace

std::int64_t SupportedTargets() {
    static const std::int64_t ofProcessor = targetsOfProcessor();
    return targetsForTest != 0 ? targetsForTest : ofProcessor;
}

void SetSupportedTargetsForTest(std::int64_t targets) {
    targetsForTest = targets;
}

ChosenTarget& GetChosenTarget() {
    static ChosenTarget chosen;
    return chosen;
}

/// Where an assertion of the headers fails; only builds without optimisation have them.
void Abort(const char* file, int line, const char* format, ...) {
    std::fprintf(stderr, "%s:%d: ", file, line);
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputc('\n', stderr);
    std::abort();
}

}  // namespace hwy
