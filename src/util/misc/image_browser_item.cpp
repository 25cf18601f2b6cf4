#include "util/misc/image_browser_item.h"

namespace skarnel::NSMutableString_IKImageBrowserView {

std::string_view imageRepresentationType(const NSMutableString& /*item*/) {
    return IKImageBrowserPathRepresentationType;
}

NSMutableString imageRepresentation(const NSMutableString& item) {
    return item;
}

NSMutableString imageUID(const NSMutableString& item) {
    return item;
}

NSString imageTitle(const NSMutableString& item) {
    return item.string().lastPathComponent();
}

void setPath(NSMutableString& item, const NSString& path) {
    item.setString(path);
}

}  // namespace skarnel::NSMutableString_IKImageBrowserView
