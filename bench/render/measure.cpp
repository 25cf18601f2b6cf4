#include <time.h>

#include <algorithm>
#include <cstring>

#include "bench_case.h"
#include "imaging/pixel_memory.h"

namespace skarnel::bench {
namespace {

double now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

template <typename Work>
double milliseconds(clockid_t clock, Work work) {
    const double start = now(clock);
    work();
    return now(clock) - start;
}

}  // namespace

Measurement measure(const Case& tested, int repeats) {
    Measurement result;
    result.name = tested.name;
    result.megapixels = tested.megapixels;
    result.verdict = tested.check();
    if (result.verdict != Verdict::Right) return result;
    const std::size_t bytes = tested.bytes();
    const auto from = allocatePixelMemory(bytes, PixelContents::Undefined);
    const auto to = allocatePixelMemory(bytes, PixelContents::Undefined);
    if (!from || !to) return result;
    std::memset(from.get(), 1, bytes);
    std::memset(to.get(), 2, bytes);
    tested.run();
    std::vector<double> times;
    std::vector<double> processor;
    std::vector<double> copies;
    for (int i = 0; i < repeats; ++i) {
        const double start = now(CLOCK_THREAD_CPUTIME_ID);
        times.push_back(milliseconds(CLOCK_MONOTONIC, tested.run));
        processor.push_back(now(CLOCK_THREAD_CPUTIME_ID) - start);
        copies.push_back(milliseconds(CLOCK_THREAD_CPUTIME_ID,
                                      [&] { std::memcpy(to.get(), from.get(), bytes); }));
    }
    std::sort(times.begin(), times.end());
    result.bestMs = *std::min_element(processor.begin(), processor.end());
    result.medianMs = times[times.size() / 2];
    result.memcpyMs = *std::min_element(copies.begin(), copies.end());
    return result;
}

}  // namespace skarnel::bench
