// What the window's program is put together from.
#pragma once

#include <memory>

#include "qt/application.h"

namespace skarnel {

/// Lives as long as the application object. The page renderer is loaded when it is first asked for.
class ProgramParts {
  public:
    ProgramParts();
    ~ProgramParts();

    /// The user's own files and the installed modules.
    ApplicationParts parts();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace skarnel
