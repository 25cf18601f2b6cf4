// An environment variable that is another one for as long as a block lasts.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace skarnel::test {

/// Sets an environment variable, or takes it away where `value` is null, and puts back at its end
/// what was there before.
class ScopedVariable {
  public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) before_ = before;
        set(value);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable() { set(before_ ? before_->c_str() : nullptr); }

  private:
    void set(const char* value) {
        if (value != nullptr) {
            ::setenv(name_, value, 1);
        } else {
            ::unsetenv(name_);
        }
    }
    const char* name_;
    std::optional<std::string> before_;
};

}  // namespace skarnel::test
