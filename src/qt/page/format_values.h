// What the toolkit's text formats say, in the terms of styled text.
#pragma once

#include "platform/styled_text.h"

class QColor;
class QTextBlockFormat;

namespace skarnel {

TextColor textColor(const QColor& color);

/// Natural where the format names none.
TextAlignment textAlignment(const QTextBlockFormat& format);

}  // namespace skarnel
