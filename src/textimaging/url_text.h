// Paths to URL text and back, under the rules of the URL's own characters.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace skarnel {

/// Removes white space at both ends, replaces every percent escape by the character it stands for,
/// then percent-escapes (UTF-8) what may not stand in a URL: everything but ASCII letters, digits
/// and ;/?:@&=+$,-_.!~*'(). UTF-8 in and out.
/// None when an escape is not two hexadecimal digits or the unescaped bytes are no UTF-8.
std::optional<std::string> EncodeStringTrimmingWhitespace(std::string_view text);

/// Whether the text can be made into a URL: not empty, only characters that may stand in one, and
/// every percent sign followed by two hexadecimal digits.
bool isValidURLText(std::string_view text);

/// The path that a "file" URL names, unescaped; none for any other URL.
std::optional<std::string> pathOfFileURL(std::string_view url);

}  // namespace skarnel
