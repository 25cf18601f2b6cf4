// What the pictures of the library's pages are made of: a test card, digits, frames.
#pragma once

#include "imaging/nscolor.h"
#include "imaging/nsimage/nsimage.h"
#include "util/image/focus.h"

namespace skarnel::library {

/// A card with sky, sun, hills and a coloured corner each, so that it shows what was cut off,
/// mirrored or stretched. Opaque.
NSImage testCard(int width, int height);

NSColor gray(double white);

/// Writes a whole number in small block digits of the current colour; (x, y) is the lower left
/// corner, a digit is 6 x 10 points.
void drawNumber(NSGraphicsContext& context, int number, CGPoint at);

/// Draws the whole image into the rectangle.
void drawInto(NSGraphicsContext& context, const NSImage& image, CGRect rect);

}  // namespace skarnel::library
