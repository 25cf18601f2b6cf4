// The engine inside the walled-off process: evaluates a source and writes its result as bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "util/string/script_runner.h"

namespace skarnel {

/// Evaluates in a fresh engine whose allocations together stay below `memoryBytes`. The bytes are
/// empty after an error in the script. Out of memory beyond recovery ends the process, which is
/// why this runs in one of its own.
std::vector<std::uint8_t> evaluateJavaScript(const NSString& source, std::size_t memoryBytes);

/// Reads what `evaluateJavaScript` wrote; none for empty or cut bytes.
std::optional<ScriptDescriptor> readScriptResult(const std::vector<std::uint8_t>& bytes);

}  // namespace skarnel
