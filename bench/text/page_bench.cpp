// The two scans over a captured page, each beside a memcpy of the page in the same run.
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <vector>

#include "imaging/cgimage.h"
#include "imaging/nsimage/nsimage.h"
#include "textimaging/kernels/page_scan.h"
#include "textimaging/trimming.h"

namespace {

using namespace skarnel;

constexpr int kWidth = 6000;
constexpr int kHeight = 4000;
constexpr int kRuns = 15;

/// Processor time of this thread in milliseconds: what a busy machine disturbs least.
double now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

double medianOf(const std::function<void()>& act) {
    std::vector<double> times;
    for (int i = 0; i < kRuns; ++i) {
        const double before = now();
        act();
        times.push_back(now() - before);
    }
    std::nth_element(times.begin(), times.begin() + kRuns / 2, times.end());
    return times[kRuns / 2];
}

/// A black page with a white block far from its edges, so that both scans walk most of it.
CGImage page() {
    auto pixels = PixelBuffer::uninitialized(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y) {
        std::uint8_t* row = pixels->view().row(y);
        for (int x = 0; x < kWidth; ++x, row += 4) {
            const bool block = x >= 2900 && x < 3100 && y >= 1950 && y < 2050;
            row[0] = row[1] = row[2] = block ? 255 : 0;
            row[3] = 255;
        }
    }
    return CGImage(*std::move(pixels));
}

void print(const char* name, double milliseconds, double copy) {
    std::printf("%-12s %8.2f ms  %5.2f x memcpy  %s\n", name, milliseconds, milliseconds / copy,
                milliseconds < 3 * copy ? "" : "TOO SLOW");
}

}  // namespace

int main() {
    const CGImage image = page();
    const NSBitmapImageRep bitmap(image);
    const CGRect expected{2900, 1950, 200, 100};
    if (!(Trimming::usedRect(bitmap, 10) == expected)) {
        std::puts("the used rectangle is wrong; nothing is timed");
        return 1;
    }
    auto target = PixelBuffer::zeroed(kWidth, kHeight);
    const auto knockOut = [&] {
        for (int y = 0; y < kHeight; ++y) {
            kernels::knockOutRow(target->view().row(y), image.pixels().row(y), {0, 0, 0, 0},
                                 kWidth);
        }
    };
    knockOut();
    const std::uint8_t* ground = target->view().row(0);
    const std::uint8_t* block = target->view().row(2000) + std::ptrdiff_t{4} * 3000;
    if (ground[3] != 0 || block[3] != 255 || block[0] != 255) {
        std::puts("the knock-out is wrong; nothing is timed");
        return 1;
    }
    const double copy = medianOf([&] {
        std::memcpy(target->view().bytes, image.pixels().bytes, std::size_t{4} * kWidth * kHeight);
    });
    std::printf("page %d x %d, median of %d\n", kWidth, kHeight, kRuns);
    print("memcpy", copy, copy);
    print("knock-out", medianOf(knockOut), copy);
    print("used rect", medianOf([&] { (void)Trimming::usedRect(bitmap, 10); }), copy);
    return 0;
}
