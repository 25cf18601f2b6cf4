// Packets in files: found without a crash, and put in so that they are found.
#include "input.h"
#include "recipe/recipe_file.h"
#include "recipe/xmp_packet.h"

using namespace skarnel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ByteView file(bytes, size);
    const auto before = xmpPacketOf(file);
    const std::string packet(file.empty() ? 9 : 9 + file.back(), 'p');
    const auto with = withXmpPacket(file, packet);
    if (with) {
        fuzz::demand(with->size() >= file.size() + packet.size());
        // A damaged PNG may hide it behind a chunk of a wrong length, an odd JPEG behind a scan.
        const auto after = xmpPacketOf(*with);
        fuzz::demand(before || !after || *after == packet);
    } else {
        fuzz::demand(!with.error().message.empty());
    }
    static_cast<void>(readRecipe(file));
    return 0;
}
