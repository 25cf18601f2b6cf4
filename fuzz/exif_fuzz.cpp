#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "imaging/io/exif.h"

using namespace skarnel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ImageProperties properties;
    const io::ExifFacts facts = io::readExif(ByteView(data, size), properties);
    if (facts.orientation < 1 || facts.orientation > 8) std::abort();
    return 0;
}
