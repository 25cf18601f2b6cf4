// The window is killed, or the power goes, while it writes what it remembers.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QStringList>
#include <random>
#include <string>

#include "qt/user_presets.h"
#include "qt/window_state.h"
#include "storage/killed_writer.h"
#include "storage/left_overs.h"
#include "storage/power_cut.h"
#include "storage/temporary_folder.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

using test::fileText;
using test::TemporaryFolder;

constexpr SettingNumbers kSome{1, 2, 3, 4, 5, 6, 7};
const std::string kFile = "window.json";

bool hasLook(const UserPresets& looks, int number) {
    return looks.placeOf(QStringLiteral("Look %1").arg(number)) >= 0;
}

/// What a window does in its time: a look, which is written at once unless one that was killed had
/// written it, and a recent file.
bool remember(WindowState& state, UserPresets& looks, int number) {
    if (!hasLook(looks, number)) looks.add(QStringLiteral("Look %1").arg(number), kSome);
    state.addRecentFile(QStringLiteral("/p/%1").arg(number));
    return state.save();
}

/// One that has been at work before.
void makeOldState(const TemporaryFolder& folder) {
    WindowState state(QString::fromStdString(folder / kFile));
    UserPresets looks(state);
    ASSERT_TRUE(remember(state, looks, 0));
}

bool isRecent(const WindowState& state, int number) {
    return state.recentFiles().contains(QStringLiteral("/p/%1").arg(number));
}

/// Makes one change through a recording and cuts the power everywhere in it.
void cutPower(const TemporaryFolder& folder, const test::Contents& before,
              const std::function<void(const test::State&)>& check) {
    test::RecordingFileSystem recording;
    recording.names = {{kFile, 1}};
    recording.lastInode = 1;
    {
        WindowState state(QString::fromStdString(folder / kFile), recording);
        UserPresets looks(state);
        ASSERT_TRUE(remember(state, looks, 1));
    }
    const int states = test::cutPowerEverywhere({{kFile, 1}}, before, recording.operations, check);
    EXPECT_GT(states, 20);
}

TEST(WindowStatePowerCut, LeavesAWholeFileWithAllThatWasThere) {
    const TemporaryFolder folder;
    makeOldState(folder);
    const TemporaryFolder restarted;
    int withLook = 0;
    int withBoth = 0;
    const ScopedLogCapture log;
    cutPower(folder, {{1, fileText(folder / kFile)}}, [&](const test::State& found) {
        test::putFile(restarted / kFile, test::textIn(found, kFile));
        WindowState state(QString::fromStdString(restarted / kFile));
        const UserPresets looks(state);
        EXPECT_TRUE(hasLook(looks, 0) && isRecent(state, 0)) << test::textIn(found, kFile);
        EXPECT_TRUE(hasLook(looks, 1) || !isRecent(state, 1)) << "the look was written first";
        withLook += hasLook(looks, 1) ? 1 : 0;
        withBoth += isRecent(state, 1) ? 1 : 0;
        for (const auto& [name, text] : found) {
            EXPECT_TRUE(name == kFile || name == kFile + ".lock" || isTemporaryFileName(name))
                << name;
        }
    });
    EXPECT_GT(withBoth, 0);
    EXPECT_GT(withLook, withBoth);
}

TEST(WindowStatePowerCut, ADamagedFileIsNeverGoneWithoutItsCopy) {
    const TemporaryFolder folder;
    makeOldState(folder);
    const std::string damaged = fileText(folder / kFile).substr(9);
    test::putFile(folder / kFile, damaged);
    const ScopedLogCapture log;
    cutPower(folder, {{1, damaged}}, [&](const test::State& found) {
        EXPECT_TRUE(test::textIn(found, kFile) == damaged ||
                    test::textIn(found, kFile + ".damaged") == damaged);
    });
}

TEST(WindowStateKilled, LeavesAWholeFileWithEveryFinishedLookAndRecentFile) {
    constexpr int kLooks = 20;  // of the youngest, so that the file stays small
    const TemporaryFolder folder;
    makeOldState(folder);
    const QString path = QString::fromStdString(folder / kFile);
    test::SharedCounter finished;
    std::mt19937 random(3);
    int interrupted = 0;
    const int kills = test::isLongRun() ? 2000 : 150;
    // On a slow disk it may take many more until one was finished and one was met half way.
    const auto goesOn = [&](int round) {
        return round < kills || (round < 20 * kills && (*finished == 0 || interrupted == 0));
    };
    for (int round = 0; goesOn(round); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        test::killAtRandom(random, [&] {
            WindowState state(path);
            UserPresets looks(state);
            for (;;) {
                const int next = *finished + 1;
                if (!remember(state, looks, next)) ::_exit(1);
                *finished = next;
                if (looks.all().size() > kLooks) looks.remove(0);
            }
        });
        WindowState state(path);
        const UserPresets looks(state);
        const int last = *finished;
        for (int i = std::max(0, last - kLooks / 2); i <= last; ++i)
            ASSERT_TRUE(hasLook(looks, i)) << i;
        ASSERT_TRUE(isRecent(state, last));
        interrupted += folder.names().size() > 2 ? 1 : 0;
        state.removeLeftOvers();  // what the next start does
        ASSERT_EQ(folder.names(), (std::vector<std::string>{kFile, kFile + ".lock"}));
    }
    EXPECT_GT(*finished, 0) << "no change was finished, so nothing was tried";
    EXPECT_GT(interrupted, 0) << "no kill met a write half way";
}

}  // namespace
}  // namespace skarnel
