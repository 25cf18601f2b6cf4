// The colours of printing inks, for CMYK pictures that do not say what their inks look like.
#pragma once

namespace skarnel::io {

/// Makes a CMYK input profile in memory (an lcms profile handle that the caller closes; null
/// without memory). Nothing is read from disk, so it works behind the decoder's wall.
///
/// Offset printing on coated paper by the Neugebauer equations: a halftone is a patchwork of the
/// sixteen overprints of the solid inks, each covering the share that independent dots give it
/// (Demichel), and its colour is the mean of theirs. The overprints' CIELAB values are those that
/// ISO 12647-2 gives for gloss-coated paper; dots print larger than they are on the plate by the
/// standard's tone value increase.
void* makeInkProfile();

}  // namespace skarnel::io
