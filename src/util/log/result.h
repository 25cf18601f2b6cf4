// A value or the reason why there is none, for the places where a reason is owed.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace skarnel {

enum class ErrorCode {
    NotFound,       // the file or resource is not there
    CannotRead,     // it is there but its bytes cannot be had
    CannotWrite,    // the bytes could not be stored (no space, no permission, ...)
    AlreadyExists,  // refused, so that nothing is overwritten
    UnknownFormat,  // the bytes are of no format that can be read
    Damaged,        // the bytes break the rules of their format
    TooLarge,       // over a stated limit
    Unsupported,    // well-formed, but a variety that is not handled
    OutOfMemory,
    InvalidArgument,
    Cancelled,
    Failed,  // anything else; the message says what
};

/// What went wrong, for a person: `message` is a phrase without a final full stop that names the
/// cause ("No space left on device"), not the place; callers put the file's name before it.
struct Error {
    ErrorCode code = ErrorCode::Failed;
    std::string message;
};

/// Either a T or an Error. Reading the one that is not there is our bug (asserted by optional).
template <typename T>
class [[nodiscard]] Result {
  public:
    Result(T value) : value_(std::move(value)) {}      // NOLINT(google-explicit-constructor)
    Result(Error error) : error_(std::move(error)) {}  // NOLINT(google-explicit-constructor)
    Result(ErrorCode code, std::string message) : error_{code, std::move(message)} {}

    explicit operator bool() const { return value_.has_value(); }
    bool hasValue() const { return value_.has_value(); }
    T& operator*() & { return *value_; }
    const T& operator*() const& { return *value_; }
    T&& operator*() && { return *std::move(value_); }
    T* operator->() { return &*value_; }
    const T* operator->() const { return &*value_; }
    const Error& error() const { return error_; }

  private:
    std::optional<T> value_;
    Error error_;
};

/// Success, or the reason why not.
template <>
class [[nodiscard]] Result<void> {
  public:
    Result() = default;
    Result(Error error) : error_(std::move(error)) {}  // NOLINT(google-explicit-constructor)
    Result(ErrorCode code, std::string message) : error_(Error{code, std::move(message)}) {}

    explicit operator bool() const { return !error_.has_value(); }
    bool hasValue() const { return !error_.has_value(); }
    const Error& error() const { return *error_; }

  private:
    std::optional<Error> error_;
};

}  // namespace skarnel
