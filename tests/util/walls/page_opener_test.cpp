#include "util/walls/page_opener.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "util/walls/in_child.h"
#include "util/walls/window_walls.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;

/// A program that notes the address it is given, in place of the desktop's opener.
class PageOpenerTest : public ::testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/skarnel-opener-XXXXXX";
        folder_ = ::mkdtemp(pattern);
        opener_ = folder_ / "opener";
        note_ = folder_ / "note";
        std::ofstream(opener_) << "#!/bin/sh\nprintf '%s' \"$1\" >" << note_ << ".new && mv "
                               << note_ << ".new " << note_ << "\n";
        ::chmod(opener_.c_str(), 0755);
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string notedAddress() const {
        for (int i = 0; i < 1000 && !fs::exists(note_); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        std::ifstream file(note_);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    fs::path folder_, opener_, note_;
};

TEST_F(PageOpenerTest, HandsTheAddressToTheOpener) {
    PageOpener opener({"https://skarnel.example/", "https://skarnel.example/a b"}, opener_);
    EXPECT_TRUE(opener.open("https://skarnel.example/a b"));
    EXPECT_EQ(notedAddress(), "https://skarnel.example/a b");
}

TEST_F(PageOpenerTest, NothingElseIsOpenedAndNothingUnasked) {
    {
        PageOpener opener({"https://skarnel.example/"}, opener_);
        EXPECT_FALSE(opener.open("https://elsewhere.example/"));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(fs::exists(note_));
}

TEST_F(PageOpenerTest, SaysThatThereIsNoOpener) {
    EXPECT_EQ(testing::exitStatusOfChild([&] {
                  ::setenv("PATH", (folder_ / "empty").c_str(), 1);
                  PageOpener opener({"https://skarnel.example/"});
                  for (int i = 0; i < 3; ++i)
                      if (opener.open("https://skarnel.example/")) return 1;
                  return 0;
              }),
              0);
}

TEST_F(PageOpenerTest, FindsTheDesktopsOpenerInThePath) {
    fs::rename(opener_, folder_ / "xdg-open");
    EXPECT_EQ(testing::exitStatusOfChild([&] {
                  ::setenv("PATH", (folder_.string() + ":/usr/bin:/bin").c_str(), 1);
                  PageOpener opener({"file:///usr/share/skarnel/help/index.html"});
                  return opener.open("file:///usr/share/skarnel/help/index.html") ? 0 : 1;
              }),
              0);
    EXPECT_EQ(notedAddress(), "file:///usr/share/skarnel/help/index.html");
}

TEST_F(PageOpenerTest, StillOpensOnceTheWallsAreRaised) {
    if (landlockVersion() == 0) GTEST_SKIP() << "this kernel has no Landlock";
    EXPECT_EQ(testing::exitStatusOfChild([&] {
                  PageOpener opener({"https://skarnel.example/"}, opener_);
                  if (!raiseWindowWalls({})) return 200;
                  return opener.open("https://skarnel.example/") ? 0 : 1;
              }),
              0);
    EXPECT_EQ(notedAddress(), "https://skarnel.example/");
}

}  // namespace
}  // namespace skarnel
