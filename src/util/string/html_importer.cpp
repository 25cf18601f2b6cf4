#include "util/string/html_importer.h"

#include <gumbo.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "util/string/html_depth.h"

namespace skarnel {
namespace {

constexpr std::size_t kMaxDepth = 10'000;

template <std::size_t N>
bool isOneOf(GumboTag tag, const std::array<GumboTag, N>& tags) {
    return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

constexpr std::array kBlocks{
    GUMBO_TAG_ADDRESS,  GUMBO_TAG_ARTICLE, GUMBO_TAG_ASIDE,      GUMBO_TAG_BLOCKQUOTE,
    GUMBO_TAG_CAPTION,  GUMBO_TAG_CENTER,  GUMBO_TAG_DD,         GUMBO_TAG_DETAILS,
    GUMBO_TAG_DIR,      GUMBO_TAG_DIV,     GUMBO_TAG_DL,         GUMBO_TAG_DT,
    GUMBO_TAG_FIELDSET, GUMBO_TAG_FIGURE,  GUMBO_TAG_FIGCAPTION, GUMBO_TAG_FOOTER,
    GUMBO_TAG_FORM,     GUMBO_TAG_H1,      GUMBO_TAG_H2,         GUMBO_TAG_H3,
    GUMBO_TAG_H4,       GUMBO_TAG_H5,      GUMBO_TAG_H6,         GUMBO_TAG_HEADER,
    GUMBO_TAG_HGROUP,   GUMBO_TAG_HR,      GUMBO_TAG_LEGEND,     GUMBO_TAG_LI,
    GUMBO_TAG_LISTING,  GUMBO_TAG_MAIN,    GUMBO_TAG_MENU,       GUMBO_TAG_NAV,
    GUMBO_TAG_OL,       GUMBO_TAG_OPTION,  GUMBO_TAG_P,          GUMBO_TAG_PRE,
    GUMBO_TAG_SECTION,  GUMBO_TAG_SUMMARY, GUMBO_TAG_TABLE,      GUMBO_TAG_TR,
    GUMBO_TAG_UL,       GUMBO_TAG_XMP,     GUMBO_TAG_PLAINTEXT};

constexpr std::array kTextless{GUMBO_TAG_HEAD,     GUMBO_TAG_SCRIPT, GUMBO_TAG_STYLE,
                               GUMBO_TAG_TEMPLATE, GUMBO_TAG_IFRAME, GUMBO_TAG_NOEMBED,
                               GUMBO_TAG_NOFRAMES, GUMBO_TAG_TITLE};

constexpr std::array kPreformatted{GUMBO_TAG_PRE, GUMBO_TAG_LISTING, GUMBO_TAG_XMP,
                                   GUMBO_TAG_PLAINTEXT, GUMBO_TAG_TEXTAREA};

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

/// Collects the text line by line, as UTF-8.
class TextCollector {
  public:
    void enter(const GumboNode& element) {
        const GumboTag tag = element.v.element.tag;
        if (tag == GUMBO_TAG_BR) endLine();
        if (isOneOf(tag, kBlocks)) startLine();
        if (tag == GUMBO_TAG_TD || tag == GUMBO_TAG_TH) separateCell();
        if (isOneOf(tag, kPreformatted)) ++preformatted_;
    }

    void leave(const GumboNode& element) {
        const GumboTag tag = element.v.element.tag;
        if (isOneOf(tag, kPreformatted)) --preformatted_;
        if (isOneOf(tag, kBlocks)) startLine();
    }

    void add(std::string_view text) {
        if (preformatted_ > 0) {
            flushSpace();
            text_.append(text);
            return;
        }
        for (const char c : text) {
            if (isSpace(c)) {
                spacePending_ = !isAtLineStart();
            } else {
                flushSpace();
                text_.push_back(c);
            }
        }
    }

    const std::string& text() const { return text_; }

  private:
    bool isAtLineStart() const { return text_.empty() || text_.back() == '\n'; }
    void flushSpace() {
        if (spacePending_) text_.push_back(' ');
        spacePending_ = false;
    }
    void endLine() {
        spacePending_ = false;
        text_.push_back('\n');
    }
    void startLine() {
        spacePending_ = false;
        if (!isAtLineStart()) text_.push_back('\n');
    }
    void separateCell() {
        spacePending_ = false;
        if (!isAtLineStart()) text_.push_back('\t');
    }

    std::string text_;
    int preformatted_ = 0;
    bool spacePending_ = false;
};

bool isElement(const GumboNode& node) {
    return node.type == GUMBO_NODE_ELEMENT;
}

bool isText(const GumboNode& node) {
    return node.type == GUMBO_NODE_TEXT || node.type == GUMBO_NODE_WHITESPACE ||
           node.type == GUMBO_NODE_CDATA;
}

/// Walks the tree without recursion: a document may be nested deeper than a stack allows.
std::string textOfTree(const GumboNode& root) {
    struct Step {
        const GumboNode* element;
        unsigned nextChild;
    };
    TextCollector collector;
    std::vector<Step> open{{&root, 0}};
    collector.enter(root);
    while (!open.empty()) {
        Step& step = open.back();
        const GumboVector& children = step.element->v.element.children;
        if (step.nextChild == children.length) {
            collector.leave(*step.element);
            open.pop_back();
            continue;
        }
        const auto* child = static_cast<const GumboNode*>(children.data[step.nextChild++]);
        if (isText(*child)) {
            collector.add(child->v.text.text);
        } else if (isElement(*child) && !isOneOf(child->v.element.tag, kTextless)) {
            collector.enter(*child);
            open.push_back({child, 0});
        }
    }
    return collector.text();
}

}  // namespace

std::optional<HTMLDocument> importHTML(std::span<const std::uint8_t> bytes) {
    const std::string html = stringWithDetectedEncoding(bytes).description();
    if (isNestedTooDeeply(html, kMaxDepth)) return std::nullopt;
    const auto destroy = [](GumboOutput* output) {
        gumbo_destroy_output(&kGumboDefaultOptions, output);
    };
    const std::unique_ptr<GumboOutput, decltype(destroy)> output(
        gumbo_parse_with_options(&kGumboDefaultOptions, html.data(), html.size()), destroy);
    if (!output || output->root == nullptr) return std::nullopt;
    const std::optional<DetectedEncoding> detected = encodingOfMark(bytes);
    return HTMLDocument{NSString::stringWithUTF8Lossy(textOfTree(*output->root)),
                        detected ? detected->encoding : NSStringEncoding::MacOSRoman};
}

}  // namespace skarnel
