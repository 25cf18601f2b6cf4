#include "recipe/base64.h"

namespace skarnel {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string encodeBase64(ByteView bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
        std::uint32_t group = 0;  // aaaaaaaa bbbbbbbb cccccccc, cut into four times six bits
        for (std::size_t i = 0; i < 3; ++i) {
            group = group << 8 | (i < count ? bytes[at + i] : 0U);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            text += i <= count ? kAlphabet[group >> (18 - 6 * i) & 63U] : '=';
        }
    }
    return text;
}

std::optional<Bytes> decodeBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    Bytes bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t at = 0; at < text.size(); at += 4) {
        const bool last = at + 4 == text.size();
        std::size_t padding = 0;
        if (last && text[at + 3] == '=') padding = text[at + 2] == '=' ? 2 : 1;
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const bool pad = i >= 4 - padding;
            const std::size_t digit = pad ? 0 : kAlphabet.find(text[at + i]);
            if (digit == std::string_view::npos) return std::nullopt;
            group = group << 6 | static_cast<std::uint32_t>(digit);
        }
        if ((group & ((1U << (8 * padding)) - 1)) != 0) return std::nullopt;
        for (std::size_t i = 0; i < 3 - padding; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(group >> (16 - 8 * i)));
        }
    }
    return bytes;
}

}  // namespace skarnel
