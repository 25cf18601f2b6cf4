// The text system on our own formats; only the layout is somebody else's.
#pragma once

#include <functional>

#include "platform/attributed_text.h"

namespace skarnel {

/// Serialises, writes HTML and decodes with the code of this folder; the natural size comes from
/// the layout that it is given.
class TextSystem final : public AttributedTextServices {
  public:
    using NaturalSize = std::function<CGSize(const StyledText&)>;

    explicit TextSystem(NaturalSize naturalSize) : naturalSize_(std::move(naturalSize)) {}

    std::optional<Bytes> dataFromRange(const StyledText& text, TextRange range,
                                       const DocumentAttributes& attributes) override;
    Result<StyledText> initWithData(ByteView data) override;
    CGSize size(const StyledText& text) override { return naturalSize_(text); }
    std::optional<std::u16string> stringWithData(ByteView data, std::int32_t encoding) override;

  private:
    NaturalSize naturalSize_;
};

}  // namespace skarnel
