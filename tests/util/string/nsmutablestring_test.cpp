#include "util/string/nsmutablestring.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

TEST(NSMutableString, CopiesOfAHandleSeeEachOthersChanges) {
    NSMutableString text(u"a"_ns);
    const NSMutableString same = text;
    const NSString before = same.string();
    text.setString(u"b"_ns);
    EXPECT_TRUE(same.isSame(text));
    EXPECT_EQ(same.string(), u"b"_ns);
    EXPECT_EQ(before, u"a"_ns) << "text that was read before does not change";
}

TEST(NSMutableString, EqualTextsAreEqualButNotTheSame) {
    EXPECT_EQ(NSMutableString(u"a"_ns), NSMutableString(u"a"_ns));
    EXPECT_FALSE(NSMutableString(u"a"_ns).isSame(NSMutableString(u"a"_ns)));
    EXPECT_EQ(NSMutableString().string(), NSString());
}

}  // namespace
}  // namespace skarnel
