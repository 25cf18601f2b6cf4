// What the window's program is put together from.
#pragma once

#include <memory>

#include "qt/application.h"

namespace skarnel {

/// Made after the application object and gone before it, as the page renderer must be, which is
/// loaded when it is first asked for.
class ProgramParts {
  public:
    ProgramParts();
    ~ProgramParts();

    /// The user's own files and the installed modules, in the language of a catalogue; empty for
    /// English.
    ApplicationParts parts(const QString& catalogue);

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace skarnel
