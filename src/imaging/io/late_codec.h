// Libraries of codecs are loaded when the first file of theirs is met: mapping all of them takes
// longer than a small picture.
#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/io/image_io.h"
#include "util/log/result.h"

namespace skarnel::io {

/// What decoding a file needs for the decoder's cell: bounds by the picture's size, since the codec
/// has none of its own, or these and threads of the codec's.
enum class CodecNeeds { Nothing, Bounds, Threads };

/// Whether the rest of a file may name colours or a camera's facts, for which there are libraries.
enum class Rest { Unknown, HasNeither };

/// Loads the libraries that decoding a file with these first bytes may take (16 bytes tell its
/// format). For a process that can open no file later on; others need not call it, since the
/// readers load what they need themselves. A library that cannot be loaded is reported by the
/// reader.
CodecNeeds prepareToDecode(ByteView firstBytes, Rest rest = Rest::Unknown);

/// Loads the library that encoding a picture as this type takes, if any.
void prepareToEncode(std::string_view type);

/// Whether the codec's library is loaded now or could be; each stays loaded for good.
bool loadJpegXL();
bool loadHeif();

/// The names of the libraries that may be missing.
const char* jpegXLSoname();
const char* heifSoname();

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

/// The libraries of one codec, bound to the pointers that SKARNEL_LATE declares.
class LateLibraries {
  public:
    /// `bind` sets the pointers from the libraries, which come in the order of `sonames`.
    using Bind = void (*)(std::vector<CodecLibrary>& libraries);
    LateLibraries(std::vector<const char*> sonames, Bind bind)
        : sonames_(std::move(sonames)), bind_(bind) {}

    /// Whether all of their functions are there. Looks again after a failure, which may have been
    /// a want of memory. Throws std::bad_alloc.
    bool load();
    /// The same with the libraries' names where they are not.
    Result<void> need();

  private:
    std::vector<const char*> sonames_;
    Bind bind_;
    std::mutex mutex_;
    bool loaded_ = false;
};

/// Declares a pointer that stands for the library's function of that name in this namespace, whose
/// library is not linked; to be called after LateLibraries::load.
#define SKARNEL_LATE(function) inline decltype(&::function) function = nullptr;
#define SKARNEL_BIND(function) library.bind(function, #function);

}  // namespace skarnel::io
