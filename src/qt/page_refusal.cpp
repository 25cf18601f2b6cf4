#include "qt/page_refusal.h"

#include <sstream>

#include "util/log/system_log.h"

namespace skarnel {

std::string loggedWhile(const std::function<void()>& command) {
    std::string lines;
    {
        const ScopedLogCapture log;
        command();
        lines = log.text();
    }
    std::istringstream each(lines);
    for (std::string line; std::getline(each, line);) systemLog(line);
    return lines;
}

std::optional<Error> whyNoPage(const std::string& logged) {
    std::optional<Error> last;
    std::istringstream each(logged);
    for (std::string line; std::getline(each, line);) {
        if (line.starts_with("A page of ")) last = Error{ErrorCode::TooLarge, line};
        if (line.starts_with("The page ")) last = Error{ErrorCode::Failed, line};
    }
    return last;
}

}  // namespace skarnel
