// The surroundings that every test of the window is to have, however it is started.
#pragma once

#include <cstdlib>

namespace skarnel {

/// To be called before there is an application object. The platform and the resources may be
/// chosen from outside; language and style may not, since positions and texts follow from them.
inline void setTestEnvironment() {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::setenv("SKARNEL_RESOURCES", SKARNEL_TEST_RESOURCES, 0);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::unsetenv("LANGUAGE");
    ::setenv("QT_STYLE_OVERRIDE", "fusion", 1);
}

}  // namespace skarnel
