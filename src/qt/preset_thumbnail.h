// The small picture of a look.
#pragma once

#include <QImage>
#include <optional>

#include "imaging/cgimage.h"
#include "recipe/presets.h"

namespace skarnel {

/// The source drawn over a bitmap of another size, each side at least 1. None without memory.
std::optional<CGImage> resizedPicture(const CGImage& source, int width, int height);

/// The picture of one look: `source` is small already. The window stands still while it is made, so
/// that a look whose result would be large all the same (the fields take ten times the picture and
/// more) is made of a smaller source. Null where the look gives no result.
QImage presetThumbnail(const CGImage& source, const SettingNumbers& settings);

}  // namespace skarnel
