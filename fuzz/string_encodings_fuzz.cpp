// Text to bytes and back in every encoding, known or not.
#include <iconv.h>

#include <array>
#include <string>

#include "input.h"
#include "textimaging/string_encodings.h"
#include "util/string/string_encoding.h"

using namespace skarnel;

namespace {

constexpr std::array<std::uint32_t, 24> kCodes{
    0,          1,          3,          4,          5,          8,          9,  10,
    11,         12,         13,         14,         15,         21,         30, 0x8C000100,
    0x90000100, 0x94000100, 0x98000100, 0x9C000100, 0x80000631, 0x80000A03, 2,  0xFFFFFFFF};

/// The system loads a conversion with its first user and drops it with its last. One user of each
/// that stays saves nearly all of the time that a run takes.
void keepConversionsLoaded() {
    static std::array<iconv_t, kCodes.size()> kept{};
    for (std::size_t i = 0; i < kCodes.size(); ++i) {
        const auto charset = charsetOfEncoding(static_cast<std::int32_t>(kCodes[i]));
        if (charset) kept[i] = ::iconv_open("UTF-16LE", std::string(*charset).c_str());
    }
}

/// Text that came out of bytes goes into bytes that give it again.
void decodeAndEncode(ByteView bytes, std::int32_t code) {
    const auto text = decodeString(bytes, code);
    if (!text) return;
    fuzz::demand(charsetOfEncoding(code).has_value());
    const auto again = encodeString(*text, code);
    fuzz::demand(!again || decodeString(*again, code) == text);
}

void encodeAndDecode(const std::u16string& text, std::int32_t code) {
    const auto bytes = encodeString(text, code);
    if (bytes) static_cast<void>(decodeString(*bytes, code));
}

void unicode(const fuzz::Input& input) {
    const std::u16string text = utf16FromUtf8(input.text());
    fuzz::demand(withPairedSurrogates(text) == text);
    fuzz::demand(utf16FromUtf8(utf8FromUtf16(text)) == text);
    const std::u16string paired = withPairedSurrogates(input.units());
    fuzz::demand(utf16FromUtf8(utf8FromUtf16(paired)) == paired);
}

void platform(const fuzz::Input& input) {
    static_cast<void>(stringWithDetectedEncoding(input.rest()));
    const NSString text(input.units());
    const auto bytes = dataUsingEncoding(text, NSStringEncoding::Unicode);
    fuzz::demand(bytes && stringWithDetectedEncoding(*bytes) == text);
    // Mac OS Roman has no mark: but a text of it may look like one.
    const auto roman = dataUsingEncoding(text, NSStringEncoding::MacOSRoman);
    if (roman && !encodingOfMark(*roman)) fuzz::demand(stringWithDetectedEncoding(*roman) == text);
    static_cast<void>(dataUsingEncoding(text, NSStringEncoding::UTF8));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const bool once = (keepConversionsLoaded(), true);
    static_cast<void>(once);
    fuzz::Input input(bytes, size);
    const auto code = static_cast<std::int32_t>(kCodes[input.byte() % kCodes.size()]);
    decodeAndEncode(input.rest(), code);
    encodeAndDecode(input.units(), code);
    unicode(input);
    platform(input);
    return 0;
}
