// Ctrl-C and its kin at random moments: exit code 130, whole files, nothing left over.
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "cli/pictures.h"
#include "cli/process.h"
#include "storage/left_overs.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::Finished;
using test::Process;
using test::TemporaryFolder;

/// Every file of the folder is a whole picture.
void expectWholePictures(const std::string& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string path = entry.path().string();
        EXPECT_FALSE(isTemporaryFileName(entry.path().filename().string())) << path;
        EXPECT_TRUE(decodeImageFile(path)) << path;
    }
}

/// Whoever started this test in the background may have had it ignore interruptions.
void heedInterruptions() {
    std::signal(SIGINT, SIG_DFL);
}

class Interrupt : public testing::Test {
  protected:
    Interrupt() {
        for (int i = 0; i < 12; ++i) {
            pictures_.push_back(folder_ / ("p" + std::to_string(i) + ".png"));
            test::putPicture(pictures_.back(), 300, 200);
        }
    }
    std::vector<std::string> arguments(const std::string& results, const char* workers) const {
        std::vector<std::string> all = {"-o", results, "-j", workers, "--force"};
        all.insert(all.end(), pictures_.begin(), pictures_.end());
        return all;
    }
    const TemporaryFolder folder_;
    std::vector<std::string> pictures_;
};

TEST_F(Interrupt, EndsWith130AndLeavesOnlyWholeFiles) {
    std::mt19937 random(3);
    int interrupted = 0;
    for (int round = 0; round < (test::isLongRun() ? 200 : 30); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const TemporaryFolder results;
        Process process(arguments(results.path(), round % 2 == 0 ? "1" : "3"), heedInterruptions);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 150'000));
        process.signal(SIGINT);
        const Finished finished = process.finish();
        EXPECT_TRUE(finished.exitCode == 130 || finished.exitCode == 0) << finished.exitCode;
        interrupted += finished.exitCode == 130 ? 1 : 0;
        expectWholePictures(results.path());
    }
    EXPECT_GT(interrupted, 0);
}

/// The files that the lines of --json name.
std::set<std::string> reportedFiles(const std::string& lines) {
    std::set<std::string> files;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const auto report = nlohmann::json::parse(line);
        if (!report["output"].is_null()) files.insert(report["output"].get<std::string>());
    }
    return files;
}

// The first picture is by far the largest, so that the others are finished before it.
TEST_F(Interrupt, EveryFileThatStandsIsReported) {
    test::putPicture(pictures_.front(), 2000, 1500);
    for (const char* workers : {"1", "2", "3"}) {
        SCOPED_TRACE(workers);
        const TemporaryFolder results;
        std::vector<std::string> all = arguments(results.path(), workers);
        all.push_back("--json");
        Process process(all, [] {
            heedInterruptions();
            ::setpgid(0, 0);
        });
        const auto standing = [&] {
            const std::vector<std::string> names = results.names();
            return std::count_if(names.begin(), names.end(),
                                 [](const auto& name) { return !isTemporaryFileName(name); });
        };
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (standing() < 3 && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ::kill(-process.id(), SIGINT);  // as a terminal does: the workers get it, too
        const Finished finished = process.finish();
        EXPECT_TRUE(finished.exitCode == 130 || finished.exitCode == 0) << finished.exitCode;
        std::set<std::string> files;
        for (const std::string& name : results.names()) files.insert(results / name);
        EXPECT_GE(files.size(), 3U);
        EXPECT_EQ(reportedFiles(finished.out), files);
    }
}

TEST_F(Interrupt, ATerminationHasItsOwnCode) {
    const TemporaryFolder results;
    Process process(arguments(results.path(), "2"));
    // The first line tells that the work is under way.
    process.readUntil([](const Finished& so) { return so.out.find('\n') != std::string::npos; });
    process.signal(SIGTERM);
    const int code = process.finish().exitCode;
    EXPECT_TRUE(code == 143 || code == 0) << code;
    expectWholePictures(results.path());
}

TEST_F(Interrupt, AnIgnoredHangUpStaysIgnored) {
    const TemporaryFolder results;
    Process process(arguments(results.path(), "1"), [] { std::signal(SIGHUP, SIG_IGN); });
    process.readUntil([](const Finished& so) { return so.out.find('\n') != std::string::npos; });
    process.signal(SIGHUP);
    EXPECT_EQ(process.finish().exitCode, 0);
}

TEST_F(Interrupt, AKilledRunLeavesNothingAfterTheNextOne) {
    std::mt19937 random(4);
    const TemporaryFolder results;
    for (int round = 0; round < 20; ++round) {
        Process process(arguments(results.path(), "1"));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 100'000));
        process.signal(SIGKILL);
        process.finish();
    }
    EXPECT_EQ(test::render(arguments(results.path(), "1")).exitCode, 0);
    expectWholePictures(results.path());
    EXPECT_EQ(results.names().size(), pictures_.size());
}

}  // namespace
}  // namespace skarnel
