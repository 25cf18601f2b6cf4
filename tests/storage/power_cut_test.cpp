// What a power cut leaves of files and settings.
#include "storage/power_cut.h"

#include <gmock/gmock.h>

#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/settings_store.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using test::cutPowerEverywhere;
using test::forEachState;
using test::Kind;
using test::Operation;
using test::RecordingFileSystem;
using test::State;
using test::TemporaryFolder;
using test::textIn;

const std::string kOld = "the old picture";
const std::string kNew = "the new picture, which is longer";

TEST(PowerCut, ReplacingAFileLeavesTheOldOrTheNewOne) {
    const TemporaryFolder folder;
    test::putFile(folder / "file", kOld);
    RecordingFileSystem recording;
    recording.names = {{"file", 1}};
    recording.lastInode = 1;
    ASSERT_TRUE(writeFileSafely(folder / "file", test::bytesOf(kNew), Overwrite::Allow, recording));
    int old = 0;
    const int states =
        cutPowerEverywhere({{"file", 1}}, {{1, kOld}}, recording.operations, [&](const State& s) {
            const std::string now = textIn(s, "file");
            EXPECT_TRUE(now == kOld || now == kNew) << now;
            old += now == kOld ? 1 : 0;
            for (const auto& [name, text] : s) {
                EXPECT_TRUE(name == "file" || isTemporaryFileName(name)) << name;
            }
        });
    EXPECT_GT(old, 0);
    EXPECT_GT(states, old);
}

TEST(PowerCut, AFinishedWriteIsOnDisk) {
    const TemporaryFolder folder;
    RecordingFileSystem recording;
    ASSERT_TRUE(
        writeFileSafely(folder / "file", test::bytesOf(kNew), Overwrite::Refuse, recording));
    forEachState({}, {}, recording.operations, [](const State& state) {
        EXPECT_EQ(state, (State{{"file", kNew}}));
    });
}

TEST(PowerCut, MakingAFileLeavesNoneOrTheWholeOne) {
    const TemporaryFolder folder;
    RecordingFileSystem recording;
    ASSERT_TRUE(
        writeFileSafely(folder / "file", test::bytesOf(kNew), Overwrite::Refuse, recording));
    cutPowerEverywhere({}, {}, recording.operations, [](const State& state) {
        const std::string now = textIn(state, "file");
        EXPECT_TRUE(now == "(none)" || now == kNew) << now;
    });
}

TEST(PowerCut, SettingsAreTheOldOrTheNewOnes) {
    const TemporaryFolder folder;
    const std::string old = "{\"a\": 1}";
    test::putFile(folder / "settings.json", old);
    RecordingFileSystem recording;
    recording.names = {{"settings.json", 1}};
    recording.lastInode = 1;
    SettingsStore store(folder / "settings.json", recording);
    store.setFloat("b", 2);
    ASSERT_TRUE(store.synchronize());
    const std::string both = "{\n    \"a\": 1.0,\n    \"b\": 2.0\n}\n";
    cutPowerEverywhere({{"settings.json", 1}}, {{1, old}}, recording.operations,
                       [&](const State& state) {
                           const std::string now = textIn(state, "settings.json");
                           EXPECT_TRUE(now == old || now == both) << now;
                       });
}

TEST(PowerCut, DamagedSettingsAreNeverGoneWithoutTheirCopy) {
    const TemporaryFolder folder;
    const std::string damage = "{\"a\": 1, ";
    test::putFile(folder / "settings.json", damage);
    RecordingFileSystem recording;
    recording.names = {{"settings.json", 1}};
    recording.lastInode = 1;
    SettingsStore store(folder / "settings.json", recording);
    store.setFloat("b", 2);
    ASSERT_TRUE(store.synchronize());
    cutPowerEverywhere({{"settings.json", 1}}, {{1, damage}}, recording.operations,
                       [&](const State& state) {
                           EXPECT_TRUE(textIn(state, "settings.json") == damage ||
                                       textIn(state, "settings.json.damaged") == damage);
                       });
}

TEST(PowerCut, TheModelSeesAWriteThatForgetsToFlush) {
    // The order that loses files: bytes, name, no flush in between.
    const std::vector<Operation> careless = {{Kind::Create, "temporary", "", 2, ""},
                                             {Kind::Write, "", "", 2, kNew},
                                             {Kind::Rename, "file", "temporary", 2, ""}};
    bool lost = false;
    cutPowerEverywhere({{"file", 1}}, {{1, kOld}}, careless, [&](const State& state) {
        const std::string now = textIn(state, "file");
        lost = lost || (now != kOld && now != kNew);
    });
    EXPECT_TRUE(lost);
}

}  // namespace
}  // namespace skarnel
