#include "util/misc/rand.h"

#include <cstdint>
#include <cstdlib>

#include "util/geometry/integers.h"

namespace skarnel {

static_assert(RAND_MAX == 2147483647, "the factor below is 1 / 2^31");

int randFromGenerator(int generated, int n) {
    const auto limit = static_cast<float>(n);
    const auto share = static_cast<float>(static_cast<double>(generated) * 4.656612873077393e-10);
    const std::int32_t whole = toInt32(static_cast<double>(share * limit));
    return static_cast<std::int16_t>(whole);
}

int Rand(int n) {
    return randFromGenerator(std::rand(), n);
}

}  // namespace skarnel
