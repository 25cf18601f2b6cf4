#include "textimaging/string_encodings.h"

#include <iconv.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstring>

namespace skarnel {
namespace {

struct Encoding {
    std::int32_t code;
    const char* converter;     // the conversion library's name
    std::string_view charset;  // what a document says
};

constexpr std::int32_t kIso2022Jp = 21;

// The wide codes have their high bit set, as the platform numbers them.
constexpr std::array<Encoding, 21> kEncodings{{
    {1, "ASCII", "us-ascii"},
    {3, "EUC-JP", "euc-jp"},
    {4, "UTF-8", "utf-8"},
    {5, "ISO-8859-1", "iso-8859-1"},
    {8, "SHIFT_JIS", "shift_jis"},
    {9, "ISO-8859-2", "iso-8859-2"},
    {10, "UTF-16", "utf-16"},
    {11, "CP1251", "windows-1251"},
    {12, "CP1252", "windows-1252"},
    {13, "CP1253", "windows-1253"},
    {14, "CP1254", "windows-1254"},
    {15, "CP1250", "windows-1250"},
    {kIso2022Jp, "ISO-2022-JP", "iso-2022-jp"},
    {30, "MACINTOSH", "macintosh"},
    {static_cast<std::int32_t>(0x8C000100), "UTF-32", "utf-32"},
    {static_cast<std::int32_t>(0x90000100), "UTF-16BE", "utf-16be"},
    {static_cast<std::int32_t>(0x94000100), "UTF-16LE", "utf-16le"},
    {static_cast<std::int32_t>(0x98000100), "UTF-32BE", "utf-32be"},
    {static_cast<std::int32_t>(0x9C000100), "UTF-32LE", "utf-32le"},
    {static_cast<std::int32_t>(0x80000631), "GB18030", "gb18030"},
    {static_cast<std::int32_t>(0x80000A03), "BIG5", "big5"},
}};

constexpr const char* kNativeUtf16 =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

const Encoding* encodingWithCode(std::int32_t code) {
    for (const Encoding& encoding : kEncodings)
        if (encoding.code == code) return &encoding;
    return nullptr;
}

class Converter {
  public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Converter() {
        if (isOpen()) iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // All of the input or nothing: an irreversible conversion counts as none.
    std::optional<Bytes> convert(const void* input, std::size_t size) {
        if (!isOpen()) return std::nullopt;
        Bytes output;
        std::array<char, 4096> chunk;
        auto* in = const_cast<char*>(static_cast<const char*>(input));  // iconv does not write
        for (bool flushing = false;;) {
            char* out = chunk.data();
            std::size_t room = chunk.size();
            const std::size_t result = flushing ? iconv(handle_, nullptr, nullptr, &out, &room)
                                                : iconv(handle_, &in, &size, &out, &room);
            const int error = errno;
            output.insert(output.end(), chunk.data(), out);
            if (result == static_cast<std::size_t>(-1)) {
                if (error != E2BIG) return std::nullopt;
            } else if (result != 0) {
                return std::nullopt;
            } else if (flushing) {
                return output;
            } else {
                flushing = true;
            }
        }
    }

  private:
    bool isOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t handle_;
};

bool isHighSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}

bool isLowSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

}  // namespace

std::optional<std::string_view> charsetOfEncoding(std::int32_t code) {
    const Encoding* encoding = encodingWithCode(code);
    if (encoding == nullptr) return std::nullopt;
    return encoding->charset;
}

std::optional<Bytes> encodeString(std::u16string_view text, std::int32_t code) {
    const Encoding* encoding = encodingWithCode(code);
    if (encoding == nullptr) return std::nullopt;
    // The characters by which this encoding changes its alphabet have no place among its text; the
    // converter lets them through, and what follows would be read as something else.
    if (code == kIso2022Jp && text.find_first_of(u"\x0E\x0F\x1B") != std::u16string_view::npos)
        return std::nullopt;
    return Converter(encoding->converter, kNativeUtf16).convert(text.data(), 2 * text.size());
}

std::optional<std::u16string> decodeString(ByteView data, std::int32_t code) {
    const Encoding* encoding = encodingWithCode(code);
    if (encoding == nullptr) return std::nullopt;
    const std::optional<Bytes> units =
        Converter(kNativeUtf16, encoding->converter).convert(data.data(), data.size());
    if (!units) return std::nullopt;
    std::u16string text(units->size() / 2, u'\0');
    if (!text.empty()) std::memcpy(text.data(), units->data(), 2 * text.size());
    return text;
}

std::u16string withPairedSurrogates(std::u16string_view text) {
    std::u16string result(text);
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (isHighSurrogate(result[i]) && i + 1 < result.size() && isLowSurrogate(result[i + 1]))
            ++i;
        else if (isHighSurrogate(result[i]) || isLowSurrogate(result[i]))
            result[i] = u'\uFFFD';
    }
    return result;
}

std::string utf8FromUtf16(std::u16string_view text) {
    const std::u16string paired = withPairedSurrogates(text);
    std::string result;
    for (std::size_t i = 0; i < paired.size(); ++i) {
        char32_t scalar = paired[i];
        if (isHighSurrogate(paired[i]))
            scalar = 0x10000 + ((scalar & 0x3FF) << 10) + (char32_t{paired[++i]} & 0x3FF);
        const auto tail = [&](int shift) {
            return static_cast<char>(0x80 | ((scalar >> shift) & 0x3F));
        };
        if (scalar < 0x80) {
            result += static_cast<char>(scalar);
        } else if (scalar < 0x800) {
            result += {static_cast<char>(0xC0 | (scalar >> 6)), tail(0)};
        } else if (scalar < 0x10000) {
            result += {static_cast<char>(0xE0 | (scalar >> 12)), tail(6), tail(0)};
        } else {
            result += {static_cast<char>(0xF0 | (scalar >> 18)), tail(12), tail(6), tail(0)};
        }
    }
    return result;
}

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string result;
    for (std::size_t i = 0; i < text.size();) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
        const unsigned char lead = byte(i);
        const std::size_t length = lead < 0x80   ? 1
                                   : lead < 0xC2 ? 0
                                   : lead < 0xE0 ? 2
                                   : lead < 0xF0 ? 3
                                   : lead < 0xF5 ? 4
                                                 : 0;
        bool good = length != 0 && i + length <= text.size();
        char32_t scalar = length < 2 ? lead : lead & (0x7FU >> length);
        for (std::size_t k = 1; good && k < length; ++k) {
            good = (byte(i + k) & 0xC0) == 0x80;
            scalar = (scalar << 6) | (byte(i + k) & 0x3F);
        }
        static constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
        good = good && scalar >= kLeast[length] && scalar <= 0x10FFFF &&
               (scalar < 0xD800 || scalar > 0xDFFF);
        if (!good) {
            result += u'\uFFFD';
            ++i;
            continue;
        }
        if (scalar < 0x10000) {
            result += static_cast<char16_t>(scalar);
        } else {
            result += static_cast<char16_t>(0xD7C0 + (scalar >> 10));
            result += static_cast<char16_t>(0xDC00 + (scalar & 0x3FF));
        }
        i += length;
    }
    return result;
}

}  // namespace skarnel
