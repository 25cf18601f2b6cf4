// The version of the installed utility library.
#pragma once

namespace skarnel {

/// "major.minor.patch" of the library that the program runs with.
const char* skarnelUtilVersion();

}  // namespace skarnel
