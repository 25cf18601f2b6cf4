// How long a named pipe waits for its other end.
#pragma once

#include <chrono>

namespace skarnel {

/// Two programs that a shell starts together find each other within this; nobody who named a pipe
/// by mistake waits longer.
inline constexpr std::chrono::milliseconds kPipePatience{1000};
inline constexpr std::chrono::milliseconds kPipePause{20};  // between two looks

}  // namespace skarnel
