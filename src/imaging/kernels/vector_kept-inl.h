// Keeping constants in registers.
#if defined(SKARNEL_VECTOR_KEPT_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef SKARNEL_VECTOR_KEPT_INL
#undef SKARNEL_VECTOR_KEPT_INL
#else
#define SKARNEL_VECTOR_KEPT_INL
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET != HWY_SCALAR

/// The vector, but nothing that the compiler knows: a constant would be made anew wherever it is
/// used. An emulated vector is an array, which has no register.
template <class V>
HWY_INLINE V Kept(V vector) {
#if HWY_TARGET == HWY_AVX3
    asm("" : "+v"(vector.raw));
#elif HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128
    asm("" : "+x"(vector.raw));
#endif
    return vector;
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // include guard by target
