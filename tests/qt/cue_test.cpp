// The completion cue on a sound server of the test's own: this program defines the four functions
// that the sound module calls, and its own definitions come before those of the library.
#include <gtest/gtest.h>
#include <pulse/simple.h>

#include <QAction>
#include <cmath>
#include <condition_variable>
#include <cstring>
#include <mutex>

#include "application_fixture.h"
#include "qt/cue_player.h"
#include "storage/whole_file.h"
#include "util/resources/resource_path.h"

namespace {

/// What a sound server was sent. Streams are written on the module's own threads.
struct Stream {
    pa_sample_spec format{};
    std::vector<std::uint8_t> bytes;
    int writes = 0;
    bool drained = false;
    bool freed = false;
};

struct Server {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::unique_ptr<Stream>> streams;
    int asked = 0;
    bool isThere = true;
    bool holds = false;  // writes wait
    bool fails = false;  // writes fail

    template <typename Condition>
    bool waitFor(Condition condition) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(20), condition);
    }
    bool ended(std::size_t count) {
        return waitFor([&] {
            return streams.size() == count && std::all_of(streams.begin(), streams.end(),
                                                          [](const auto& s) { return s->freed; });
        });
    }
    void set(bool Server::*flag, bool value) {
        const std::lock_guard lock(mutex);
        this->*flag = value;
        changed.notify_all();
    }
};

Server& server() {
    static auto* one = new Server;  // threads may outlive main by a moment
    return *one;
}

Stream& streamOf(pa_simple* handle) {
    return *reinterpret_cast<Stream*>(handle);
}

}  // namespace

extern "C" {

pa_simple* pa_simple_new(const char*, const char*, pa_stream_direction_t, const char*, const char*,
                         const pa_sample_spec* format, const pa_channel_map*, const pa_buffer_attr*,
                         int*) {
    const std::lock_guard lock(server().mutex);
    ++server().asked;
    server().changed.notify_all();
    if (!server().isThere) return nullptr;
    server().streams.push_back(std::make_unique<Stream>());
    server().streams.back()->format = *format;
    return reinterpret_cast<pa_simple*>(server().streams.back().get());
}

int pa_simple_write(pa_simple* handle, const void* data, std::size_t count, int*) {
    std::unique_lock lock(server().mutex);
    Stream& stream = streamOf(handle);
    ++stream.writes;
    server().changed.notify_all();
    server().changed.wait(lock, [] { return !server().holds; });
    if (server().fails) return -1;
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    stream.bytes.insert(stream.bytes.end(), bytes, bytes + count);
    return 0;
}

int pa_simple_drain(pa_simple* handle, int*) {
    const std::lock_guard lock(server().mutex);
    streamOf(handle).drained = true;
    return 0;
}

void pa_simple_free(pa_simple* handle) {
    const std::lock_guard lock(server().mutex);
    streamOf(handle).freed = true;
    server().changed.notify_all();
}
}

namespace skarnel {
namespace {

/// An AIFF file read by its chunks, apart from the library that the module stands on.
struct Aiff {
    int channels = 0;
    double rate = 0;  // frames a second
    std::vector<std::int16_t> samples;
};

Aiff readAiff(const Bytes& file) {
    const auto number = [&](std::size_t at, int bytes) {
        std::uint64_t value = 0;
        for (int i = 0; i < bytes; ++i) value = value << 8 | file[at + static_cast<std::size_t>(i)];
        return value;
    };
    Aiff aiff;
    for (std::size_t at = 12; at + 8 <= file.size();) {
        const std::size_t size = number(at + 4, 4);
        const std::string_view name(reinterpret_cast<const char*>(&file[at]), 4);
        if (name == "COMM") {
            aiff.channels = static_cast<int>(number(at + 8, 2));
            EXPECT_EQ(number(at + 14, 2), 16U) << "bits a sample";
            // Ten bytes: the exponent with a bias of 16383, then 64 bits with 63 after the point.
            aiff.rate = std::ldexp(static_cast<double>(number(at + 18, 8)),
                                   static_cast<int>(number(at + 16, 2)) - 16383 - 63);
        }
        if (name == "SSND")
            for (std::size_t i = at + 16; i + 1 < at + 8 + size; i += 2)
                aiff.samples.push_back(static_cast<std::int16_t>(number(i, 2)));
        at += 8 + size + size % 2;
    }
    return aiff;
}

class CueTest : public ApplicationTest {
  protected:
    void SetUp() override {
        server().set(&Server::isThere, true);
        server().set(&Server::holds, false);
        server().set(&Server::fails, false);
        const std::lock_guard lock(server().mutex);
        server().streams.clear();
        server().asked = 0;
    }

    static std::shared_ptr<QtSound> harp(bool muted = false) {
        return QtSound::read(findResource("harp.aif").value(), [muted] { return muted; });
    }
};

TEST_F(CueTest, EverySampleOfTheFileIsPlayedAtItsRate) {
    const auto file = readWholeFile(findResource("harp.aif").value(), 1 << 24);
    ASSERT_TRUE(file);
    const Aiff aiff = readAiff(*file);
    ASSERT_GE(static_cast<double>(aiff.samples.size()) / aiff.channels / aiff.rate, 1.0);
    const auto sound = harp();
    sound->play();
    ASSERT_TRUE(server().ended(1));
    const Stream& stream = *server().streams[0];
    EXPECT_EQ(stream.format.rate, aiff.rate);
    EXPECT_EQ(stream.format.channels, aiff.channels);
    EXPECT_EQ(stream.format.format, PA_SAMPLE_S16NE);
    ASSERT_EQ(stream.bytes.size(), aiff.samples.size() * 2);
    EXPECT_EQ(std::memcmp(stream.bytes.data(), aiff.samples.data(), stream.bytes.size()), 0);
    EXPECT_TRUE(stream.drained);
}

TEST_F(CueTest, PlayReturnsAtOnceAndANewPlayEndsTheOneBefore) {
    server().set(&Server::holds, true);
    const auto sound = harp();
    sound->play();  // returns although the server takes nothing
    ASSERT_TRUE(server().waitFor(
        [] { return server().streams.size() == 1 && server().streams[0]->writes == 1; }));
    sound->play();
    ASSERT_TRUE(server().waitFor([] { return server().streams.size() == 2; }));
    server().set(&Server::holds, false);
    ASSERT_TRUE(server().ended(2));
    EXPECT_EQ(server().streams[0]->writes, 1);
    EXPECT_FALSE(server().streams[0]->drained);
    EXPECT_TRUE(server().streams[1]->drained);
}

TEST_F(CueTest, MutedItIsNotEvenBegun) {
    harp(true)->play();
    EXPECT_EQ(server().asked, 0);
}

TEST_F(CueTest, WithoutASoundServerItIsSilent) {
    server().set(&Server::isThere, false);
    const auto sound = harp();
    sound->play();
    EXPECT_TRUE(server().waitFor([] { return server().asked == 1; }));
    sound->play();
    EXPECT_TRUE(server().waitFor([] { return server().asked == 2; }));
    EXPECT_TRUE(server().streams.empty());
}

TEST_F(CueTest, AServerThatGoesAwayEndsIt) {
    server().set(&Server::fails, true);
    const auto sound = harp();
    sound->play();
    ASSERT_TRUE(server().ended(1));
    EXPECT_EQ(server().streams[0]->writes, 1);
    EXPECT_FALSE(server().streams[0]->drained);
}

TEST_F(CueTest, TheEndOfTheProgramDoesNotWaitForAServerThatHangs) {
    server().set(&Server::holds, true);
    auto sound = harp();
    sound->play();
    ASSERT_TRUE(server().waitFor(
        [] { return server().streams.size() == 1 && server().streams[0]->writes == 1; }));
    sound.reset();  // would never return if it waited for the end of the write
    server().set(&Server::holds, false);
    ASSERT_TRUE(server().ended(1));
    EXPECT_EQ(server().streams[0]->writes, 1);
}

TEST_F(CueTest, AFileThatIsNoSoundPlaysNothing) {
    QtSound({1, 2, 3, 4}, {}).play();
    QtSound({}, {}).play();
    EXPECT_EQ(server().asked, 0);
    EXPECT_EQ(QtSound::read("/nowhere/harp.aif", {}), nullptr);
    EXPECT_EQ(modulePath("libskarnel-no-such-module.so"), "");
}

TEST_F(CueTest, ACopyPlaysItUnlessTheMenuHasItMuted) {
    start();
    app->actions().copy->trigger();
    ASSERT_TRUE(server().ended(1));
    EXPECT_TRUE(server().streams[0]->drained);
    app->actions().playCue->setChecked(false);
    app->actions().copy->trigger();
    app->actions().copyAsPng->trigger();
    EXPECT_EQ(server().asked, 1);
    app->actions().playCue->setChecked(true);
    app->actions().copyAsPng->trigger();
    EXPECT_TRUE(server().ended(2));
}

TEST_F(CueTest, ACopyThatFailsPlaysNothing) {
    start();
    app->controller().image.reset();
    app->actions().copy->trigger();
    app->actions().copyAsPng->trigger();
    EXPECT_EQ(server().asked, 0);
}

}  // namespace
}  // namespace skarnel
