// Where the programs lie that ours start beside themselves.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace skarnel {

/// The full path of one of our own helper programs: beside this program, or in the installation's
/// folders ../libexec/skarnel and ../lib/skarnel. None where it cannot be executed there, or the
/// system does not say where this program lies.
std::optional<std::string> findHelperProgram(std::string_view name);

}  // namespace skarnel
