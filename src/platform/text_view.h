// The editable styled text of the main window.
#pragma once

#include <string_view>

#include "imaging/nscolor.h"
#include "platform/object.h"
#include "platform/styled_text.h"

namespace skarnel {

using NSAttributedString = StyledText;
using NSRange = TextRange;

/// A typeface by family name at a size in points.
struct NSFont {
    std::string name;
    double size = 0;
    friend bool operator==(const NSFont&, const NSFont&) = default;
};

/// Before every edit by the user the view asks its delegate
/// (textViewShouldChangeTextInRanges); changes made through this interface are not asked for.
class NSTextView : public NSResponder {
  public:
    /// Whether NSViewBoundsDidChangeNotification is posted with the view as its object. Frame
    /// changes are always posted.
    virtual void setPostsBoundsChangedNotifications(bool posts) = 0;

    /// The font of the whole text and of what is typed next.
    virtual void setFont(const NSFont& font) = 0;

    /// Replaces the selection as typing does, with the style of what is typed next.
    virtual void insertText(std::u16string_view text) = 0;

    /// Colours the characters of a range that lies within the text.
    virtual void setTextColor(const NSColor& color, NSRange range) = 0;

    /// Replaces the whole content.
    virtual void setString(std::u16string_view text) = 0;

    /// The characters with their styles, as they are now; valid until the next change.
    virtual const NSAttributedString& textStorage() const = 0;
};

}  // namespace skarnel
