// What a camera wrote, on both roads: its facts, and the block that goes into the result.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "imaging/io/exif.h"
#include "imaging/io/exif_block.h"

using namespace skarnel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView block(data, size);
    ImageProperties properties;
    const io::ExifFacts facts = io::readExif(block, properties);
    if (facts.orientation < 1 || facts.orientation > 8) std::abort();
    const io::ExifTree kept = io::exifTreeOf(properties);
    const io::ExifTree tree = io::readExifTree(block);
    const Bytes written = io::writeExifBlock(tree, std::nullopt);
    if (tree.empty() != written.empty()) std::abort();
    setExifUpright(properties);
    static_cast<void>(io::writeExifBlock(kept, io::Resolution{72, 72}));
    static_cast<void>(io::readExifTree(written));
    return 0;
}
