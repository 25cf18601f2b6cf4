// The root of the toolkit's objects: what can send an action or be the subject of a notification.
#pragma once

#include <cstdint>

namespace skarnel {

/// Objects are compared by identity (their address) and never copied.
class NSObject {
  public:
    NSObject() = default;
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject() = default;

    /// The number by which a control, a menu item or a view is told from its neighbours; -1 for an
    /// object that was given none.
    virtual std::int64_t tag() const { return -1; }
};

/// What can have the keyboard focus of a window.
class NSResponder : public NSObject {};

}  // namespace skarnel
