#include "qt/window.h"
#include <QWidget>
