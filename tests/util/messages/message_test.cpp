// Phrases with places.
#include "util/log/message.h"

namespace skarnel {
namespace {

TEST(Message, EachPlaceIsFilledWithItsOwn) {
    EXPECT_EQ(filled("%2 before %1", {"a", "b"}), "b before a");
    EXPECT_EQ(filled("%1 by %1", {"7"}), "7 by 7");
    EXPECT_EQ(filled("none", {}), "none");
}

TEST(Message, WhatStandsInAPlaceIsNotLookedAtAgain) {
    EXPECT_EQ(filled("%1 and %2", {"%2", "x"}), "%2 and x");
}

TEST(Message, WhatIsNoPlaceStays) {
    EXPECT_EQ(filled("100 %, %0, %x, %2, %", {"a"}), "100 %, %0, %x, %2, %");
}

}  // namespace
}  // namespace skarnel
