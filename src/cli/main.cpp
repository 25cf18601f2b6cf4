// skarnel-render: reflections from the command line, without a display.
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "cli/run.h"

namespace {

/// Where no memory is left even for saying so by the usual way, as in the middle of a report.
[[noreturn]] void endWithoutMemory() {
    try {
        if (const std::exception_ptr cause = std::current_exception())
            std::rethrow_exception(cause);
    } catch (const std::bad_alloc&) {
        constexpr std::string_view kMessage = "skarnel-render: No memory left\n";
        // Nobody is left to be told that this failed.
        [[maybe_unused]] const auto written =
            ::write(STDERR_FILENO, kMessage.data(), kMessage.size());
        _exit(1);
    } catch (...) {
        std::abort();
    }
    std::abort();
}

}  // namespace

int main(int argc, char** argv) {
    std::set_terminate(endWithoutMemory);
    return skarnel::cli::runCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc});
}
