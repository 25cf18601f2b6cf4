// What is mapped when the window shows its first picture. A program of its own: what another test
// loads would stay.
#include <gmock/gmock.h>
#include <link.h>

#include <set>
#include <string>

#include "application_fixture.h"

namespace skarnel {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

std::set<std::string> mappedLibraries() {
    std::set<std::string> names;
    ::dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* all) {
            const std::string path = info->dlpi_name;
            static_cast<std::set<std::string>*>(all)->insert(path.substr(path.rfind('/') + 1));
            return 0;
        },
        &names);
    return names;
}

TEST_F(ApplicationTest, TheFirstPictureNeedsNoPageRendererNoSoundAndNoLateCodec) {
    start({picture(QStringLiteral("tiny.png"), 3, 2, Qt::red)});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !viewer().shownImage().isNull(); }, kPatience));
    settle();
    const auto libraries = mappedLibraries();
    ASSERT_THAT(libraries, Contains(HasSubstr("libQt6Widgets"))) << "the loader tells nothing";
    for (const char* unwanted :
         {"WebEngine", "libQt6Qml", "libQt6Quick", "libQt6Multimedia", "skarnel-page",
          "skarnel-cue", "sndfile", "pulse", "libasound", "libjxl", "libheif", "libaom", "libdav1d",
          "libx265", "libde265", "libavcodec"})
        EXPECT_THAT(libraries, Not(Contains(HasSubstr(unwanted))));
}

}  // namespace
}  // namespace skarnel
