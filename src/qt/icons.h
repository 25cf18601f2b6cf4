// The icons: one family of line drawings, tinted with the palette so that they suit any theme.
#pragma once

#include <QIcon>
#include <QString>

class QWidget;

namespace skarnel {

/// The drawing called `name`.svg of the icon resources. It follows the application's palette,
/// is sharp at any scale, and is an empty icon when the file is missing.
QIcon themedIcon(const QString& name);

/// The application's own icon.
QIcon applicationIcon();

}  // namespace skarnel
