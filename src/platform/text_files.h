// Writing text and plain data to files, as the text system and data objects offer it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "imaging/io/image_io.h"
#include "platform/object.h"
#include "util/log/result.h"

namespace skarnel {

enum class Atomically { No, Yes };

struct TextWriteOutcome {
    bool written = false;
    std::optional<Error> error;  // may be missing although nothing was written
};

/// Paths are UTF-8. A file that is new is created exclusively and is for the user alone (0600); a
/// file that is there already keeps its permissions.
class TextFiles : public NSObject {
  public:
    /// `encoding` is one of the string-encoding codes (see attributed_text.h).
    virtual TextWriteOutcome writeStringToFile(std::u16string_view text, std::string_view path,
                                               Atomically atomically, std::int32_t encoding) = 0;

    virtual bool writeDataToFile(ByteView data, std::string_view path, Atomically atomically) = 0;
};

}  // namespace skarnel
