// Why a text became no picture, as the page renderer tells it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "util/log/result.h"

namespace skarnel {

/// What a command puts into the log, which gets it all the same.
std::string loggedWhile(const std::function<void()>& command);

/// The last line in which the page renderer refuses a page or gives it up; none where it does not.
std::optional<Error> whyNoPage(const std::string& logged);

}  // namespace skarnel
