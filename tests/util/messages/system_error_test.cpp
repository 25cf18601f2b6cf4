// The system's causes under a locale whose C library has a catalogue, which the test brings along.
#include "util/log/system_error.h"

#include <libintl.h>
#include <sys/stat.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "storage/temporary_folder.h"
#include "util/messages/mo_bytes.h"

namespace skarnel {
namespace {

constexpr const char* kDomain = "libc";
constexpr int kNumbers = 4096;  // the kernel's error numbers end below

/// What a toolkit does that sets the user's locale, with a catalogue for one error in it.
class SpokenSystem {
  public:
    SpokenSystem() : usual_(::bindtextdomain(kDomain, nullptr)) {
        for (const char* part : {"xx", "xx/LC_MESSAGES"}) ::mkdir((folder_ / part).c_str(), 0700);
        std::ofstream(folder_ / "xx/LC_MESSAGES/libc.mo", std::ios::binary)
            << test::moBytes({{"", "Content-Type: text/plain; charset=UTF-8\n"},
                              {"No such file or directory", "Nichts da"}});
        ::bindtextdomain(kDomain, folder_.path().c_str());
        ::setenv("LANGUAGE", "xx", 1);
        ::setenv("LC_ALL", "C.UTF-8", 1);
        std::setlocale(LC_ALL, "");
    }
    ~SpokenSystem() {
        ::unsetenv("LANGUAGE");
        ::unsetenv("LC_ALL");
        std::setlocale(LC_ALL, "C");
        ::bindtextdomain(kDomain, usual_.c_str());
    }
    SpokenSystem(const SpokenSystem&) = delete;
    SpokenSystem& operator=(const SpokenSystem&) = delete;

  private:
    const std::string usual_;
    const test::TemporaryFolder folder_;
};

TEST(SystemError, StaysEnglishWhenALocaleIsSet) {
    const SpokenSystem spoken;
    ASSERT_STREQ(std::strerror(ENOENT), "Nichts da");  // as all would be without describeError
    EXPECT_EQ(describeError(ENOENT), "No such file or directory");
}

TEST(SystemError, IsWhatTheSystemSaysInTheCLocale) {
    for (int number = -1; number <= kNumbers; ++number)
        EXPECT_EQ(describeError(number), std::strerror(number));
}

}  // namespace
}  // namespace skarnel
