// One reader at a time, so that every input reaches it whatever its first bytes are.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "imaging/io/readers.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__clang__)
// These two forget some of their memory over damaged files; the process that decodes ends anyway.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libheif\nleak:libdav1d\n";
}
#endif

using namespace skarnel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DecodeLimits limits{std::int64_t{1} << 18U};
    auto picture = io::FUZZ_READER(ByteView(data, size), limits);
    if (!picture) return 0;
    const auto finished = io::finishPicture(*std::move(picture), "public.fuzzed");
    if (!finished) return 0;
    const PixelView view = finished->image.pixels();
    if (std::int64_t{view.width} * view.height > limits.maxPixels) std::abort();
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t* row = view.row(y);
        for (int x = 0; x < view.width; ++x, row += 4) {
            if (row[3] == 0 && (row[0] | row[1] | row[2]) != 0) std::abort();
        }
    }
    return 0;
}
