// Paths and URLs.
#include "input.h"
#include "textimaging/path_text.h"
#include "textimaging/url_text.h"

using namespace skarnel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view text = fuzz::Input(bytes, size).text();
    if (const auto encoded = EncodeStringTrimmingWhitespace(text)) {
        fuzz::demand(encoded->empty() || isValidURLText(*encoded));
        fuzz::demand(EncodeStringTrimmingWhitespace(*encoded) == encoded);
    }
    static_cast<void>(isValidURLText(text));
    const auto path = pathOfFileURL(text);
    fuzz::demand(!path || (path->starts_with('/') && text.starts_with("file:///")));
    return 0;
}
