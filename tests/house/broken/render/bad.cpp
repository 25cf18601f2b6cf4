#include <QWidget>
#include "qt/window.h"
const char* cause = std::strerror(2);
