// Codecs whose libraries are large and rarely needed: loaded when the first file of theirs is met.
#pragma once

#include <string_view>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// What decoding a file needs beyond memory, for the decoder's cell.
enum class CodecNeeds { Nothing, Threads };

/// Loads the library that decoding a file with these first bytes takes, if any (16 bytes are
/// enough). For a process that can open no file later on; others need not call it, since the
/// readers load what they need themselves. A library that cannot be loaded is reported by the
/// reader.
CodecNeeds prepareToDecode(ByteView firstBytes);

/// Whether the codec's library is loaded now or could be; each stays loaded for good.
bool loadJpegXL();
bool loadHeif();

/// A shared library by its soname; its functions are bound one by one.
class CodecLibrary {
  public:
    explicit CodecLibrary(const char* soname);

    /// Sets `function` to the symbol; from the first that is missing on, complete() is false.
    template <typename Function>
    void bind(Function*& function, const char* symbol) {
        function = reinterpret_cast<Function*>(find(symbol));
    }
    bool complete() const { return complete_; }

  private:
    void* find(const char* symbol);

    void* handle_;
    bool complete_;
};

}  // namespace skarnel::io
