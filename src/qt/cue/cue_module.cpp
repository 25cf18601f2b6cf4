// Plays one short sound through the sound server.
#include "qt/cue/cue_module.h"

#include <pulse/error.h>
#include <pulse/simple.h>
#include <sndfile.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr sf_count_t kMostFrames = 48000 * 30;  // half a minute is no cue any more

struct Samples {
    std::vector<std::int16_t> values;  // interleaved
    int channels = 0;
    int rate = 0;
};

/// A file in memory, as libsndfile asks for it.
struct MemoryFile {
    const std::uint8_t* bytes;
    sf_count_t size;
    sf_count_t place = 0;
};

SF_VIRTUAL_IO memoryCalls() {
    SF_VIRTUAL_IO calls{};
    calls.get_filelen = [](void* file) { return static_cast<MemoryFile*>(file)->size; };
    calls.tell = [](void* file) { return static_cast<MemoryFile*>(file)->place; };
    calls.seek = [](sf_count_t offset, int whence, void* file) {
        auto& memory = *static_cast<MemoryFile*>(file);
        const sf_count_t base = whence == SEEK_CUR   ? memory.place
                                : whence == SEEK_END ? memory.size
                                                     : 0;
        memory.place = std::clamp<sf_count_t>(base + offset, 0, memory.size);
        return memory.place;
    };
    calls.read = [](void* to, sf_count_t count, void* file) {
        auto& memory = *static_cast<MemoryFile*>(file);
        const sf_count_t given = std::clamp<sf_count_t>(memory.size - memory.place, 0, count);
        std::memcpy(to, memory.bytes + memory.place, static_cast<std::size_t>(given));
        memory.place += given;
        return given;
    };
    calls.write = [](const void*, sf_count_t, void*) { return sf_count_t{0}; };
    return calls;
}

Samples decode(const std::uint8_t* bytes, std::size_t count) {
    MemoryFile memory{bytes, static_cast<sf_count_t>(count)};
    SF_VIRTUAL_IO calls = memoryCalls();
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(
        sf_open_virtual(&calls, SFM_READ, &info, &memory), sf_close);
    if (file == nullptr || info.channels < 1 || info.channels > 8) return {};
    const sf_count_t frames = std::clamp<sf_count_t>(info.frames, 0, kMostFrames);
    Samples samples;
    samples.values.resize(static_cast<std::size_t>(frames * info.channels));
    const sf_count_t got = sf_readf_short(file.get(), samples.values.data(), frames);
    samples.values.resize(static_cast<std::size_t>(std::max<sf_count_t>(0, got) * info.channels));
    samples.channels = info.channels;
    samples.rate = info.samplerate;
    return samples;
}

/// Shared by the caller and the playing thread; whoever is last frees it.
struct Playing {
    Samples samples;
    std::mutex mutex;
    std::condition_variable finished;
    bool stop = false;
    bool done = false;

    bool stopped() {
        const std::lock_guard lock(mutex);
        return stop;
    }
};

void play(Playing& playing) {
    const Samples& samples = playing.samples;
    const pa_sample_spec format{PA_SAMPLE_S16NE, static_cast<std::uint32_t>(samples.rate),
                                static_cast<std::uint8_t>(samples.channels)};
    if (!pa_sample_spec_valid(&format)) return;
    // A tenth of a second is kept ahead, so that stopping is heard at once.
    pa_buffer_attr buffer;
    std::memset(&buffer, 0xFF, sizeof buffer);  // the server's own choice for the rest
    buffer.tlength = static_cast<std::uint32_t>(samples.rate / 10 * samples.channels * 2);
    const std::unique_ptr<pa_simple, void (*)(pa_simple*)> server(
        pa_simple_new(nullptr, "Skarnel", PA_STREAM_PLAYBACK, nullptr, "Copied", &format, nullptr,
                      &buffer, nullptr),
        [](pa_simple* open) {
            if (open != nullptr) pa_simple_free(open);
        });
    if (server == nullptr) return;  // no sound device: silent
    const std::size_t piece = static_cast<std::size_t>(samples.rate / 20 * samples.channels);
    for (std::size_t at = 0; at < samples.values.size() && !playing.stopped(); at += piece) {
        const std::size_t now = std::min(piece, samples.values.size() - at);
        if (pa_simple_write(server.get(), samples.values.data() + at, now * 2, nullptr) < 0) return;
    }
    if (!playing.stopped()) pa_simple_drain(server.get(), nullptr);
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void* skarnelCueStart(const std::uint8_t* bytes,
                                                             std::size_t count) {
    auto playing = std::make_shared<Playing>();
    playing->samples = decode(bytes, count);
    if (playing->samples.values.empty()) return nullptr;
    std::thread([playing] {
        play(*playing);
        const std::lock_guard lock(playing->mutex);
        playing->done = true;
        playing->finished.notify_all();
    }).detach();
    return new std::shared_ptr<Playing>(playing);
}

__attribute__((visibility("default"))) void skarnelCueStop(void* handle, bool wait) {
    const std::unique_ptr<std::shared_ptr<Playing>> held(
        static_cast<std::shared_ptr<Playing>*>(handle));
    if (held == nullptr) return;
    Playing& playing = **held;
    std::unique_lock lock(playing.mutex);
    playing.stop = true;
    if (!wait) return;
    // A sound server that does not answer must not hold up the end of the program.
    playing.finished.wait_for(lock, std::chrono::milliseconds(250), [&] { return playing.done; });
}
}
