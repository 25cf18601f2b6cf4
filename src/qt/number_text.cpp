#include "qt/number_text.h"

#include <QLocale>
#include <QString>
#include <charconv>
#include <cmath>

namespace skarnel {
namespace {

std::optional<float> finite(double value, bool valid) {
    const auto single = static_cast<float>(value);
    if (!valid || !std::isfinite(single)) return std::nullopt;
    return single;
}

std::optional<float> read(const QString& text, QLocale locale) {
    locale.setNumberOptions(QLocale::RejectGroupSeparator);
    bool valid = false;
    const double value = locale.toDouble(text, &valid);
    return finite(value, valid);
}

}  // namespace

QString numberText(float value) {
    if (value == 0.0F) return QStringLiteral("0");  // no "-0"
    char buffer[64];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    if (end.ec != std::errc{}) return QString::number(static_cast<double>(value));
    return QString::fromLatin1(buffer, end.ptr - buffer);
}

std::optional<float> numberFromText(const QString& text, const QLocale& locale) {
    const QString trimmed = text.trimmed();
    if (const auto value = read(trimmed, QLocale::c())) return value;
    return read(trimmed, locale);
}

}  // namespace skarnel
