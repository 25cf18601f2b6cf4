// Keeps the wheel from changing a control that is merely passed over.
#pragma once

class QWidget;

namespace skarnel {

/// Leaves the wheel to the parent while `control` has no focus, and does not let it take the focus:
/// only a click or a key does.
void guardFromWheel(QWidget& control);

}  // namespace skarnel
