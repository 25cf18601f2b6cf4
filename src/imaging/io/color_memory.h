// Memory of the colour library, which itself does not say why it has no result.
#pragma once

namespace skarnel::io {

/// Tells a profile that is damaged, which is left alone, from one that found no memory, which must
/// not give other colours.
class ColorMemoryWatch {
  public:
    ColorMemoryWatch();

    /// Throws std::bad_alloc when the library has asked for memory in vain on this thread since
    /// the watch began.
    void throwIfRefused() const;
};

}  // namespace skarnel::io
