// Why something went wrong, in the user's language.
#pragma once

#include <QString>

#include "util/log/result.h"

namespace skarnel {

/// The cause as it was given, translated where it is one of ours; the system's own words come as
/// the system says them. No full stop at the end.
QString causeText(const Error& error);

}  // namespace skarnel
