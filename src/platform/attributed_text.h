// The text system's services on styled text: serialised forms, reading them back, natural size.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "imaging/io/image_io.h"
#include "platform/styled_text.h"
#include "util/geometry/geometry.h"
#include "util/log/result.h"

namespace skarnel {

enum class DocumentType {
    NSRTFDTextDocumentType,  // the lossless serialised form
    NSHTMLTextDocumentType,  // a complete HTML document
};

/// The platform's numeric string-encoding codes that are told apart; others are not held.
inline constexpr std::int32_t kEncodingASCII = 1;
inline constexpr std::int32_t kEncodingUTF8 = 4;
inline constexpr std::int32_t kEncodingISOLatin1 = 5;
inline constexpr std::int32_t kEncodingISOLatin2 = 9;
inline constexpr std::int32_t kEncodingUnicode = 10;  // UTF-16 with a byte order mark
inline constexpr std::int32_t kEncodingWindowsCP1251 = 11;
inline constexpr std::int32_t kEncodingWindowsCP1252 = 12;
inline constexpr std::int32_t kEncodingMacRoman = 30;

struct DocumentAttributes {
    DocumentType NSDocumentTypeDocumentAttribute = DocumentType::NSRTFDTextDocumentType;
    std::int32_t NSCharacterEncodingDocumentAttribute = kEncodingUTF8;
    friend bool operator==(const DocumentAttributes&, const DocumentAttributes&) = default;
};

class AttributedTextServices {
  public:
    virtual ~AttributedTextServices() = default;

    /// The range's characters in the asked form; none when that form cannot hold them.
    virtual std::optional<Bytes> dataFromRange(const StyledText& text, TextRange range,
                                               const DocumentAttributes& attributes) = 0;

    /// Reads a serialised form back, which one it is found out from the data itself.
    virtual Result<StyledText> initWithData(ByteView data) = 0;

    /// Width and height of the text drawn without a width limit, so that lines end only at the
    /// text's own line breaks; points.
    virtual CGSize size(const StyledText& text) = 0;

    /// Decodes bytes in an encoding; none when they break its rules or the code is not known.
    virtual std::optional<std::u16string> stringWithData(ByteView data, std::int32_t encoding) = 0;
};

}  // namespace skarnel
