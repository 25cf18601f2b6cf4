// The size that a file's head states is asked for before anything stands behind a wall.
#include <algorithm>
#include <cstring>

#include "imaging/io/picture_head.h"
#include "input.h"

using namespace skarnel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::size_t reads = 0;
    const auto read = [&](std::uint64_t place, std::span<std::uint8_t> target) -> std::size_t {
        ++reads;
        if (place >= size || target.empty()) return 0;
        const auto at = static_cast<std::size_t>(place);
        const std::size_t count = std::min(target.size(), size - at);
        std::memcpy(target.data(), bytes + at, count);
        return count;
    };
    const auto head = sizeInHead(read);
    const auto primary = sizeOfPrimaryItem(read);
    fuzz::demand(reads < 12000);
    if (primary) fuzz::demand(primary->width > 0 && primary->height > 0);
    if (head) fuzz::demand(head->width > 0 && head->height > 0);
    return 0;
}
