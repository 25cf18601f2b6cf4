// The event loop and its timers.
#pragma once

#include <functional>
#include <limits>
#include <string_view>

#include "platform/object.h"

namespace skarnel {

inline constexpr std::string_view NSDefaultRunLoopMode = "NSDefaultRunLoopMode";

/// A moment that never comes, in seconds from now.
inline constexpr double kDistantFuture = std::numeric_limits<double>::infinity();

/// Owned by the run loop that it is scheduled on, until it has fired (when it does not repeat) or
/// was cancelled; a pointer to it ends there.
class NSTimer : public NSObject {
  public:
    /// Cancels the timer; it never fires again.
    virtual void invalidate() = 0;
};

class NSRunLoop : public NSObject {
  public:
    using TimerAction = std::function<void(NSTimer& timer)>;

    /// Schedules a timer in the default mode; never null.
    virtual NSTimer* scheduledTimerWithTimeInterval(double seconds, TimerAction action,
                                                    bool repeats) = 0;

    /// Waits for one round of events, at most `beforeDate` seconds, and handles them. False, at
    /// once, when the loop has no source that could ever deliver one.
    virtual bool runMode(std::string_view mode, double beforeDate) = 0;
};

}  // namespace skarnel
