// How a kernel's public function chooses between its scalar definition and its vector twins.
#pragma once

#include "imaging/kernels/targets.h"

#if SKARNEL_VECTOR
#define SKARNEL_RUN_KERNEL(name, ...) \
    (useVectors() ? vector::name(__VA_ARGS__) : scalar::name(__VA_ARGS__))
#else
#define SKARNEL_RUN_KERNEL(name, ...) scalar::name(__VA_ARGS__)
#endif
