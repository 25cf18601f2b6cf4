// Reading catalogues, and finding in them what a filled phrase says.
#include "util/messages/catalogue.h"

#include "util/messages/mo_bytes.h"

namespace skarnel {
namespace {

using test::moBytes;
using test::Order;

Catalogue german() {
    auto catalogue = Catalogue::parse(moBytes({
        {"", "Language: de\n"},
        {"It is a folder", "Es ist ein Ordner"},
        {"The text is damaged: %1", "Der Text ist beschädigt: %1"},
        {"%1 is not %2", "%2 ist %1 nicht"},
        {"'%1' is not a number", "„%1“ ist keine Zahl"},
        {"'%1' is not a number from %2 to %3", "„%1“ ist keine Zahl von %2 bis %3"},
        {"At most %1 by %1 are", "Höchstens %1 mal %1 gehen"},
        {"%1 of 100 %", "%1 von 100 %"},
        {"%4 and %d are no places", "%4 und %d sind keine"},
        {"help\4It is a folder", "Hilfe"},
        {"not yet", ""},
    }));
    EXPECT_TRUE(catalogue);
    return *catalogue;
}

TEST(Catalogue, FindsAPhraseInItsContextOnly) {
    const Catalogue catalogue = german();
    ASSERT_NE(catalogue.find("It is a folder"), nullptr);
    EXPECT_EQ(*catalogue.find("It is a folder"), "Es ist ein Ordner");
    ASSERT_NE(catalogue.find("It is a folder", Catalogue::kHelp), nullptr);
    EXPECT_EQ(*catalogue.find("It is a folder", Catalogue::kHelp), "Hilfe");
    EXPECT_EQ(catalogue.find("The text is damaged: %1", Catalogue::kHelp), nullptr);
    EXPECT_EQ(catalogue.find("it is a folder"), nullptr);
    EXPECT_EQ(catalogue.find("not yet"), nullptr) << "an empty translation is none";
    EXPECT_EQ(catalogue.find(""), nullptr) << "the file's own description is no phrase";
}

TEST(Catalogue, TranslatesWhatSurroundsThePlaces) {
    const struct {
        const char* name;
        const char* english;
        const char* german;
    } rows[] = {
        {"no place", "It is a folder", "Es ist ein Ordner"},
        {"places that change their order", "Red is not blue", "blue ist Red nicht"},
        {"the longer of two that fit", "'x' is not a number from 1 to 9",
         "„x“ ist keine Zahl von 1 bis 9"},
        {"the same place twice", "At most 7 by 7 are", "Höchstens 7 mal 7 gehen"},
        {"a mark at the end", "7 of 100 %", "7 von 100 %"},
        {"marks of no place", "%4 and %d are no places", "%4 und %d sind keine"},
        {"an empty place", "'' is not a number", "„“ ist keine Zahl"},
        {"a place that holds a mark", "'%2' is not a number", "„%2“ ist keine Zahl"},
        {"a place that says what is a phrase", "'It is a folder' is not a number",
         "„It is a folder“ ist keine Zahl"},
        {"a cause in a cause", "The text is damaged: It is a folder",
         "Der Text ist beschädigt: Es ist ein Ordner"},
        {"an unknown cause in a cause", "The text is damaged: bad magic",
         "Der Text ist beschädigt: bad magic"},
        {"a name before it", "a.png: It is a folder", "a.png: Es ist ein Ordner"},
        {"two names before it", "a: b: It is a folder", "a: b: Es ist ein Ordner"},
        {"a name that is a phrase", "It is a folder: It is a folder",
         "It is a folder: Es ist ein Ordner"},
        {"a name, a cause, a cause", "a: The text is damaged: It is a folder",
         "a: Der Text ist beschädigt: Es ist ein Ordner"},
        {"nothing known", "a.png: bad magic", "a.png: bad magic"},
        {"only the beginning of a phrase", "It is a", "It is a"},
        {"nothing", "", ""},
    };
    const Catalogue catalogue = german();
    for (const auto& row : rows)
        EXPECT_EQ(catalogue.translated(row.english), row.german) << row.name;
    EXPECT_EQ(catalogue.cause("a.png: It is a folder"), std::nullopt);
}

TEST(Catalogue, ReadsBothByteOrders) {
    const auto catalogue = Catalogue::parse(moBytes({{"yes", "ja"}}, Order::BigEndian));
    ASSERT_TRUE(catalogue);
    EXPECT_EQ(catalogue->translated("yes"), "ja");
}

TEST(Catalogue, WhatIsNoneOrIsCutOffIsRefused) {
    EXPECT_FALSE(Catalogue::parse(""));
    EXPECT_FALSE(Catalogue::parse("It is a folder, and no catalogue at all."));
    const std::string whole = moBytes({{"yes", "ja"}, {"no", "nein"}});
    // The zero behind the last text is nobody's.
    EXPECT_TRUE(Catalogue::parse(whole.substr(0, whole.size() - 1)));
    for (std::size_t size = 0; size + 1 < whole.size(); ++size)
        EXPECT_FALSE(Catalogue::parse(whole.substr(0, size))) << size;
}

TEST(Catalogue, ATextThatLiesOutsideTheFileIsRefused) {
    for (const std::size_t field : {8U, 12U, 16U, 28U, 32U, 36U, 40U}) {
        std::string bytes = moBytes({{"yes", "ja"}});
        for (std::size_t i = 0; i < 4; ++i) bytes[field + i] = '\xFF';
        EXPECT_FALSE(Catalogue::parse(bytes)) << field;
    }
}

}  // namespace
}  // namespace skarnel
