#include "util/string/html_depth.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <string>

namespace skarnel {
namespace {

constexpr std::size_t kMaxReopened = 5'000'000;

/// Elements that have no content, or that the parser ends by itself: they do not nest.
bool nests(std::string_view name) {
    static constexpr std::array<std::string_view, 22> kFlat{
        "area", "base", "br",     "col", "embed",  "hr", "img",   "input", "link", "meta", "param",
        "wbr",  "p",    "source", "li",  "option", "dt", "track", "dd",    "td",   "th",   "tr"};
    return std::find(kFlat.begin(), kFlat.end(), name) == kFlat.end();
}

/// Elements that the parser opens anew in every block until their end tag comes.
bool isFormatting(std::string_view name) {
    static constexpr std::array<std::string_view, 14> kFormatting{
        "a",    "b", "big",   "code",   "em",     "font", "i",
        "nobr", "s", "small", "strike", "strong", "tt",   "u"};
    return std::find(kFormatting.begin(), kFormatting.end(), name) != kFormatting.end();
}

struct Tag {
    std::string name;  // lower case; empty for a comment and the like
    bool ends = false;
};

bool isBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

/// The tag whose "<" is at `at`, which is moved behind the name. As the toolkit takes it, blanks
/// may stand before a name, and it may be of any characters; the standard takes some of those for
/// text.
Tag readTag(std::string_view html, std::size_t& at) {
    Tag tag;
    for (++at; at < html.size() && isBlank(html[at]);) ++at;
    tag.ends = at < html.size() && html[at] == '/';
    if (tag.ends) ++at;
    if (at < html.size() && html[at] == '!') return tag;
    constexpr std::string_view kBehindName = "<>/=";
    while (at < html.size() && !isBlank(html[at]) && kBehindName.find(html[at]) == kBehindName.npos)
        tag.name.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(html[at++]))));
    return tag;
}

}  // namespace

// Estimates what a parser would have to do, from the start tags that no end tag of the same name
// has answered yet: the tree is about that deep, and each further tag may open all those of them
// anew that only format.
bool isNestedTooDeeply(std::string_view html, std::size_t maxDepth) {
    std::map<std::string, std::size_t, std::less<>> open;
    std::size_t depth = 0;
    std::size_t formatting = 0;
    std::size_t reopened = 0;
    for (std::size_t at = html.find('<'); at != std::string_view::npos; at = html.find('<', at)) {
        const Tag tag = readTag(html, at);
        if (tag.name.empty()) continue;
        reopened += formatting;
        if (!nests(tag.name)) continue;
        std::size_t& count = open[tag.name];
        if (tag.ends && count == 0) continue;
        const std::size_t step = tag.ends ? std::size_t(-1) : 1;  // wraps: one less
        count += step;
        depth += step;
        if (isFormatting(tag.name)) formatting += step;
        if (depth > maxDepth || reopened > kMaxReopened) return true;
    }
    return reopened > kMaxReopened;
}

}  // namespace skarnel
