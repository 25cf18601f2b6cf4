// What the page renderer needs of its process before it starts.
#pragma once

#include <functional>
#include <string_view>

namespace skarnel {

/// Sets the renderer's switches: software drawing, grey anti-aliasing with whole-pixel glyphs,
/// sRGB, no network in the background, no shared-memory folder; the renderer's own sandbox, unless
/// the user is root or the system forbids it (logged). The platform is the one without a display,
/// and its scale 1. Before the application object, once.
void prepareRenderer(const std::function<void(std::string_view)>& log);

}  // namespace skarnel
