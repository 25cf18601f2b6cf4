// Styled text laid out by the window toolkit: its natural size and its drawing.
#pragma once

#include <vector>

#include "platform/styled_text.h"
#include "util/geometry/geometry.h"

class QImage;
class QTextDocument;

namespace skarnel {

/// "Times", "Helvetica" and "Courier" are the Liberation faces here as on a page, whatever other
/// fonts are installed. Once, after the application object is made.
void useLiberationFonts();

/// Fills an empty document with the text and takes its margin away; one point is one pixel (the
/// toolkit draws letters at the nearest whole number of them).
void layOutText(QTextDocument& document, const StyledText& text);

/// Width and height of the text when lines end only where the text ends them. An empty text has
/// the height of a line in the style's default.
CGSize naturalTextSize(const StyledText& text);

/// How high each of the text's paragraphs is then, in order; pixels.
std::vector<double> paragraphHeights(const StyledText& text);

/// The text on a ground of one colour, with a margin on all sides; grey anti-aliased. For
/// comparisons.
QImage drawText(const StyledText& text, TextColor ground, int margin);

}  // namespace skarnel
