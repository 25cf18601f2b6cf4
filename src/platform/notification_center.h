// Notifications: named messages from one object to whoever observes them.
#pragma once

#include <functional>
#include <string_view>

#include "platform/object.h"

namespace skarnel {

inline constexpr std::string_view NSColorPanelColorDidChangeNotification =
    "NSColorPanelColorDidChangeNotification";
inline constexpr std::string_view NSViewBoundsDidChangeNotification =
    "NSViewBoundsDidChangeNotification";
inline constexpr std::string_view NSViewFrameDidChangeNotification =
    "NSViewFrameDidChangeNotification";

/// One message. The object is its sender and may be null.
struct NSNotification {
    std::string_view name;
    const NSObject* object = nullptr;
};

/// Delivers synchronously, on the thread that posts, in the order of registration.
class NSNotificationCenter : public NSObject {
  public:
    using Handler = std::function<void(const NSNotification&)>;

    /// Registers `handler` on behalf of `observer` for notifications called `name`. A null
    /// `object` stands for any sender. `name` must be one of the constants (it is kept as it is).
    virtual void addObserver(const NSObject& observer, Handler handler, std::string_view name,
                             const NSObject* object) = 0;

    /// Takes back what `observer` registered for `name` and `object`; a null `object` stands for
    /// every registration of that name. May be called from within a handler.
    virtual void removeObserver(const NSObject& observer, std::string_view name,
                                const NSObject* object) = 0;

    virtual void postNotification(const NSNotification& notification) = 0;
};

}  // namespace skarnel
