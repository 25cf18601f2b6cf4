// One thing to measure: named, checked before it is timed, with a memcpy for comparison.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "imaging/cgimage.h"

namespace skarnel::bench {

/// NoResult: there is nothing to time, as it should be.
enum class Verdict { Right, Wrong, NoResult };

struct Case {
    std::string name;  // "render turned 4000x3000"
    /// Of the memcpy beside it: (source + result) / 2. Asked for only when the case is measured.
    std::function<std::size_t()> bytes;
    double megapixels;  // of the source
    std::function<Verdict()> check;
    std::function<void()> run;
};

struct Measurement {
    std::string name;
    Verdict verdict = Verdict::Wrong;  // unless Right no time means anything
    double megapixels = 0;
    double bestMs = 0;    // processor time of the thread
    double medianMs = 0;  // wall time
    double memcpyMs = 0;  // processor time; the best one, between buffers that were touched before
    double ratio() const { return memcpyMs > 0 ? bestMs / memcpyMs : 0; }
};

/// Runs the case `repeats` times, each beside a memcpy, after one run that is not counted.
Measurement measure(const Case& tested, int repeats);

/// Smooth areas, edges and a little noise, as a photo has them; opaque.
CGImage photoLike(int width, int height);

std::vector<Case> renderCases(const std::vector<std::string>& sizes);
std::vector<Case> codecCases();

}  // namespace skarnel::bench
