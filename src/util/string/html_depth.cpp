#include "util/string/html_depth.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>
#include <string>
#include <vector>

namespace skarnel {
namespace {

constexpr std::size_t kMaxReopened = 5'000'000;
constexpr std::size_t kMaxStyled = 5'000'000;

template <std::size_t N>
bool isOneOf(std::string_view name, const std::array<std::string_view, N>& names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array<std::string_view, 3> kEmptyForAll{"br", "hr", "meta"};
constexpr std::array<std::string_view, 11> kEmptyInTheStandard{
    "area", "base", "col", "embed", "img", "input", "link", "param", "source", "track", "wbr"};

/// Elements that the parser opens anew in every block until their end tag comes.
constexpr std::array<std::string_view, 14> kFormatting{"a",    "b", "big",    "code",  "em",
                                                       "font", "i", "nobr",   "s",     "small",
                                                       "tt",   "u", "strike", "strong"};

/// Elements whose content only some parsers take for tags.
constexpr std::array<std::string_view, 9> kRaw{"style",  "script",  "title",    "textarea", "xmp",
                                               "iframe", "noembed", "noframes", "noscript"};

/// Elements that end by themselves where another of their name begins.
constexpr std::array<std::string_view, 7> kSiblings{"p", "li", "dd", "dt", "td", "th", "tr"};

/// Those that end by themselves where the next row or cell begins.
bool endsBefore(std::string_view open, std::string_view name) {
    const bool isCell = open == "td" || open == "th";
    if (name == "td" || name == "th") return isCell;
    if (name == "tr") return isCell || open == "tr";
    const bool isInList = open == "dd" || open == "dt";
    return isInList && (name == "dd" || name == "dt");
}

struct Token {
    enum class Kind : std::uint8_t { None, Aside, Start, End } kind = Kind::None;
    std::string name;  // lower case
    bool endsItself = false;
    std::size_t length = 0;
};

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

bool isOfName(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == ':' || c == '-' || c == '_' || c == '.';
}

bool isOfKey(char c) {
    constexpr std::string_view kOthers = "#%,+;()[]!*?@$~|";
    return isOfName(c) || kOthers.find(c) != kOthers.npos;
}

bool isOfValue(char c) {
    return isOfKey(c) || c == '/';
}

/// Reads what begins with "<" at the start of a text, in the form that all parsers read alike.
class TokenReader {
  public:
    explicit TokenReader(std::string_view text) : text_(text) {}

    Token read() {
        Token token;
        if (text_.starts_with("<!--")) {
            token.length = commentLength();
        } else if (text_.starts_with("<!")) {
            token.length = declarationLength();
        } else {
            return readTag();
        }
        if (token.length != 0) token.kind = Token::Kind::Aside;
        return token;
    }

  private:
    char here() const { return at_ < text_.size() ? text_[at_] : '\0'; }
    bool take(char c) {
        if (here() != c) return false;
        ++at_;
        return true;
    }
    template <typename Is>
    bool takeAll(Is is) {
        const std::size_t from = at_;
        while (at_ < text_.size() && is(text_[at_])) ++at_;
        return at_ != from;
    }

    /// 0 where another parser might see the end elsewhere.
    std::size_t commentLength() const {
        constexpr std::size_t kStart = 4;
        const std::size_t end = text_.find("-->", kStart);
        if (end == text_.npos) return 0;
        const std::string_view content = text_.substr(kStart, end - kStart);
        const bool endsEarlier = content.starts_with('>') || content.starts_with("->") ||
                                 content.find("--!>") != content.npos;
        return endsEarlier ? 0 : end + 3;
    }
    std::size_t declarationLength() const {
        const std::size_t end = text_.find('>');
        const bool isData = text_.starts_with("<![CDATA");
        return end == text_.npos || isData ? 0 : end + 1;
    }

    Token readTag() {
        Token token;
        ++at_;
        const bool ends = take('/');
        const std::size_t from = at_;
        // A processing instruction is a start tag to some.
        if (!(isLetter(here()) || (!ends && here() == '?'))) return token;
        ++at_;
        takeAll(isOfName);
        const std::string_view name = text_.substr(from, at_ - from);
        if (ends) {
            takeAll(isBlank);
        } else if (!takeAttributes()) {
            return token;
        } else {
            token.endsItself = take('/') || take('?');
        }
        if (!take('>')) return token;
        token.kind = ends ? Token::Kind::End : Token::Kind::Start;
        std::transform(name.begin(), name.end(), std::back_inserter(token.name), [](char c) {
            return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        });
        token.length = at_;
        return token;
    }

    bool takeAttributes() {
        while (takeAll(isBlank) && takeAll(isOfKey)) {
            const std::size_t behindKey = at_;
            takeAll(isBlank);
            if (!take('=')) {
                at_ = behindKey;
                continue;
            }
            takeAll(isBlank);
            if (!takeValue()) return false;
        }
        return true;
    }

    bool takeValue() {
        const char quote = here();
        if (quote == '"' || quote == '\'') {
            const std::size_t end = text_.find(quote, at_ + 1);
            at_ = end == text_.npos ? text_.size() : end + 1;
            return end != text_.npos;
        }
        if (!takeAll(isOfValue)) return false;
        // Of a last "/" parsers disagree whether it ends the element.
        if (text_[at_ - 1] == '/' && here() == '>') --at_;
        return true;
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

/// Holds the names of at least those elements that any parser has open, in their order: one that
/// closes more, or moves an element out of others, only has fewer (those of the parts of tables
/// that parsers add by themselves are not counted). So it must not close what a parser may keep
/// open, which is sure where that is the element begun last.
class OpenElements {
  public:
    explicit OpenElements(std::size_t maxDepth) : maxSteps_(maxDepth * (maxDepth + 1) / 2) {}

    void start(std::string_view name) {
        names_.emplace_back(name);
        step();
        if (isOneOf(name, kFormatting)) ++formatting_;
        // In drawings and formulas rows and cells are elements like others.
        isForeign_ = isForeign_ || name == "svg" || name == "math";
    }
    void startEmpty() { step(); }
    /// Costs a thousandth of all that may be.
    void startDear(std::string_view name) {
        start(name);
        steps_ += maxSteps_ / 1000;
    }
    /// Ends its like; others as well where that surely is a tag.
    void startSibling(std::string_view name, bool isSure) {
        while (isSure && !isForeign_ && !names_.empty() && endsBefore(names_.back(), name))
            names_.pop_back();
        if (!isForeign_ && isLast(name)) names_.pop_back();
        start(name);
    }
    void end(std::string_view name) {
        step();
        if (!isLast(name)) return;
        names_.pop_back();
        if (isOneOf(name, kFormatting)) --formatting_;
    }
    /// What may be an end tag to some.
    void passEnd() { step(); }
    void addRules(std::size_t count) { rules_ += count; }

    bool areTooMany() const {
        return steps_ > maxSteps_ || reopened_ > kMaxReopened || styled_ > kMaxStyled;
    }

  private:
    bool isLast(std::string_view name) const { return !names_.empty() && names_.back() == name; }
    void step() {
        // Some rules are about the elements around one.
        constexpr std::size_t kUsualDepth = 16;
        steps_ += names_.size();
        reopened_ += formatting_;
        styled_ += rules_ * (1 + names_.size() / kUsualDepth);
    }

    std::vector<std::string> names_;
    std::size_t maxSteps_;
    std::size_t steps_ = 0;
    std::size_t formatting_ = 0;
    std::size_t reopened_ = 0;
    std::size_t rules_ = 0;
    std::size_t styled_ = 0;
    bool isForeign_ = false;
};

/// The rules of style sheets. To the toolkit each end tag behind one's text ends it, and it takes
/// all of that text again at the next.
class StyleSheets {
  public:
    void start(bool isSure) {
        isOpen_ = true;
        if (isSure) rules_ = 0;
    }
    void addText(std::string_view text) {
        if (!isOpen_) return;
        rules_ += static_cast<std::size_t>(
            std::count_if(text.begin(), text.end(), [](char c) { return c == '{' || c == ','; }));
    }
    std::size_t rulesAtEnd() const { return isOpen_ ? rules_ + 1 : 0; }
    void end() { isOpen_ = false; }

  private:
    bool isOpen_ = false;
    std::size_t rules_ = 0;
};

class DepthReader {
  public:
    DepthReader(std::size_t maxDepth, EmptyElements empty) : open_(maxDepth), empty_(empty) {}

    bool isTooDeep(std::string_view html) {
        for (std::size_t at = 0; at < html.size() && !open_.areTooMany();) {
            const std::size_t next = std::min(html.find('<', at), html.size());
            sheets_.addText(html.substr(at, next - at));
            at = next;
            if (at < html.size()) at += take(html.substr(at));
        }
        return open_.areTooMany();
    }

  private:
    /// Gives how far to go on; by one character where it is not sure what is a tag.
    std::size_t take(std::string_view text) {
        constexpr std::size_t kMostUnsureBytes = 1024;
        const Token token = TokenReader(isSure_ ? text : text.substr(0, kMostUnsureBytes)).read();
        isSure_ = isSure_ && isAgreedOn(token, text);
        switch (token.kind) {
            case Token::Kind::None:
                takeUnknown(text);
                break;
            case Token::Kind::Start:
                start(token);
                break;
            case Token::Kind::End:
                end(token.name);
                break;
            case Token::Kind::Aside:
                break;
        }
        return isSure_ ? token.length : 1;
    }

    bool isAgreedOn(const Token& token, std::string_view text) const {
        if (token.kind == Token::Kind::None || token.name == "plaintext") return false;
        return raw_.empty() || text.substr(1, token.length - 1).find('<') == text.npos;
    }

    /// A tag of some form that only some parsers take for one.
    void takeUnknown(std::string_view text) {
        std::size_t at = 1;
        while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at])) != 0) ++at;
        const char first = at < text.size() ? text[at] : '!';
        if (first == '/') return end("/");
        if (first == '!') return;
        // It might be a picture.
        if (empty_ == EmptyElements::OfTheToolkit) return open_.startDear("?");
        open_.start("?");
    }

    void start(const Token& token) {
        const std::string_view name = token.name;
        if (name == "img" && empty_ == EmptyElements::OfTheToolkit) return open_.startDear(name);
        if (isEmpty(token)) return open_.startEmpty();
        if (name == "style") sheets_.start(isSure_);
        if (raw_.empty() && isOneOf(name, kRaw)) raw_ = name;
        if (isOneOf(name, kSiblings)) return open_.startSibling(name, isSure_);
        open_.start(name);
    }

    void end(std::string_view name) {
        open_.addRules(sheets_.rulesAtEnd());
        if (!isSure_) return open_.passEnd();
        open_.end(name);
        if (name == raw_) raw_.clear();
        if (name == "style") sheets_.end();
    }

    bool isEmpty(const Token& token) const {
        if (isOneOf(token.name, kEmptyForAll)) return true;
        return isOneOf(token.name, kEmptyInTheStandard) &&
               (token.endsItself || empty_ == EmptyElements::OfTheStandard);
    }

    OpenElements open_;
    StyleSheets sheets_;
    EmptyElements empty_;
    std::string raw_;  // the element whose content only some parsers take for tags; empty in none
    bool isSure_ = true;
};

}  // namespace

bool isNestedTooDeeply(std::string_view html, std::size_t maxDepth, EmptyElements empty) {
    return DepthReader(maxDepth, empty).isTooDeep(html);
}

}  // namespace skarnel
