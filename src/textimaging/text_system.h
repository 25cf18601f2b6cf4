// The text system on our own formats; only the layout is somebody else's.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "platform/attributed_text.h"

namespace skarnel {

/// How the text view lays a text out without a width limit; pixels.
struct TextLayout {
    std::function<CGSize(const StyledText&)> naturalSize;
    /// One for each paragraph. May be empty: a page then has its renderer's own.
    std::function<std::vector<double>(const StyledText&)> paragraphHeights;
};

/// Serialises, writes HTML and decodes with the code of this folder; sizes come from the layout
/// that it is given.
class TextSystem final : public AttributedTextServices {
  public:
    explicit TextSystem(TextLayout layout) : layout_(std::move(layout)) {}

    std::optional<Bytes> dataFromRange(const StyledText& text, TextRange range,
                                       const DocumentAttributes& attributes) override;
    Result<StyledText> initWithData(ByteView data) override;
    CGSize size(const StyledText& text) override { return layout_.naturalSize(text); }
    std::optional<std::u16string> stringWithData(ByteView data, std::int32_t encoding) override;

  private:
    TextLayout layout_;
};

}  // namespace skarnel
