#include "cli/pool.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <set>
#include <thread>

namespace skarnel::cli {
namespace {

using testing::ElementsAre;

JobReport reportOf(std::size_t job) {
    JobReport report;
    report.input = std::to_string(job);
    report.output = std::to_string(::getpid());
    return report;
}

JobReport lostReport(std::size_t job, const std::string& cause) {
    JobReport report;
    report.input = std::to_string(job);
    report.error = cause;
    return report;
}

/// Runs the jobs and gives the reports as they came.
std::vector<JobReport> runAll(std::size_t count, int workers,
                              const std::function<JobReport(std::size_t)>& run) {
    std::vector<JobReport> reports;
    runPool(count, workers,
            {run, [&](const JobReport& report) { reports.push_back(report); }, [](std::size_t) {}},
            lostReport);
    return reports;
}

TEST(Pool, ReportsComeInOrderWhateverEndsFirst) {
    const auto reports = runAll(20, 4, [](std::size_t job) {
        std::this_thread::sleep_for(std::chrono::milliseconds(job % 5 == 0 ? 20 : 1));
        return reportOf(job);
    });
    ASSERT_EQ(reports.size(), 20U);
    std::set<std::string> processes;
    for (std::size_t i = 0; i < reports.size(); ++i) {
        EXPECT_EQ(reports[i].input, std::to_string(i));
        processes.insert(*reports[i].output);
    }
    EXPECT_GT(processes.size(), 1U);
    EXPECT_EQ(processes.count(std::to_string(::getpid())), 0U);
}

TEST(Pool, OneWorkerOrOneJobStaysInThisProcess) {
    const std::string here = std::to_string(::getpid());
    for (const JobReport& report : runAll(3, 1, reportOf)) EXPECT_EQ(report.output, here);
    for (const JobReport& report : runAll(1, 8, reportOf)) EXPECT_EQ(report.output, here);
    EXPECT_TRUE(runAll(0, 8, reportOf).empty());
}

TEST(Pool, AWorkerThatDiesCostsOnlyItsJob) {
    const auto reports = runAll(10, 2, [](std::size_t job) {
        if (job == 3) ::raise(SIGKILL);
        if (job == 4) ::_exit(0);
        return reportOf(job);
    });
    ASSERT_EQ(reports.size(), 10U);
    for (std::size_t i = 0; i < reports.size(); ++i) {
        EXPECT_EQ(reports[i].input, std::to_string(i));
        EXPECT_EQ(reports[i].error.has_value(), i == 3 || i == 4);
    }
    EXPECT_THAT(*reports[3].error, testing::HasSubstr("signal 9"));
    EXPECT_THAT(*reports[4].error, testing::HasSubstr("too early"));
}

TEST(Pool, ManyDyingWorkersAreReplaced) {
    const auto reports = runAll(30, 3, [](std::size_t job) {
        if (job % 2 == 1) ::raise(SIGKILL);
        return reportOf(job);
    });
    ASSERT_EQ(reports.size(), 30U);
    for (std::size_t i = 0; i < reports.size(); ++i) {
        EXPECT_EQ(reports[i].error.has_value(), i % 2 == 1);
    }
}

TEST(Pool, LongReportsComeWhole) {
    const auto reports = runAll(4, 2, [](std::size_t job) {
        JobReport report = reportOf(job);
        report.error = std::string(300'000, static_cast<char>('a' + job));
        return report;
    });
    ASSERT_EQ(reports.size(), 4U);
    EXPECT_EQ(reports[3].error, std::string(300'000, 'd'));
}

TEST(Pool, ProgressCountsEveryJob) {
    std::vector<std::size_t> counts;
    runPool(5, 2,
            {reportOf, [](const JobReport&) {}, [&](std::size_t done) { counts.push_back(done); }},
            lostReport);
    EXPECT_THAT(counts, ElementsAre(1, 2, 3, 4, 5));
}

TEST(Pool, ReportsSurviveTheirPacking) {
    JobReport report;
    report.input = std::string("a\0b\xff", 4);
    report.output = "";
    report.inputSize = PixelSize{1, 2};
    report.milliseconds = 0.1;
    const auto back = unpackReport(packReport(report));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->input, report.input);
    EXPECT_EQ(back->output, report.output);
    EXPECT_EQ(back->inputSize, report.inputSize);
    EXPECT_EQ(back->outputSize, std::nullopt);
    EXPECT_EQ(back->milliseconds, 0.1);
    EXPECT_EQ(back->error, std::nullopt);
}

TEST(Pool, DamagedBytesAreNoReport) {
    const std::string packed = packReport(reportOf(7));
    for (std::size_t length = 0; length < packed.size(); ++length) {
        EXPECT_FALSE(unpackReport(packed.substr(0, length))) << length;
    }
    EXPECT_FALSE(unpackReport(packed + "x"));
}

TEST(Pool, AtLeastOneWorkerIsServed) {
    EXPECT_GE(defaultWorkers(), 1);
}

}  // namespace
}  // namespace skarnel::cli
