// Memory of the colour library, which itself does not say why it has no result.
#pragma once

#include <cstddef>

namespace skarnel::io {

/// Requests up to this are granted whatever a profile has asked for: the library uses its locks,
/// lists and curves without looking whether it got them.
constexpr std::size_t kSmallColorRequest = std::size_t{64} << 10;

/// While it lives, what the library asks for on its thread is counted. Tells a profile that is
/// damaged, which is left alone, from one that found no memory, which must not give other colours.
/// There is one at a time on a thread.
class ColorMemoryWatch {
  public:
    ColorMemoryWatch();
    ~ColorMemoryWatch();
    ColorMemoryWatch(const ColorMemoryWatch&) = delete;
    ColorMemoryWatch& operator=(const ColorMemoryWatch&) = delete;

    /// Throws std::bad_alloc when the library has asked for memory in vain since the watch began.
    void throwIfRefused() const;

    /// Whether the library asked for more than any honest profile needs, and did not get it. What
    /// it has made then may lack a part that only speed depends on.
    bool hasAskedTooMuch() const;
};

}  // namespace skarnel::io
