// String helpers: HTML entities and text, text between markers, file names, scripts, file-system
// references. All leave their text unchanged; "the text itself" means the very same object.
#pragma once

#include <optional>

#include "util/string/fs_ref.h"
#include "util/string/nsstring.h"
#include "util/string/script_runner.h"

namespace skarnel::NSStringExtensions {

/// Decodes &amp; &apos; &quot; &lt; &gt; and numeric entities, in any letter case; the ";" of a
/// numeric one is optional, and its number is cut to one UTF-16 unit (so those above U+FFFF come
/// out truncated; numbers beyond 32 bits count as the end of that range). Anything else is copied.
/// A malformed numeric entity is copied and logged as
/// "Expected numeric character entity but got &#...;". The text itself when it holds no "&".
NSString stringByDecodingHTMLEntities(const NSString& text);

/// The text read as HTML (see importHTML). Up to 3 units are handed over in Mac OS Roman, longer
/// texts as Unicode. The text itself when it is empty or has no form in that encoding; none when
/// the HTML cannot be read.
std::optional<NSString> flattenHTML(const NSString& text);

/// What stands between the first start marker and the next end marker behind it, without regard
/// to case; none when either is missing or empty.
std::optional<NSString> extractBetweenPattern(const NSString& text, const NSString& start,
                                              const NSString& end);

/// What stands between the last start marker before the first end marker, and that end marker,
/// without regard to case; none when either is missing or empty.
std::optional<NSString> reverseExtractBetweenPattern(const NSString& text, const NSString& start,
                                                     const NSString& end);

/// A new text with "-" for every "/" and every ":". Nothing else is replaced.
NSString cleanForFilename(const NSString& text);

/// Runs the text as a script; the result's text. None when it cannot be made or run, gives nothing
/// or something without text. A list gives none, too: its items count from 1, and item 0 is asked
/// for, on purpose.
std::optional<NSString> runScript(const NSString& text, ScriptRunner& runner);
/// By a JavaScriptRunner with its usual limits.
std::optional<NSString> runScript(const NSString& text);

/// Whether the text, as a UTF-8 path, names an existing item; fills the reference if so.
bool getFSRef(const NSString& text, FSRef* reference);

/// The item's path; none for a null reference, a path of more than 4097 bytes, one that is not
/// UTF-8, or an item that is gone.
std::optional<NSString> stringWithFSRef(const FSRef* reference);

}  // namespace skarnel::NSStringExtensions
