#include "textimaging/text_system.h"

#include "textimaging/html_writer.h"
#include "textimaging/serialized_text.h"
#include "textimaging/string_encodings.h"

namespace skarnel {

std::optional<Bytes> TextSystem::dataFromRange(const StyledText& text, TextRange range,
                                               const DocumentAttributes& attributes) {
    const StyledText part = text.subtext(range);
    if (attributes.NSDocumentTypeDocumentAttribute == DocumentType::NSHTMLTextDocumentType)
        return htmlData(
            part, attributes.NSCharacterEncodingDocumentAttribute,
            layout_.paragraphHeights ? layout_.paragraphHeights(part) : std::vector<double>{});
    // The serialised form is binary and has an encoding of its own.
    return serializeText(part);
}

Result<StyledText> TextSystem::initWithData(ByteView data) {
    return deserializeText(data);
}

std::optional<std::u16string> TextSystem::stringWithData(ByteView data, std::int32_t encoding) {
    return decodeString(data, encoding);
}

}  // namespace skarnel
