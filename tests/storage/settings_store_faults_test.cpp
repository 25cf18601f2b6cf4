// Failing system calls under the settings, and a thousand damaged files.
#include <gmock/gmock.h>

#include <cerrno>
#include <random>

#include "storage/every_fault.h"
#include "storage/left_overs.h"
#include "storage/settings_json.h"
#include "storage/settings_store.h"
#include "storage/temporary_folder.h"
#include "util/log/system_error.h"

namespace skarnel {
namespace {

using test::Fault;
using test::FaultyFileSystem;
using test::fileText;
using test::Repeat;
using test::TemporaryFolder;

const std::string kOld = "{\n    \"kept\": 5.0,\n    \"old\": 1.0\n}\n";
const std::string kNew = "{\n    \"kept\": 5.0,\n    \"new\": 2.0\n}\n";
const std::string kFresh = "{\n    \"new\": 2.0\n}\n";
const std::string kNeverSaw = "{\n    \"kept\": 5.0,\n    \"new\": 2.0,\n    \"old\": 1.0\n}\n";
const std::string kDamaged = "{\"kept\": 5, ";

Result<void> changeThrough(const std::string& path, FileSystem& fileSystem) {
    SettingsStore store(path, fileSystem);
    store.setLockPatience(std::chrono::milliseconds(5));
    store.removeObject("old");
    store.setFloat("new", 2);
    return store.synchronize();
}

bool isKeptSomewhere(const TemporaryFolder& folder, const std::string& text) {
    for (const std::string& name : folder.names()) {
        if (fileText(folder / name) == text) return true;
    }
    return false;
}

void expectNothingLost(const std::string& before, const Fault& fault) {
    const TemporaryFolder folder;
    const std::string path = folder / "settings.json";
    test::putFile(path, before);
    FaultyFileSystem faulty(fault.call, fault.error, fault.repeat);
    const Result<void> result = changeThrough(path, faulty);
    if (!result) {
        const std::string cause = describeError(fault.error > 0 ? fault.error : ENOSPC);
        EXPECT_THAT(result.error().message, testing::HasSubstr(cause));
        EXPECT_NE(fault.error, test::kShortWrite) << "the rest can be written";
    }

    // After a file that may not be read the change stands alone; after one that might not be read
    // at first the removal of a key that was not seen did nothing. The old text is kept then.
    const std::string now = fileText(path);
    const bool mayCount = before == kDamaged || fault.error == EACCES;
    EXPECT_TRUE(now == before || now == kNew || (mayCount && (now == kFresh || now == kNeverSaw)))
        << now;
    if (result) {
        EXPECT_NE(now, before);
    }
    const bool readable = before == kOld;
    if (now == kFresh || now == kNeverSaw || !readable) {
        EXPECT_TRUE(isKeptSomewhere(folder, before));
    }
    removeLeftOvers(folder.path());
    for (const std::string& name : folder.names()) EXPECT_FALSE(isTemporaryFileName(name));
    // The next start works whatever happened.
    FaultyFileSystem healthy(-1, 0, Repeat::Once);
    EXPECT_TRUE(changeThrough(path, healthy));
}

void failEveryCall(const std::string& before) {
    const int calls = test::callsOf([&](FileSystem& healthy) {
        const TemporaryFolder folder;
        test::putFile(folder / "settings.json", before);
        ASSERT_TRUE(changeThrough(folder / "settings.json", healthy));
    });
    ASSERT_GE(calls, 20);
    test::forEachFault(calls, [&](const Fault& fault) { expectNothingLost(before, fault); });
}

TEST(SettingsStoreFaults, ChangingAWholeFileSurvivesEveryFailingCall) {
    failEveryCall(kOld);
}

TEST(SettingsStoreFaults, ReplacingADamagedFileSurvivesEveryFailingCall) {
    failEveryCall(kDamaged);
}

TEST(SettingsStoreFaults, ALaterTryWritesWhatAFullDiskRefused) {
    const TemporaryFolder folder;
    const std::string path = folder / "settings.json";
    FaultyFileSystem healthy(-1, 0, Repeat::Once);
    ASSERT_TRUE(changeThrough(folder / "other.json", healthy));
    for (int call = 0; call < static_cast<int>(healthy.calls().size()); ++call) {
        FaultyFileSystem faulty(call, ENOSPC, Repeat::Once);
        SettingsStore store(path, faulty);
        store.setFloat("call", static_cast<float>(call));
        if (!store.synchronize()) {
            EXPECT_TRUE(store.synchronize()) << call;
        }
        EXPECT_EQ(SettingsStore(path).floatForKey("call"), static_cast<float>(call));
    }
}

/// One of a thousand ways to damage the bytes of a good file.
std::string damaged(std::mt19937& random) {
    std::string text = R"({"alpha": 12.5, "gradient": 3, "applyBackgroundColor": true})";
    const auto upTo = [&](std::size_t limit) { return random() % limit; };
    switch (upTo(8)) {
        case 0:
            return text.substr(0, upTo(text.size()));
        case 1:
            for (char& c : text) c = static_cast<char>(random());
            return text;
        case 2:
            for (std::size_t i = 0; i <= upTo(5); ++i) {
                text[upTo(text.size())] = static_cast<char>(random());
            }
            return text;
        case 3:
            return R"({"alpha": NaN, "gradient": 3})";
        case 4:
            return R"({"alpha": [1, 2], "gradient": {"a": null}, "offset": "wide"})";
        case 5:
            return std::string(upTo(2) == 0 ? 2'000'000 : 4096, static_cast<char>(random()));
        case 6:
            return text.insert(upTo(text.size()), std::string(upTo(40), '\0'));
        default:
            return text + text.substr(upTo(text.size()));
    }
}

TEST(SettingsStoreFaults, AThousandDamagedFilesAreKeptAndTheProgramGoesOn) {
    std::mt19937 random(7);  // fixed, so that a failure names its round
    for (int round = 0; round < 1000; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const TemporaryFolder folder;
        const std::string path = folder / "settings.json";
        const std::string text = damaged(random);
        test::putFile(path, text);
        const std::vector<std::uint8_t> bytes = test::bytesOf(text);
        const ParsedSettings readable = parseSettings(bytes);
        {
            FaultyFileSystem healthy(-1, 0, Repeat::Once);
            SettingsStore store(path, healthy);
            for (const char* key : {"alpha", "gradient", "offset"}) {
                if (!store.contains(key)) store.setFloat(key, 1);
            }
            store.setFloat("round", static_cast<float>(round));
            ASSERT_TRUE(store.synchronize());
        }
        const SettingsStore again(path);
        EXPECT_EQ(again.floatForKey("round"), static_cast<float>(round));
        EXPECT_TRUE(again.contains("alpha") && again.contains("gradient"));
        if (!readable.whole) {
            EXPECT_TRUE(isKeptSomewhere(folder, text));
        }
        if (text.size() > 1'000'000) continue;  // too large to be ours, so nothing is taken from it
        for (const auto& [key, value] : readable.values) {
            EXPECT_TRUE(again.contains(key)) << key;
        }
    }
}

}  // namespace
}  // namespace skarnel
