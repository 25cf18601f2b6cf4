// A writing process is killed at random moments, a few hundred times, 2,000 in the long mode.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <random>

#include "storage/killed_writer.h"
#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/settings_store.h"
#include "storage/temporary_folder.h"
#include "storage/whole_file.h"

namespace skarnel {
namespace {

using test::killAtRandom;
using test::rounds;
using test::SharedCounter;
using test::TemporaryFolder;

/// A picture's worth of bytes that all tell the version.
std::vector<std::uint8_t> versionBytes(int version) {
    std::vector<std::uint8_t> bytes(200'000 + static_cast<std::size_t>(version % 7) * 1000);
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        for (std::size_t b = 0; b < 4; ++b) {
            bytes[i + b] = static_cast<std::uint8_t>(version >> (8 * b));
        }
    }
    return bytes;
}

TEST(KilledWriter, LeavesAWholeFileNotOlderThanTheLastFinishedOne) {
    const TemporaryFolder folder;
    const std::string path = folder / "picture";
    SharedCounter finished;
    ASSERT_TRUE(writeFileSafely(path, versionBytes(0), Overwrite::Allow));
    std::mt19937 random(1);
    int interrupted = 0;
    for (int round = 0; round < rounds(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        killAtRandom(random, [&] {
            for (;;) {
                const int next = *finished + 1;
                if (!writeFileSafely(path, versionBytes(next), Overwrite::Allow)) ::_exit(1);
                *finished = next;
            }
        });
        const auto bytes = readWholeFile(path, 1 << 20);
        ASSERT_TRUE(bytes);
        const int last = *finished;
        ASSERT_TRUE(*bytes == versionBytes(last) || *bytes == versionBytes(last + 1));
        interrupted += folder.names().size() > 1 ? 1 : 0;
        removeLeftOvers(folder.path());  // what the next start does
        ASSERT_EQ(folder.names().size(), 1U);
    }
    std::printf("%d of %d kills met a write half way\n", interrupted, rounds());
    EXPECT_GT(interrupted, 0) << "no kill met a write half way";
}

TEST(KilledWriter, LeavesWholeSettingsWithEveryFinishedKey) {
    const TemporaryFolder folder;
    const std::string path = folder / "settings.json";
    SharedCounter finished;
    std::mt19937 random(2);
    for (int round = 0; round < rounds(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        killAtRandom(random, [&] {
            SettingsStore store(path);
            for (;;) {
                const int next = *finished + 1;
                store.setFloat("key" + std::to_string(next % 500), static_cast<float>(next));
                if (!store.synchronize()) ::_exit(1);
                *finished = next;
            }
        });
        const SettingsStore store(path);
        for (int i = std::max(1, *finished - 400); i <= *finished; ++i) {
            ASSERT_GE(store.floatForKey("key" + std::to_string(i % 500)), static_cast<float>(i));
        }
        for (const std::string& name : folder.names()) {
            ASSERT_EQ(name.find("damaged"), std::string::npos);
        }
        removeLeftOvers(folder.path());
        ASSERT_LE(folder.names().size(), 2U);  // the file and its lock
    }
    EXPECT_GT(*finished, 0) << "no write was finished, so nothing was tried";
}

}  // namespace
}  // namespace skarnel
