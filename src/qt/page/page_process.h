// The process in which pages are drawn: its start, its line, its end.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>

#include "qt/page/page_patience.h"
#include "util/log/result.h"

namespace skarnel {

class PageProcess {
  public:
    /// Starts the program with one end of a line and our error output, and nothing else.
    static Result<std::unique_ptr<PageProcess>> start(const std::string& program,
                                                      RendererPatience patience = {});
    /// Ends the process and those that it started, and waits for it.
    ~PageProcess();
    PageProcess(const PageProcess&) = delete;
    PageProcess& operator=(const PageProcess&) = delete;

    /// Our end of the line, for messages; readable too when the process has ended.
    int line() const { return line_; }

  private:
    PageProcess(pid_t process, int line) : process_(process), line_(line) {}

    pid_t process_;  // leads a group of its own
    int line_;
};

}  // namespace skarnel
