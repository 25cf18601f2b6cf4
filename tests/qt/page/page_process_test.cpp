// The page renderer's process by itself: it ends when it stands still, and only then.
#include "qt/page/page_process.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>

#include <QSize>
#include <QString>
#include <algorithm>
#include <chrono>
#include <fstream>

#include "platform/page_module.h"
#include "qt/page/page_messages.h"
#include "renderers.h"
#include "storage/temporary_folder.h"
#include "util/walls/helper_program.h"

namespace skarnel::test_page {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kLongest{20'000};  // until a condition counts as failed

class PageProcessTest : public ::testing::Test {
  protected:
    PageProcessTest() {
        std::ofstream(folder_ / "page.html") << "<!DOCTYPE html><body style='margin:0'>page";
    }

    void start(RendererPatience patience) {
        const std::vector<int> others = ourPageProcesses();
        auto started = PageProcess::start(*findHelperProgram(kPageRendererName), patience);
        ASSERT_TRUE(started);
        process_ = *std::move(started);
        for (const int each :
             processes([](int process) { return parentOf(process) == ::getpid(); }))
            if (std::find(others.begin(), others.end(), each) == others.end()) id_ = each;
    }

    /// The processes of the engine that this renderer started, and theirs.
    std::vector<int> engines() const {
        return processes([this](int process) {
            const int parent = parentOf(process);
            return isEngineProcess(process) && (parent == id_ || parentOf(parent) == id_);
        });
    }

    void load() {
        const std::string page = "file://" + (folder_ / "page.html");
        ASSERT_TRUE(sendPageMessage(
            process_->line(),
            pageMessage(PageMessageKind::Load, QString::fromStdString(page), QSize(300, 100))));
    }

    enum class Heard { Wanted, End, Nothing };

    /// Until that message or the end comes, at most so long.
    Heard listen(PageMessageKind wanted, milliseconds longest) {
        for (const auto until = Clock::now() + longest;;) {
            const auto left = std::chrono::duration_cast<milliseconds>(until - Clock::now());
            if (left.count() <= 0) return Heard::Nothing;
            pollfd line{process_->line(), POLLIN, 0};
            ::poll(&line, 1, static_cast<int>(left.count()));
            bool isOpen = true;
            const auto message = receivePageMessage(process_->line(), isOpen);
            if (!isOpen) return Heard::End;
            if (message && message->kind == wanted) return Heard::Wanted;
        }
    }
    bool ends(milliseconds longest) {
        return listen(PageMessageKind::Picture, longest) == Heard::End;
    }

    const test::TemporaryFolder folder_;
    std::unique_ptr<PageProcess> process_;
    int id_ = 0;
};

TEST_F(PageProcessTest, AStartThatTakesTooLongEnds) {
    // No engine is there in a millisecond.
    ASSERT_NO_FATAL_FAILURE(start({.start = 1, .load = 60'000}));
    EXPECT_TRUE(ends(kLongest));
}

TEST_F(PageProcessTest, ALoadInWhichNothingHappensEnds) {
    std::ofstream page(folder_ / "page.html");
    for (int i = 0; i < 50'000; ++i) page << "<p>line of a long page</p>";
    page.close();
    ASSERT_NO_FATAL_FAILURE(start({.start = 60'000, .load = 500}));
    ASSERT_NO_FATAL_FAILURE(load());
    ASSERT_EQ(listen(PageMessageKind::Started, kLongest), Heard::Wanted);
    for (const int engine : engines()) ::kill(engine, SIGSTOP);
    EXPECT_TRUE(ends(kLongest));
}

TEST_F(PageProcessTest, AfterALoadItWaitsForOrdersWithoutEnd) {
    // A machine that is too busy for the short time gets a longer one.
    for (const int patience : {1'000, 3'000, 9'000}) {
        ASSERT_NO_FATAL_FAILURE(start({.start = 60'000, .load = patience}));
        ASSERT_NO_FATAL_FAILURE(load());
        if (listen(PageMessageKind::Finished, kLongest) != Heard::Wanted) continue;
        EXPECT_FALSE(ends(milliseconds(patience + patience / 5)));
        return;
    }
    FAIL() << "no page was loaded";
}

}  // namespace
}  // namespace skarnel::test_page
