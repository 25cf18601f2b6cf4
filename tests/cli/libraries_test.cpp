// What the program loads for a tiny picture.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <set>

#include "cli/pictures.h"
#include "cli/process.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::TemporaryFolder;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// The libraries that the loader mapped in any process of one run, at start and later; it tells so
/// in files whose names begin with `report`.
std::set<std::string> librariesOf(const std::vector<std::string>& arguments,
                                  const TemporaryFolder& reports) {
    const std::string report = reports / "loader";
    test::Process process(arguments, [report] {
        ::setenv("LD_DEBUG", "files", 1);
        ::setenv("LD_DEBUG_OUTPUT", report.c_str(), 1);
    });
    EXPECT_EQ(process.finish().exitCode, 0);
    std::set<std::string> libraries;
    for (const std::string& name : reports.names()) {
        std::ifstream file(reports / name);
        for (std::string line; std::getline(file, line);) {
            const std::size_t begin = line.find("file=");
            const std::size_t end = line.find(" [", begin);
            if (begin == std::string::npos || end == std::string::npos) continue;
            if (line.find("generating link map") == std::string::npos) continue;
            const std::string path = line.substr(begin + 5, end - begin - 5);
            libraries.insert(path.substr(path.rfind('/') + 1));
        }
    }
    return libraries;
}

TEST(Libraries, ATinyPictureLoadsNoToolkitNoSoundAndNoCodecOfOtherFormats) {
    const TemporaryFolder folder;
    const TemporaryFolder reports;
    test::putPicture(folder / "in.png", 3, 2);
    const auto libraries = librariesOf({folder / "in.png", "-o", folder / "out.png"}, reports);
    ASSERT_THAT(libraries, Contains(HasSubstr("libc.so"))) << "the loader reports nothing";
    for (const char* unwanted :
         {"libQt",         "libX11",     "libxcb",       "libwayland", "libGL",    "libEGL",
          "libfontconfig", "WebEngine",  "skarnel-page", "sndfile",    "pulse",    "libjxl",
          "libheif",       "libaom",     "libdav1d",     "libx265",    "libde265", "libtiff",
          "libwebp",       "libopenjp2", "libgif",       "libjpeg",    "libexif",  "liblcms2",
          "libzstd",       "liblzma",    "libLerc"})
        EXPECT_THAT(libraries, Not(Contains(HasSubstr(unwanted))));
#if defined(__x86_64__)
    // Its clock is measured whenever it is loaded, which takes milliseconds.
    EXPECT_THAT(libraries, Not(Contains(HasSubstr("libhwy"))));
#endif
}

}  // namespace
}  // namespace skarnel
