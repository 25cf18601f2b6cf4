// Lets a mutable path string stand for one item of an image browser.
#pragma once

#include <string_view>

#include "util/string/nsmutablestring.h"

namespace skarnel {

/// Tells a browser to take an item's representation for the path of a file to load.
inline constexpr std::string_view IKImageBrowserPathRepresentationType =
    "IKImageBrowserPathRepresentationType";

namespace NSMutableString_IKImageBrowserView {

std::string_view imageRepresentationType(const NSMutableString& item);

/// The item itself: the very same object.
NSMutableString imageRepresentation(const NSMutableString& item);

/// The item itself, so that two items with equal paths are the same item.
NSMutableString imageUID(const NSMutableString& item);

/// The last component of the path.
NSString imageTitle(const NSMutableString& item);

/// Replaces the item's whole contents.
void setPath(NSMutableString& item, const NSString& path);

}  // namespace NSMutableString_IKImageBrowserView
}  // namespace skarnel
