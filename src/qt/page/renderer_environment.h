// What the page renderer needs of the process before it starts.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

class QApplication;

namespace skarnel {

/// Sets the renderer's switches: software drawing, grey anti-aliasing with whole-pixel glyphs,
/// sRGB, no network in the background, no shared-memory folder; the renderer's own sandbox, unless
/// the user is root or the system forbids it (logged). Before the first web view, once.
void prepareRenderer(const std::function<void(std::string_view)>& log);

/// An application object that needs no display, for a program that has none; null when there is
/// one already.
std::unique_ptr<QApplication> makeApplicationIfMissing();

}  // namespace skarnel
