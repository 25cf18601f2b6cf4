#include "util/string/nsstring_extensions.h"

#include <array>
#include <string>

#include "util/log/system_log.h"
#include "util/string/html_importer.h"
#include "util/string/nsscanner.h"
#include "util/string/string_encoding.h"

namespace skarnel::NSStringExtensions {
namespace {

struct Entity {
    std::u16string_view text;
    char16_t replacement;
};

/// In the order in which they are tried.
constexpr std::array<Entity, 5> kEntities{
    {{u"&amp;", u'&'}, {u"&apos;", u'\''}, {u"&quot;", u'"'}, {u"&lt;", u'<'}, {u"&gt;", u'>'}}};

/// What ends the text of a malformed numeric entity.
constexpr std::u16string_view kBoundary = u" \t\n\r;";

bool decodeNamedEntity(NSScanner& scanner, std::u16string& out) {
    for (const Entity& entity : kEntities) {
        if (!scanner.scanString(entity.text)) continue;
        out.push_back(entity.replacement);
        return true;
    }
    return false;
}

/// The scanner stands behind "&#".
void decodeNumericEntity(NSScanner& scanner, std::u16string& out) {
    const bool hexadecimal = scanner.scanString(u"x");
    std::optional<std::uint32_t> number;
    if (hexadecimal)
        number = scanner.scanHexInt();
    else if (const auto value = scanner.scanInt())
        number = static_cast<std::uint32_t>(*value);
    if (number) {
        out.push_back(static_cast<char16_t>(*number & 0xFFFF));
        scanner.scanString(u";");
        return;
    }
    // The marker is remembered as "x" whichever way it was written.
    const std::u16string_view marker = hexadecimal ? u"x" : u"";
    const NSString wrong = scanner.scanUpToCharactersFromSet(kBoundary).value_or(NSString());
    out.append(u"&#").append(marker).append(wrong.units());
    systemLog("Expected numeric character entity but got &#" + NSString(marker).description() +
              wrong.description() + ";");
}

std::uint32_t endOf(NSRange range) {
    return static_cast<std::uint32_t>(range.location + range.length);
}

}  // namespace

NSString stringByDecodingHTMLEntities(const NSString& text) {
    if (text.rangeOfString(u"&"_ns, kNSLiteralSearch).length == 0) return text;
    std::u16string out;
    out.reserve(text.length());
    NSScanner scanner(text);
    scanner.setCharactersToBeSkipped(u"");
    do {
        if (const auto plain = scanner.scanUpToString(u"&")) out.append(plain->units());
        if (scanner.isAtEnd()) break;
        if (decodeNamedEntity(scanner, out)) continue;
        if (scanner.scanString(u"&#")) {
            decodeNumericEntity(scanner, out);
        } else {
            scanner.scanString(u"&");
            out.push_back(u'&');
        }
    } while (!scanner.isAtEnd());
    return NSString(out);
}

std::optional<NSString> flattenHTML(const NSString& text) {
    if (text == NSString()) return text;
    // The split at 3 is deliberate: short texts go through the 8-bit encoding.
    const NSStringEncoding encoding =
        text.length() > 3 ? NSStringEncoding::Unicode : NSStringEncoding::MacOSRoman;
    const auto bytes = dataUsingEncoding(text, encoding);
    if (!bytes) return text;
    // The importer is not told the encoding: it detects it from the bytes.
    const std::optional<HTMLDocument> document = importHTML(*bytes);
    if (!document) return std::nullopt;
    return document->text;
}

std::optional<NSString> extractBetweenPattern(const NSString& text, const NSString& start,
                                              const NSString& end) {
    const NSRange first = text.rangeOfString(start, kNSCaseInsensitiveSearch);
    if (first.length == 0) return std::nullopt;
    const std::uint64_t from = endOf(first);
    const NSRange last =
        text.rangeOfString(end, kNSCaseInsensitiveSearch, {from, text.length() - from});
    if (last.length == 0) return std::nullopt;
    return text.substringWithRange({from, last.location - from});
}

std::optional<NSString> reverseExtractBetweenPattern(const NSString& text, const NSString& start,
                                                     const NSString& end) {
    const NSRange last = text.rangeOfString(end, kNSCaseInsensitiveSearch);
    if (last.length == 0) return std::nullopt;
    const NSRange first = text.rangeOfString(start, kNSCaseInsensitiveSearch | kNSBackwardsSearch,
                                             {0, last.location});
    if (first.length == 0) return std::nullopt;
    const std::uint64_t from = endOf(first);
    return text.substringWithRange({from, last.location - from});
}

NSString cleanForFilename(const NSString& text) {
    std::u16string clean(text.units());
    for (char16_t& unit : clean)
        if (unit == u'/' || unit == u':') unit = u'-';
    return NSString(clean);
}

std::optional<NSString> runScript(const NSString& text, ScriptRunner& runner) {
    const std::unique_ptr<Script> script = runner.scriptWithSource(text);
    if (!script) return std::nullopt;
    const std::optional<ScriptDescriptor> result = script->execute();
    if (!result) return std::nullopt;
    if (result->descriptorType() != kDescriptorList) return result->stringValue();
    if (result->numberOfItems() < 1) return std::nullopt;
    const std::optional<ScriptDescriptor> item = result->descriptorAtIndex(0);
    return item ? item->stringValue() : std::nullopt;
}

std::optional<NSString> runScript(const NSString& text) {
    JavaScriptRunner runner;
    return runScript(text, runner);
}

bool getFSRef(const NSString& text, FSRef* reference) {
    const std::optional<std::string> path = text.UTF8String();
    return path && FSPathMakeRef(path->c_str(), reference, nullptr) == kNoErr;
}

std::optional<NSString> stringWithFSRef(const FSRef* reference) {
    if (reference == nullptr) return std::nullopt;
    std::array<char, 4098> buffer;
    if (FSRefMakePath(*reference, buffer.data(), buffer.size()) != kNoErr) return std::nullopt;
    return NSString::stringWithUTF8(buffer.data());
}

}  // namespace skarnel::NSStringExtensions
