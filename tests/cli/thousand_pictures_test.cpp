// A folder full of pictures: every worker at work, bounded memory, order, and a clean end.
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "cli/pictures.h"
#include "cli/process.h"
#include "cli/watching.h"
#include "storage/left_overs.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;
using test::Finished;
using test::Process;
using test::TemporaryFolder;
using testing::HasSubstr;

constexpr int kWorkers = 4;
constexpr long kGrowth = 16L << 10;  // KB that reports and bookkeeping may take

/// A thousand, or as many as everyday runs have the time for.
int pictureCount() {
    return test::isLongRun() ? 1000 : 200;
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// The processes that a process has started and that still run.
std::vector<std::string> childrenOf(pid_t parent) {
    const std::string id = std::to_string(parent);
    std::istringstream list(contentOf("/proc/" + id + "/task/" + id + "/children"));
    return {std::istream_iterator<std::string>(list), {}};
}

/// The most memory that a process had so far, in KB; 0 when it is gone.
long peakMemory(pid_t process) {
    std::istringstream status(contentOf("/proc/" + std::to_string(process) + "/status"));
    for (std::string word; status >> word;) {
        long peak = 0;
        if (word == "VmHWM:" && status >> peak) return peak;
    }
    return 0;
}

/// Whether a program still runs that was told about the folder.
bool isUsedBySomebody(const std::string& folder) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        if (name == std::to_string(::getpid())) continue;
        if (contentOf(entry.path().string() + "/cmdline").find(folder) != std::string::npos)
            return true;
    }
    return false;
}

class ThousandPictures : public testing::Test {
  protected:
    ThousandPictures() {
        fs::create_directory(results());
        fs::create_directory(folder_ / "in");
        arguments_ = {"--json", "-j", std::to_string(kWorkers), "-o", results()};
        const std::string first = folder_ / "in/0.png";
        test::putPicture(first, 9, 7);
        for (int i = 0; i < pictureCount(); ++i) {
            const std::string name = folder_ / ("in/" + std::to_string(i) + ".png");
            if (i > 0) fs::create_hard_link(first, name);
            arguments_.push_back(name);
        }
    }
    std::string results() const { return folder_ / "out"; }

    /// Expects reports of so many pictures at least, and in the order asked for. One that was not
    /// finished when an interruption came is missing among them.
    void expectOrder(const std::string& out, std::size_t least) const {
        std::istringstream lines(out);
        constexpr std::string_view kFolder = "/in/";
        std::size_t count = 0;
        int last = -1;
        for (std::string line; std::getline(lines, line); ++count) {
            const std::size_t at = line.find(kFolder);
            ASSERT_NE(at, std::string::npos) << line;
            const int number = std::stoi(line.substr(at + kFolder.size()));
            ASSERT_GT(number, last) << line;
            last = number;
        }
        EXPECT_GE(count, least);
    }

    const TemporaryFolder folder_;
    std::vector<std::string> arguments_;
};

std::size_t linesIn(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST_F(ThousandPictures, KeepAllWorkersBusyAndTheMemoryBounded) {
    const auto all = static_cast<std::size_t>(pictureCount());
    Process process(arguments_);
    std::size_t most = 0;
    long early = 0;
    long late = 0;
    process.readUntil([&](const Finished& soFar) {
        most = std::max(most, childrenOf(process.id()).size());
        const long peak = peakMemory(process.id());
        if (linesIn(soFar.out) >= all / 10 && early == 0) early = peak;
        // Before its program has begun, the process is a copy of this one.
        if (early > 0) late = std::max(late, peak);
        return linesIn(soFar.out) == all;
    });
    const Finished finished = process.finish();
    EXPECT_EQ(finished.exitCode, 0);
    expectOrder(finished.out, all);
    // Progress is for terminals.
    EXPECT_EQ(finished.err, "");
    EXPECT_EQ(most, std::size_t{kWorkers});
    EXPECT_GT(early, 0);
    EXPECT_LT(late - early, kGrowth);
    EXPECT_EQ(std::distance(fs::directory_iterator(results()), {}), pictureCount());
}

TEST_F(ThousandPictures, AreSharedOutWhenTheyAppearInAWatchedFolder) {
    const auto all = static_cast<std::size_t>(pictureCount());
    fs::create_directory(folder_ / "watched");
    Process process({"--json", "-j", std::to_string(kWorkers), "-o", results(), "--watch",
                     folder_ / "watched"});
    test::waitUntilWatching(process);
    test::halt(process);
    for (std::size_t i = 0; i < all; ++i) {
        const std::string name = std::to_string(i) + ".png";
        fs::rename(folder_ / ("in/" + name), folder_ / ("watched/" + name));
    }
    process.signal(SIGCONT);
    std::size_t most = 0;
    ASSERT_TRUE(process.readUntil([&](const Finished& soFar) {
        most = std::max(most, childrenOf(process.id()).size());
        return linesIn(soFar.out) == all;
    }));
    process.signal(SIGINT);
    EXPECT_EQ(process.finish().exitCode, 130);
    EXPECT_EQ(most, std::size_t{kWorkers});
    EXPECT_EQ(std::distance(fs::directory_iterator(results()), {}), pictureCount());
}

TEST_F(ThousandPictures, EndCleanlyWhenInterruptedHalfWay) {
    Process process(arguments_);
    ASSERT_TRUE(process.readUntil([](const Finished& soFar) { return linesIn(soFar.out) >= 20; }));
    process.signal(SIGINT);
    const Finished finished = process.finish();
    EXPECT_EQ(finished.exitCode, 130);
    expectOrder(finished.out, 20);
    EXPECT_LT(linesIn(finished.out), static_cast<std::size_t>(pictureCount()));
    for (const auto& entry : fs::directory_iterator(results())) {
        const std::string path = entry.path().string();
        EXPECT_FALSE(isTemporaryFileName(entry.path().filename().string())) << path;
        EXPECT_TRUE(decodeImageFile(path)) << path;
    }
    for (int i = 0; i < 1000 && isUsedBySomebody(results()); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(isUsedBySomebody(results()));
}

/// The decoders that work for the workers of a process.
std::size_t helpersOf(pid_t process) {
    std::size_t helpers = 0;
    for (const std::string& worker : childrenOf(process))
        helpers += childrenOf(static_cast<pid_t>(std::stol(worker))).size();
    return helpers;
}

TEST(LargePictures, AreBegunOneAfterTheOtherWhereThereIsMemoryForOne) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "out");
    constexpr std::size_t kPictures = 16;
    // 32 MB and 21.6 bytes for each of a million pixels are 55 MB: twice is more than 80.
    std::vector<std::string> arguments = {"--json",   "-j", "4",           "--memory",
                                          "80000000", "-o", folder / "out"};
    for (std::size_t i = 0; i < kPictures; ++i) {
        arguments.push_back(folder / (std::to_string(i) + ".png"));
        if (i == 0) {
            test::putPicture(arguments.back(), 1200, 900);
        } else {
            fs::create_hard_link(folder / "0.png", arguments.back());
        }
    }
    Process process(arguments);
    std::size_t most = 0;
    ASSERT_TRUE(process.readUntil([&](const Finished& soFar) {
        most = std::max(most, helpersOf(process.id()));
        return linesIn(soFar.out) == kPictures;
    }));
    EXPECT_EQ(process.finish().exitCode, 0);
    EXPECT_LE(most, 1U);
}

}  // namespace
}  // namespace skarnel
