// What the system says of a failed call.
#pragma once

#include <string>

namespace skarnel {

/// The system's own sentence for an error number: "No space left on device". It is English whatever
/// the locale is, since programs and logs read it and the catalogues know it by its English; the
/// C library's usual functions speak the user's language as soon as a toolkit has set the locale.
std::string describeError(int errorNumber);

}  // namespace skarnel
