// The serialised form of styled text: whatever is accepted is exactly what would be written.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "textimaging/serialized_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const skarnel::ByteView data(bytes, size);
    const skarnel::Result<skarnel::StyledText> text = skarnel::deserializeText(data);
    if (!text) return 0;
    const std::optional<skarnel::Bytes> again = skarnel::serializeText(*text);
    if (!again || !std::equal(again->begin(), again->end(), data.begin(), data.end())) std::abort();
    return 0;
}
