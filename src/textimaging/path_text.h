// Paths as text: their last component, and joining.
#pragma once

#include <string>
#include <string_view>

namespace skarnel {

/// What follows the last separator, trailing ones not counted; "/" for a path of separators alone.
std::string lastPathComponent(std::string_view path);

/// Exactly one separator stands between the two, however many the folder ends with. An empty folder
/// gives the component alone.
std::string byAppendingPathComponent(std::string_view folder, std::string_view component);

}  // namespace skarnel
