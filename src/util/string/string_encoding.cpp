#include "util/string/string_encoding.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <utility>

namespace skarnel {
namespace {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

/// Leaves every error as it is. The library's own callback for stopping passes over soft hyphens,
/// byte-order marks and other characters that draw nothing, which then were lost.
void stopAtTheFirst(const void*, UConverterFromUnicodeArgs*, const char16_t*, std::int32_t, UChar32,
                    UConverterCallbackReason, UErrorCode*) {}

/// Null when the library has no such table.
Converter openMacOSRoman() {
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(ucnv_open("macintosh", &status));
    if (U_FAILURE(status)) return nullptr;
    ucnv_setFromUCallBack(converter.get(), stopAtTheFirst, nullptr, nullptr, nullptr, &status);
    // A look-alike is a loss as well.
    ucnv_setFallback(converter.get(), false);
    return U_SUCCESS(status) ? std::move(converter) : nullptr;
}

Bytes unicodeBytes(std::u16string_view units) {
    Bytes bytes{0xFF, 0xFE};
    bytes.reserve(2 + 2 * units.size());
    for (const char16_t unit : units) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

std::optional<Bytes> macOSRomanBytes(std::u16string_view units) {
    const Converter converter = openMacOSRoman();
    if (!converter || units.size() > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
    Bytes bytes(units.size() + 1);
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_fromUChars(converter.get(), reinterpret_cast<char*>(bytes.data()),
                        static_cast<std::int32_t>(bytes.size()), units.data(),
                        static_cast<std::int32_t>(units.size()), &status);
    if (U_FAILURE(status)) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

/// Every byte has a character, so the units are as many as the bytes.
NSString stringWithMacOSRoman(ByteView bytes) {
    const Converter converter = openMacOSRoman();
    if (!converter || bytes.size() > std::numeric_limits<std::int32_t>::max()) return NSString();
    std::u16string units(bytes.size() + 1, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_toUChars(converter.get(), units.data(), static_cast<std::int32_t>(units.size()),
                      reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::int32_t>(bytes.size()), &status);
    if (U_FAILURE(status)) return NSString();
    return NSString(std::u16string_view(units).substr(0, static_cast<std::size_t>(length)));
}

NSString stringWithUnicode(ByteView bytes, bool bigEndian) {
    std::u16string units;
    units.reserve(bytes.size() / 2 + 1);
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        const unsigned first = bytes[at];
        const unsigned second = bytes[at + 1];
        units.push_back(
            static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first));
    }
    if (bytes.size() % 2 != 0) units.push_back(u'\uFFFD');
    return NSString(units);
}

}  // namespace

std::optional<Bytes> dataUsingEncoding(const NSString& text, NSStringEncoding encoding) {
    switch (encoding) {
        case NSStringEncoding::Unicode:
            return unicodeBytes(text.units());
        case NSStringEncoding::MacOSRoman:
            return macOSRomanBytes(text.units());
        case NSStringEncoding::UTF8:
            break;
    }
    const std::optional<std::string> bytes = text.UTF8String();
    if (!bytes) return std::nullopt;
    return Bytes(bytes->begin(), bytes->end());
}

std::optional<DetectedEncoding> encodingOfMark(ByteView bytes) {
    const auto startsWith = [bytes](auto... mark) {
        const std::array<std::uint8_t, sizeof...(mark)> all{static_cast<std::uint8_t>(mark)...};
        return bytes.size() >= all.size() && std::equal(all.begin(), all.end(), bytes.begin());
    };
    if (startsWith(0xFF, 0xFE)) return DetectedEncoding{NSStringEncoding::Unicode, false, 2};
    if (startsWith(0xFE, 0xFF)) return DetectedEncoding{NSStringEncoding::Unicode, true, 2};
    if (startsWith(0xEF, 0xBB, 0xBF)) return DetectedEncoding{NSStringEncoding::UTF8, false, 3};
    return std::nullopt;
}

NSString stringWithDetectedEncoding(ByteView bytes) {
    const std::optional<DetectedEncoding> detected = encodingOfMark(bytes);
    if (!detected) return stringWithMacOSRoman(bytes);
    const ByteView text = bytes.subspan(detected->markLength);
    if (detected->encoding == NSStringEncoding::Unicode)
        return stringWithUnicode(text, detected->bigEndian);
    return NSString::stringWithUTF8Lossy({reinterpret_cast<const char*>(text.data()), text.size()});
}

}  // namespace skarnel
