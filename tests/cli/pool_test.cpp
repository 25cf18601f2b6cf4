#include "cli/pool.h"

#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <atomic>
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
    runPool(count, {workers},
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
    runPool(5, {2},
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

TEST(Pool, WhatJobsMakeComesWholeAndInOrder) {
    std::vector<Bytes> made;
    runPool(6, {3},
            {[](std::size_t job) {
                 JobReport report = reportOf(job);
                 report.made = Bytes(700'000 * (job % 3), static_cast<std::uint8_t>(job));
                 return report;
             },
             [&](const JobReport& report) { made.push_back(report.made); }, [](std::size_t) {}},
            lostReport);
    ASSERT_EQ(made.size(), 6U);
    for (std::size_t job = 0; job < 6; ++job) {
        EXPECT_TRUE(made[job] == Bytes(700'000 * (job % 3), static_cast<std::uint8_t>(job))) << job;
    }
}

/// What several processes do at a time, in memory that they share.
struct Work {
    std::atomic<std::uint64_t> memory{0};
    std::atomic<std::uint64_t> jobs{0};
    std::atomic<std::uint64_t> mostMemory{0};
    std::atomic<std::uint64_t> mostJobs{0};
    std::atomic<bool> wasBigAlone{true};

    static void raise(std::atomic<std::uint64_t>& most, std::uint64_t value) {
        for (std::uint64_t old = most; value > old && !most.compare_exchange_weak(old, value);) {
        }
    }
    void begin(std::uint64_t bytes) {
        raise(mostMemory, memory += bytes);
        raise(mostJobs, ++jobs);
    }
    void end(std::uint64_t bytes) {
        memory -= bytes;
        --jobs;
    }
};

class SharedWork {
  public:
    SharedWork()
        : work_(new (::mmap(nullptr, sizeof(Work), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Work) {}
    SharedWork(const SharedWork&) = delete;
    SharedWork& operator=(const SharedWork&) = delete;
    ~SharedWork() { ::munmap(work_, sizeof(Work)); }
    Work* operator->() { return work_; }

  private:
    Work* work_;
};

TEST(Pool, JobsWaitUntilTheirMemoryFitsBesideTheOthers) {
    constexpr std::uint64_t kShare = 100;
    constexpr std::array<std::uint64_t, 12> kNeeds = {30, 30, 60, 1,  250, 1,
                                                      1,  99, 40, 40, 10,  100};
    SharedWork work;
    std::vector<std::string> order;
    runPool(kNeeds.size(), {4, kShare},
            {[&](std::size_t job) {
                 work->begin(kNeeds[job]);
                 std::this_thread::sleep_for(std::chrono::milliseconds(15));
                 if (kNeeds[job] > kShare && work->jobs != 1) work->wasBigAlone = false;
                 if (kNeeds[job] > kShare) work->memory -= kNeeds[job] - kShare;
                 work->end(std::min(kNeeds[job], kShare));
                 return reportOf(job);
             },
             [&](const JobReport& report) { order.push_back(report.input); }, [](std::size_t) {},
             [&](std::size_t job) { return kNeeds[job]; }},
            lostReport);
    EXPECT_THAT(order, ElementsAre("0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"));
    // The one that is larger than the share has been alone; without it the sum stays within.
    EXPECT_TRUE(work->wasBigAlone);
    EXPECT_EQ(work->mostMemory, 250U);
    // 30 + 60 + 1, or 40 + 40 + 10: never all four workers.
    EXPECT_LE(work->mostJobs, 3U);
}

TEST(Pool, TheSumNeverPassesTheShare) {
    SharedWork work;
    const auto need = [](std::size_t job) { return std::uint64_t{10 + job * 7 % 50}; };
    runPool(40, {4, 100},
            {[&](std::size_t job) {
                 work->begin(need(job));
                 std::this_thread::sleep_for(std::chrono::milliseconds(2));
                 work->end(need(job));
                 return reportOf(job);
             },
             [](const JobReport&) {}, [](std::size_t) {}, need},
            lostReport);
    EXPECT_LE(work->mostMemory, 100U);
    EXPECT_EQ(work->memory, 0U);
}

TEST(Pool, TheMemoryOfADeadWorkersJobIsFreeAgain) {
    std::size_t reported = 0;
    runPool(8, {2, 100},
            {[](std::size_t job) {
                 if (job % 2 == 0) ::raise(SIGKILL);
                 return reportOf(job);
             },
             [&](const JobReport&) { ++reported; }, [](std::size_t) {},
             [](std::size_t) { return std::uint64_t{80}; }},
            lostReport);
    EXPECT_EQ(reported, 8U);
}

TEST(Pool, NoJobIsBegunFarAheadOfTheFirstThatIsOpen) {
    SharedWork work;  // its `jobs` count how many have begun
    runPool(12, {3, UINT64_MAX, 4},
            {[&](std::size_t job) {
                 ++work->jobs;
                 if (job == 0) {
                     // As long as this one is open, those up to 4 may begin. Others would.
                     for (int i = 0; i < 400 && work->jobs < 5; ++i)
                         std::this_thread::sleep_for(std::chrono::milliseconds(5));
                     std::this_thread::sleep_for(std::chrono::milliseconds(30));
                     work->mostJobs = work->jobs.load();
                 }
                 return reportOf(job);
             },
             [](const JobReport&) {}, [](std::size_t) {}},
            lostReport);
    EXPECT_EQ(work->mostJobs, 5U);
    EXPECT_EQ(work->jobs, 12U);
}

TEST(Pool, WhenItIsEnoughTheRestIsLeftUndone) {
    for (const int workers : {1, 3}) {
        SharedWork work;
        bool isEnough = false;
        const auto run = [&](std::size_t job) {
            ++work->jobs;
            return reportOf(job);
        };
        const auto report = [&](const JobReport& each) {
            isEnough = isEnough || each.input == "2";
        };
        runPool(1000, {workers}, {run, report, [](std::size_t) {}, {}, [&] { return isEnough; }},
                lostReport);
        EXPECT_GE(work->jobs, 3U);
        EXPECT_LT(work->jobs, 1000U);
    }
}

}  // namespace
}  // namespace skarnel::cli
