#include <QWidget>
#include "qt/window.h"
