// Opens one web address in the user's browser from a process that stands outside the walls.
#pragma once

#include <string>

namespace skarnel {

/// A child process that is started before the walls are raised and can do one thing: hand the one
/// address it was made with to the desktop's opener. So the window may start no program of its own
/// choice, and a browser does not inherit the window's walls.
class PageOpener {
  public:
    /// Starts the child; call it while the process has one thread. `opener` is looked up in PATH.
    explicit PageOpener(std::string url, std::string opener = "xdg-open");
    /// The child ends when its end of the line closes.
    ~PageOpener();
    PageOpener(const PageOpener&) = delete;
    PageOpener& operator=(const PageOpener&) = delete;

    const std::string& url() const { return url_; }
    /// Asks for the page and returns at once; false when the child cannot be reached.
    bool open();

  private:
    std::string url_;
    int line_ = -1;
};

}  // namespace skarnel
