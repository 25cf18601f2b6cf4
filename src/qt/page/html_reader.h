// Rich text that somebody else wrote, as styled text.
#pragma once

#include <string_view>

#include "platform/styled_text.h"

namespace skarnel {

/// Reads the text of an HTML document or fragment with the styles that styled text knows; what the
/// markup leaves open is as in `base`. Sizes in points and in pixels count alike: one point is one
/// pixel. Pictures, scripts, links' targets and everything else that is no text are left out, and
/// nothing that the document names is fetched. Markup that may cost the toolkit more than
/// kMaxStyledHtmlDepth nested elements do has no text (see isNestedTooDeeply).
StyledText styledTextOfHtml(std::u16string_view html, const TextStyle& base);

}  // namespace skarnel
