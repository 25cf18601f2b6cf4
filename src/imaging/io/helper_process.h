// Starting the helper program that works with codecs in place of this one, and seeing its end.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>

#include "util/log/result.h"

namespace skarnel::io {

/// The reason that errno has, behind `what`.
Error systemError(const char* what);

/// A running helper; killed when it is given up before its end.
class HelperProcess {
  public:
    /// Starts `program` with one argument, an empty environment and nothing but two descriptors or
    /// three: `input` as kPictureDescriptor, `answer` as kAnswerDescriptor, `ring` as
    /// kRingDescriptor unless it is -1. All stay open here.
    static Result<HelperProcess> start(const std::string& program, int input, int answer,
                                       std::string argument, int ring = -1);

    HelperProcess(HelperProcess&& other) noexcept : child_(std::exchange(other.child_, -1)) {}
    HelperProcess& operator=(HelperProcess&&) = delete;
    ~HelperProcess();

    /// The status that it ended with by itself, or -1. It has closed its pipe, by its end as a
    /// rule; one that only closed it is not waited for.
    int statusAtEnd();

  private:
    explicit HelperProcess(pid_t child) : child_(child) {}
    int wait();

    pid_t child_;
};

}  // namespace skarnel::io
