// One picture with one setting running through a range: numbered frames, or an animation.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/job.h"
#include "cli/options.h"
#include "cli/pool.h"

namespace skarnel::cli {

/// Whether the format can hold an animation: PNG and WebP.
bool canBeAnimated(std::string_view type);

/// The settings of frame `index` of the sweep, the first and the last exactly at its ends.
RenderSettings frameSettings(const RenderSettings& settings, const Sweep& sweep, int index);

/// The picture in the middle of a transparent one of the given size, moved by whole pixels; the
/// very picture when it has that size. None without memory.
std::optional<CGImage> centredIn(const CGImage& picture, PixelSize size);

/// The smallest size that holds every frame, before --preview shrinks them.
std::optional<PixelSize> largestFrame(PixelSize picture, const RenderSettings& settings,
                                      const Sweep& sweep);

struct SweepRequest {
    Job job;  // its output is the name that the frames' numbers are put into
    JobSettings settings;
    Sweep sweep;
    PoolShare share = {};
    int frameMilliseconds = 40;  // of an animation
};

/// Renders the frames on all workers and hands on a report for each. As an animation they become
/// one file, and there is one report; a WebP has losses there unless a quality asks for others,
/// since an animation of photos without loss takes hundreds of times the room of a picture. What
/// would replace a file is refused before the work.
void runSweep(const SweepRequest& request, const std::function<void(const JobReport&)>& report,
              const std::function<void(std::size_t done)>& progress);
void runAnimation(const SweepRequest& request, const std::function<void(const JobReport&)>& report,
                  const std::function<void(std::size_t done)>& progress);

}  // namespace skarnel::cli
