// The category Dragging of the image class: the faded picture that is dragged about.
#pragma once

#include <optional>

#include "imaging/nsimage/nsimage.h"

namespace skarnel::Dragging {

/// A copy, made through the TIFF form and never cached, with every alpha halved. The argument is
/// not used: the fade is always one half, on purpose. None when the image has no TIFF form.
std::optional<NSImage> imageWithAlphaComponent(const NSImage& image, float alpha);

}  // namespace skarnel::Dragging
