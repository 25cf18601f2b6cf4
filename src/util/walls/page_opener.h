// Opens known pages in the user's browser from a process that stands outside the walls.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace skarnel {

/// A child process that is started before the walls are raised and can do one thing: hand one of
/// the addresses it was made with to the desktop's opener. So the window may start no program of
/// its own choice, and a browser does not inherit the window's walls.
class PageOpener {
  public:
    /// Starts the child; call it while the process has one thread. `opener` is looked up in PATH.
    /// At most 255 addresses.
    explicit PageOpener(std::vector<std::string> pages, std::string opener = "xdg-open");
    /// The child ends when its end of the line closes.
    ~PageOpener();
    PageOpener(const PageOpener&) = delete;
    PageOpener& operator=(const PageOpener&) = delete;

    /// Asks for the page and returns when the opener has started; does not wait for what it does,
    /// nor more than two seconds. False for an address that it was not made with, when there is no
    /// such opener, and when the child cannot be reached.
    bool open(std::string_view page);

  private:
    std::vector<std::string> pages_;
    int line_ = -1;
};

}  // namespace skarnel
