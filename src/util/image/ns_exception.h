// The toolkit's exception: raised where a drawing destination cannot be had.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace skarnel {

/// `what()` is the reason, a phrase for the log. The only exception that the library raises; code
/// that draws into a new image lets it pass on unless it says otherwise.
class NSException : public std::runtime_error {
  public:
    NSException(std::string name, const std::string& reason)
        : std::runtime_error(reason), name_(std::move(name)) {}
    const std::string& name() const { return name_; }

  private:
    std::string name_;
};

}  // namespace skarnel
