// The pointer says that the program is at work and takes no orders.
#pragma once

#include <QGuiApplication>

namespace skarnel {

/// Shown while it lives. Nothing is handled meanwhile, so that no other picture can come between.
class WaitCursor {
  public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
};

}  // namespace skarnel
