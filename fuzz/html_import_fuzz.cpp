// HTML read as plain text.
#include "input.h"
#include "util/string/html_importer.h"
#include "util/string/nsstring_extensions.h"

using namespace skarnel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const fuzz::Input input(bytes, size);
    const auto document = importHTML(input.rest());
    const auto detected = encodingOfMark(input.rest());
    if (document) {
        fuzz::demand(document->encoding ==
                     (detected ? detected->encoding : NSStringEncoding::MacOSRoman));
    }
    const NSString text(input.units());
    const auto flat = NSStringExtensions::flattenHTML(text);
    fuzz::demand(text.length() != 0 || (flat && flat->isSame(text)));
    return 0;
}
