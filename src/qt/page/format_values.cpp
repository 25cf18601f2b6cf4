#include "qt/page/format_values.h"

#include <QColor>
#include <QTextFormat>

namespace skarnel {

TextColor textColor(const QColor& color) {
    return {static_cast<std::uint8_t>(color.red()), static_cast<std::uint8_t>(color.green()),
            static_cast<std::uint8_t>(color.blue()), static_cast<std::uint8_t>(color.alpha())};
}

TextAlignment textAlignment(const QTextBlockFormat& format) {
    if (!format.hasProperty(QTextFormat::BlockAlignment)) return TextAlignment::Natural;
    // Left and right may be marked as meant whatever the direction of writing.
    switch (format.alignment() & Qt::AlignHorizontal_Mask & ~Qt::AlignAbsolute) {
        case Qt::AlignLeft:
            return TextAlignment::Left;
        case Qt::AlignRight:
            return TextAlignment::Right;
        case Qt::AlignHCenter:
            return TextAlignment::Center;
        case Qt::AlignJustify:
            return TextAlignment::Justified;
        default:
            return TextAlignment::Natural;
    }
}

}  // namespace skarnel
