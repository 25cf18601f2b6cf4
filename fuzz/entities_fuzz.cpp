// The operations on strings that read what others wrote: entities, patterns, names of files.
#include "input.h"
#include "storage/save_name.h"
#include "util/log/system_log.h"
#include "util/string/nsstring_extensions.h"

using namespace skarnel;

namespace {

void decode(const NSString& text) {
    const NSString decoded = NSStringExtensions::stringByDecodingHTMLEntities(text);
    const bool plain = text.units().find(u'&') == std::u16string_view::npos;
    fuzz::demand(decoded.length() <= text.length() && decoded.isSame(text) == plain);
}

void extract(const NSString& text, const NSString& start, const NSString& end) {
    using namespace NSStringExtensions;
    for (const auto& part :
         {extractBetweenPattern(text, start, end), reverseExtractBetweenPattern(text, start, end)})
        fuzz::demand(!part || text.units().find(part->units()) != std::u16string_view::npos);
}

void name(const NSString& text) {
    const NSString clean = NSStringExtensions::cleanForFilename(text);
    fuzz::demand(clean.units().find_first_of(u"/:") == std::u16string_view::npos);
    const std::string proposed = saveNameForPath(text.description());
    fuzz::demand(proposed.ends_with(" Reflection") && proposed.find('/') == std::string::npos);
    static_cast<void>(text.lastPathComponent());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const LogSink before = setSystemLogSink([](std::string_view) {});
    fuzz::Input input(bytes, size);
    const NSString start(input.unitsUpToZero());
    const NSString end(input.unitsUpToZero());
    const NSString text(input.units());
    decode(start);
    decode(text);
    extract(text, start, end);
    name(start);
    name(text);
    return 0;
}
