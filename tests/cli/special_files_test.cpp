// What has no end or is no file, in the place of every file that the command line can be given:
// refused with a cause and exit code 1, soon, and without taking it into memory.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <thread>

#include "cli/pictures.h"
#include "cli/process.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::Finished;
using test::TemporaryFolder;
using testing::HasSubstr;

/// Below what is refused for its size alone.
constexpr off_t kLargeBytes = off_t{7} << 30;

struct Refusal {
    std::string name;
    std::string cause;
};

class SpecialFiles : public testing::Test {
  protected:
    SpecialFiles() {
        test::putPicture(good_, 30, 20);
        std::filesystem::create_directory(folder_ / "folder");
        std::filesystem::create_symlink("loop", folder_ / "loop");
        EXPECT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
        test::putFile(folder_ / "sparse", "");
        EXPECT_EQ(::truncate((folder_ / "sparse").c_str(), kLargeBytes), 0);
    }

    /// Runs with little memory and time and expects a failure that says `name` and `cause`.
    void expectFailure(const std::vector<std::string>& arguments, const std::string& name,
                       const std::string& cause, const std::function<void()>& prepare = {}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Finished finished = test::render(arguments, {}, [&] {
            const rlimit seconds = {10, 10};
            ::setrlimit(RLIMIT_CPU, &seconds);
#ifndef __SANITIZE_ADDRESS__
            const rlimit bytes = {1 << 30, 1 << 30};
            ::setrlimit(RLIMIT_AS, &bytes);
#endif
            if (prepare) prepare();
        });
        EXPECT_EQ(finished.exitCode, 1);
        EXPECT_THAT(finished.err, HasSubstr(name + ": " + cause));
        EXPECT_FALSE(std::filesystem::exists(out_));
    }

    const TemporaryFolder folder_;
    const std::string good_ = folder_ / "good.png";
    const std::string out_ = folder_ / "out.png";
};

TEST_F(SpecialFiles, AsAPicture) {
    for (const Refusal& file :
         std::vector<Refusal>{{folder_ / "folder", "Is a directory"},
                              {folder_ / "loop", "Too many levels of symbolic links"},
                              {folder_ / "pipe", "Not a regular file"},
                              {folder_ / "sparse", "Not a picture of a known format"},
                              {"/dev/zero", "Not a regular file"},
                              {"/dev/null", "Not a regular file"},
                              {"/proc/self/mem", "Input/output error"},
                              {"/proc/self/status", "Not a picture of a known format"}}) {
        expectFailure({file.name, "-o", out_}, file.name, file.cause);
    }
}

TEST_F(SpecialFiles, AsARecipe) {
    for (const Refusal& file :
         std::vector<Refusal>{{folder_ / "folder", "It is a folder"},
                              {folder_ / "loop", "Too many levels of symbolic links"},
                              {folder_ / "pipe", "Nothing comes through this pipe"},
                              {folder_ / "sparse", "The file carries no recipe"},
                              {"/dev/zero", "It is not an ordinary file"},
                              {"/dev/null", "It is not an ordinary file"},
                              {"/proc/self/status", "The file carries no recipe"}}) {
        expectFailure({good_, "--recipe", file.name, "-o", out_}, file.name, file.cause);
    }
}

TEST_F(SpecialFiles, AsALargeRecipe) {
    test::putFile(folder_ / "large", "{");
    ASSERT_EQ(::truncate((folder_ / "large").c_str(), kLargeBytes), 0);
    expectFailure({good_, "--recipe", folder_ / "large", "-o", out_}, folder_ / "large",
                  "The recipe is larger than 64 MB");
}

TEST_F(SpecialFiles, AsAFolderToWatch) {
    for (const Refusal& file :
         std::vector<Refusal>{{folder_ / "loop", "Too many levels of symbolic links"},
                              {folder_ / "pipe", "Not a directory"},
                              {folder_ / "sparse", "Not a directory"},
                              {"/dev/zero", "Not a directory"}}) {
        expectFailure({"--watch", file.name, "-o", folder_ / "folder"}, file.name, file.cause);
    }
}

TEST_F(SpecialFiles, AsStandardInput) {
    for (const Refusal& file :
         std::vector<Refusal>{{folder_ / "folder", "It is a folder"},
                              {folder_ / "sparse", "Not a picture of a known format"},
                              {"/dev/zero", "Not a picture of a known format"},
                              {"/dev/null", "Nothing came from standard input"}}) {
        expectFailure({"-", "-o", out_}, "standard input", file.cause, [&] {
            const int opened = ::open(file.name.c_str(), O_RDONLY);
            ::dup2(opened, 0);
            ::close(opened);
        });
    }
}

TEST_F(SpecialFiles, AsAResult) {
    std::filesystem::rename(folder_ / "pipe", folder_ / "pipe.png");
    for (const Refusal& file :
         std::vector<Refusal>{{folder_ / "loop", "The file already exists"},
                              {folder_ / "sparse", "The file already exists"},
                              {folder_ / "pipe.png", "Nothing reads from this pipe"},
                              {"/dev/full", "No space left on device"},
                              {"/proc/self/mem", "The file already exists"}}) {
        expectFailure({good_, "-o", file.name, "--format", "png"}, file.name, file.cause);
    }
    expectFailure({good_, "--sweep", "offset=0:4:2", "--animate", folder_ / "pipe.png"},
                  folder_ / "pipe.png", "Nothing reads from this pipe");
}

TEST_F(SpecialFiles, ARecipeComesThroughAPipe) {
    const std::string recipe =
        R"({"skarnel":"recipe","version":1,"settings":{"perspectiveWidth":5,)"
        R"("perspectiveHeight":40,"offset":10,"start":0,"gradient":9,"alpha":150,)"
        R"("imagePerspective":50,"applyBackgroundColor":true},"background":"#204060"})";
    std::thread writer([&] { test::putFile(folder_ / "pipe", recipe); });
    const Finished finished = test::render({good_, "--recipe", folder_ / "pipe", "-o", out_});
    writer.join();
    EXPECT_EQ(finished.exitCode, 0) << finished.err;
    EXPECT_TRUE(std::filesystem::exists(out_));
}

}  // namespace
}  // namespace skarnel
