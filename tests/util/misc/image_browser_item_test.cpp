#include "util/misc/image_browser_item.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

using namespace NSMutableString_IKImageBrowserView;

TEST(ImageBrowserItem, IsItsOwnRepresentationAndIdentity) {
    const NSMutableString item(u"/Users/x/Pictures/a.png"_ns);
    EXPECT_EQ(imageRepresentationType(item), IKImageBrowserPathRepresentationType);
    EXPECT_TRUE(imageRepresentation(item).isSame(item));
    EXPECT_TRUE(imageUID(item).isSame(item));
}

TEST(ImageBrowserItem, EqualPathsAreTheSameItem) {
    EXPECT_EQ(imageUID(NSMutableString(u"/a"_ns)), imageUID(NSMutableString(u"/a"_ns)));
}

TEST(ImageBrowserItem, ItsTitleIsTheFileName) {
    EXPECT_EQ(imageTitle(NSMutableString(u"/Users/x/Pictures/a.png"_ns)), u"a.png"_ns);
    EXPECT_EQ(imageTitle(NSMutableString(u"a.png"_ns)), u"a.png"_ns);
}

TEST(ImageBrowserItem, SettingThePathReplacesTheWholeText) {
    NSMutableString item(u"/a/long/path.png"_ns);
    setPath(item, u"/b"_ns);
    EXPECT_EQ(item.string(), u"/b"_ns);
    EXPECT_EQ(imageTitle(item), u"b"_ns);
}

}  // namespace
}  // namespace skarnel
