// Recipe files, and pictures that may carry a recipe.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "recipe/recipe_file.h"
#include "recipe/xmp_packet.h"

using namespace skarnel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes(data, size);
    (void)withXmpPacket(bytes, "<packet/>");
    const auto recipe = readRecipe(bytes);
    if (!recipe) {
        if (recipe.error().message.empty()) std::abort();  // a reason is owed
        return 0;
    }
    // What was accepted can be written, and its text is then the same for good.
    const auto text = serializeRecipe(*recipe);
    if (!text) std::abort();
    const auto again =
        parseRecipe({reinterpret_cast<const std::uint8_t*>(text->data()), text->size()});
    if (!again || *serializeRecipe(*again) != *text) std::abort();
    return 0;
}
