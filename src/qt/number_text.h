// Numbers as the fields read and write them.
#pragma once

#include <optional>

class QLocale;
class QString;

namespace skarnel {

/// The shortest decimal text (full stop, no exponent, no group separators) that reads back as the
/// very same float, so that field, slider and store cannot drift apart.
QString numberText(float value);

/// Reads a decimal number: first with a full stop, then with the locale's own decimal sign. Group
/// separators, infinities, NaN and anything that is no number give none. Surrounding white space
/// is ignored.
std::optional<float> numberFromText(const QString& text, const QLocale& locale);

}  // namespace skarnel
