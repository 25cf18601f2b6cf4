#include "cli/sweep.h"

#include <algorithm>
#include <chrono>
#include <new>

#include "cli/canvas_size.h"
#include "cli/interrupt.h"
#include "cli/memory_need.h"
#include "cli/plan.h"
#include "cli/preview.h"
#include "imaging/cgcontext.h"
#include "imaging/io/animation.h"
#include "util/log/message.h"

namespace skarnel::cli {
namespace {

PixelSize sizeOf(const CGImage& image) {
    return {image.width(), image.height()};
}

/// Once, when a preview is asked for.
Result<void> shrinkSource(DecodedImage& picture, const SweepRequest& request) {
    if (!request.settings.preview) return {};
    const std::optional<CGImage> shrunk = shrinkToFit(picture.image, *request.settings.preview);
    if (!shrunk) return {ErrorCode::OutOfMemory, "There is not enough memory for the preview"};
    picture.image = *shrunk;
    return {};
}

/// Looking first saves the work; the writing itself looks again, in one step with the naming.
bool stands(const std::string& path, const SweepRequest& request) {
    return request.settings.overwrite == Overwrite::Refuse && isThere(path);
}

/// One frame at the size of all.
Result<ReflectionResult> renderFrame(const CGImage& source, const SweepRequest& request,
                                     PixelSize size, int index) {
    JobSettings settings = request.settings;
    settings.preview.reset();  // the source is shrunk already; the frame is, after the centring
    settings.render = frameSettings(settings.render, request.sweep, index);
    Result<ReflectionResult> rendered = renderWithin(source, settings);
    if (!rendered) return rendered;
    std::optional<CGImage> frame = centredIn(rendered->image, size);
    if (frame && request.settings.preview) frame = shrinkToFit(*frame, *request.settings.preview);
    if (!frame) return {ErrorCode::OutOfMemory, "There is not enough memory for the frame"};
    return ReflectionResult{*frame, rendered->turn};
}

constexpr int kAnimationPercent = 80;  // quality of WebP where none is asked for
constexpr const char* kUnturned =
    marked("The turn could not be made; the frame was written without it");

/// Does `work` with the clock running and memory's end caught.
template <typename Work>
JobReport timed(const std::string& input, Work work) {
    const auto start = std::chrono::steady_clock::now();
    JobReport report;
    report.input = input;
    try {
        work(report);
    } catch (const std::bad_alloc&) {
        report.error = marked("There is not enough memory");
    }
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    report.milliseconds = taken.count();
    return report;
}

/// The picture and the frames' size, or none after a report of the reason.
struct Prepared {
    DecodedImage picture;  // shrunk for a preview
    PixelSize inputSize;   // of the picture as it was
    PixelSize size;
};

std::optional<Prepared> prepare(const SweepRequest& request,
                                const std::function<void(const JobReport&)>& report) {
    const auto fail = [&](const std::string& cause) {
        JobReport failure;
        failure.input = request.job.input;
        failure.error = cause;
        report(failure);
        return std::nullopt;
    };
    Result<DecodedImage> picture = loadPicture(request.job, request.settings.limits);
    if (!picture) return fail(picture.error().message);
    const PixelSize inputSize = sizeOf(picture->image);
    if (const Result<void> shrunk = shrinkSource(*picture, request); !shrunk) {
        return fail(shrunk.error().message);
    }
    const std::optional<PixelSize> size =
        largestFrame(sizeOf(picture->image), request.settings.render, request.sweep);
    if (!size) return fail(marked("These settings leave no picture of a possible size"));
    return Prepared{*std::move(picture), inputSize, *size};
}

/// An animation of photos without loss takes hundreds of times the room of one picture.
ImageProperties animationProperties(const Prepared& prepared, const SweepRequest& request) {
    ImageProperties properties = outputProperties(prepared.picture.properties, request.settings);
    properties.try_emplace(std::string(kPropertyLossyQuality), kAnimationPercent / 100.0);
    return properties;
}

JobReport lostFrame(const SweepRequest& request, const std::string& cause) {
    return timed(request.job.input, [&](JobReport& report) { report.error = cause; });
}

/// What each frame takes while it is rendered and encoded.
std::function<std::uint64_t(std::size_t)> memoryOfFrames(const SweepRequest& request,
                                                         const Prepared& prepared,
                                                         std::optional<int> quality) {
    return [&request, &prepared, quality](std::size_t index) {
        return memoryOfFrame(
            sizeOf(prepared.picture.image),
            frameSettings(request.settings.render, request.sweep, static_cast<int>(index)),
            {request.job.type, quality});
    };
}

/// The frames of an animation: rendered and encoded by all workers, put together in their order.
class Animation {
  public:
    Animation(const SweepRequest& request, const Prepared& prepared)
        : request_(request), prepared_(prepared) {
        const PixelSize size = request.settings.preview
                                   ? sizeToFit(prepared.size, *request.settings.preview)
                                   : prepared.size;
        encoder_ = AnimationEncoder::create(request.job.type, size.width, size.height,
                                            request.frameMilliseconds,
                                            animationProperties(prepared, request));
        if (encoder_) report_.outputSize = size;
    }

    /// The file, or the first failure, which ends it. The report has what else is to be said.
    Result<Bytes> make(JobReport& report, const std::function<void(std::size_t)>& progress) {
        if (!encoder_) return {ErrorCode::Unsupported, causeOfNoEncoder()};
        PoolShare share = request_.share;
        share.ahead = std::size_t{2} * static_cast<std::size_t>(share.workers);
        runPool(static_cast<std::size_t>(request_.sweep.count), share,
                {[&](std::size_t index) { return frame(index); },
                 [&](const JobReport& each) { take(each); }, progress,
                 memoryOfFrames(request_, prepared_,
                                request_.settings.format.quality.value_or(kAnimationPercent)),
                 [&] { return failure_.has_value(); }},
                [&](std::size_t, const std::string& cause) { return lostFrame(request_, cause); });
        if (failure_) return *failure_;
        report.outputSize = report_.outputSize;
        report.error = report_.error;
        return encoder_->finish();
    }

  private:
    const char* causeOfNoEncoder() const {
        return canBeAnimated(request_.job.type)
                   ? marked("There is not enough memory, or a side has more than 16383 pixels")
                   : marked("Only PNG and WebP can be animated");
    }

    /// In a worker. One that has just made the frame before still has it.
    JobReport frame(std::size_t index) {
        const int number = static_cast<int>(index);
        return timed(request_.job.input, [&](JobReport& report) {
            std::optional<CGImage> before;
            if (encoder_->usesFrameBefore() && number > 0) {
                before = number - 1 == lastNumber_ ? last_ : imageOf(number - 1, report);
                if (!before) return;
            }
            last_ = imageOf(number, report);
            lastNumber_ = number;
            if (!last_) return;
            Result<Bytes> bytes = encoder_->encode(*last_, before ? &*before : nullptr);
            if (bytes) {
                report.made = *std::move(bytes);
            } else {
                report.error = bytes.error().message;
            }
        });
    }

    /// None after telling why.
    std::optional<CGImage> imageOf(int number, JobReport& report) const {
        Result<ReflectionResult> rendered =
            renderFrame(prepared_.picture.image, request_, prepared_.size, number);
        if (!rendered) {
            report.error = rendered.error().message;
            return std::nullopt;
        }
        if (rendered->turn == TurnOutcome::Unturned) report.error = kUnturned;
        return rendered->image;
    }

    /// In their order; what comes after a failure is of no use.
    void take(const JobReport& frame) {
        if (failure_) return;
        if (frame.made.empty()) {
            failure_ = Error{ErrorCode::Failed, frame.error.value_or("")};
        } else if (const Result<void> added = encoder_->add(frame.made); !added) {
            failure_ = added.error();
        }
        if (frame.error) report_.error = frame.error;
    }

    const SweepRequest& request_;
    const Prepared& prepared_;
    std::unique_ptr<AnimationEncoder> encoder_;
    std::optional<CGImage> last_;  // a worker's own, with its number
    int lastNumber_ = -1;
    std::optional<Error> failure_;
    JobReport report_;
};

}  // namespace

bool canBeAnimated(std::string_view type) {
    return type == kUTTypePNG || type == kUTTypeWebP;
}

RenderSettings frameSettings(const RenderSettings& settings, const Sweep& sweep, int index) {
    RenderSettings frame = settings;
    const double position = static_cast<double>(index) / (sweep.count - 1);
    const double from = sweep.from;
    const double to = sweep.to;
    frame.numbers[sweep.setting] =
        index == sweep.count - 1 ? sweep.to : static_cast<float>(from + (to - from) * position);
    return frame;
}

std::optional<CGImage> centredIn(const CGImage& picture, PixelSize size) {
    if (sizeOf(picture) == size) return picture;
    const std::unique_ptr<CGContext> context = CGContext::create(size.width, size.height);
    if (!context) return std::nullopt;
    const int left = (size.width - picture.width()) / 2;
    const int bottom = (size.height - picture.height()) / 2;
    context->setCompositeOperation(CompositeOperation::Copy);
    context->drawImage(
        picture, {double(left), double(bottom), double(picture.width()), double(picture.height())});
    return std::move(*context).takeImage();
}

std::optional<PixelSize> largestFrame(PixelSize picture, const RenderSettings& settings,
                                      const Sweep& sweep) {
    PixelSize largest;
    for (int index = 0; index < sweep.count; ++index) {
        const auto sizes = renderSizes(picture, frameSettings(settings, sweep, index));
        if (!sizes) continue;  // this frame will report why
        largest.width = std::max(largest.width, sizes->result.width);
        largest.height = std::max(largest.height, sizes->result.height);
    }
    return largest.width > 0 ? std::optional(largest) : std::nullopt;
}

void runSweep(const SweepRequest& request, const std::function<void(const JobReport&)>& report,
              const std::function<void(std::size_t)>& progress) {
    const std::optional<Prepared> prepared = prepare(request, report);
    if (!prepared) return;
    const auto oneFrame = [&](std::size_t index) {
        return timed(request.job.input, [&](JobReport& frameReport) {
            frameReport.inputSize = prepared->inputSize;
            const int number = static_cast<int>(index);
            Job job = request.job;
            job.output = frameName(job.output, number + 1, request.sweep.count);
            if (stands(job.output, request)) {
                frameReport.error = alreadyThere(job.output);
                return;
            }
            const auto frame =
                renderFrame(prepared->picture.image, request, prepared->size, number);
            if (!frame) {
                frameReport.error = frame.error().message;
                return;
            }
            const Result<void> written = encodeAndWrite(
                frame->image, job, outputProperties(prepared->picture.properties, request.settings),
                request.settings.overwrite, frameReport);
            if (!written) {
                frameReport.error = job.output + ": " + written.error().message;
                return;
            }
            frameReport.output = job.output;
            frameReport.outputSize = sizeOf(frame->image);
            if (frame->turn == TurnOutcome::Unturned) frameReport.error = kUnturned;
        });
    };
    const auto lost = [&](std::size_t, const std::string& cause) {
        return lostFrame(request, cause);
    };
    runPool(static_cast<std::size_t>(request.sweep.count), request.share,
            {oneFrame, report, progress,
             memoryOfFrames(request, *prepared, request.settings.format.quality)},
            lost);
}

void runAnimation(const SweepRequest& request, const std::function<void(const JobReport&)>& report,
                  const std::function<void(std::size_t)>& progress) {
    if (stands(request.job.output, request)) {
        return report(timed(request.job.input, [&](JobReport& refused) {
            refused.error = alreadyThere(request.job.output);
        }));
    }
    const std::optional<Prepared> prepared = prepare(request, report);
    if (!prepared) return;
    report(timed(request.job.input, [&](JobReport& whole) {
        whole.inputSize = prepared->inputSize;
        const Result<Bytes> bytes = Animation(request, *prepared).make(whole, progress);
        if (!bytes) {
            whole.error = bytes.error().message;
            return;
        }
        const UninterruptedScope untilNamed;
        const Result<void> written =
            writeFileSafely(request.job.output, *bytes, request.settings.overwrite);
        if (written) {
            whole.output = request.job.output;
        } else {
            whole.error = request.job.output + ": " + written.error().message;
        }
    }));
}

}  // namespace skarnel::cli
