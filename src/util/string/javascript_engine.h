// The engine inside the walled-off process: evaluates a source and writes its result as bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "util/string/script_runner.h"

namespace skarnel {

/// A result as bytes may be this many times the engine's memory: a text that fills it takes up to
/// two bytes where the engine has one.
inline constexpr std::size_t kResultFactor = 2;

/// Evaluates in a fresh engine whose allocations together stay below `memoryBytes`. The bytes are
/// empty after an error in the script, or when they would pass kResultFactor times that. Out of
/// memory beyond recovery ends the process, which is why this runs in one of its own.
std::vector<std::uint8_t> evaluateJavaScript(const NSString& source, std::size_t memoryBytes);

/// Reads what `evaluateJavaScript` wrote; none for empty or cut bytes.
std::optional<ScriptDescriptor> readScriptResult(const std::vector<std::uint8_t>& bytes);

}  // namespace skarnel
