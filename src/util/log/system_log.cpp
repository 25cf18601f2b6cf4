#include "util/log/system_log.h"

#include <cstdarg>
#include <cstdio>
#include <utility>
#include <vector>

namespace skarnel {
namespace {

LogSink& currentSink() {
    static LogSink sink;
    return sink;
}

}  // namespace

void systemLog(std::string_view line) {
    if (const LogSink& sink = currentSink()) {
        sink(line);
        return;
    }
    std::fprintf(stderr, "skarnel: %.*s\n", static_cast<int>(line.size()), line.data());
}

void systemLogFormat(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    if (length >= 0) {
        std::vector<char> buffer(static_cast<std::size_t>(length) + 1);
        std::vsnprintf(buffer.data(), buffer.size(), format, again);
        systemLog(std::string_view(buffer.data(), static_cast<std::size_t>(length)));
    }
    va_end(again);
}

LogSink setSystemLogSink(LogSink sink) {
    return std::exchange(currentSink(), std::move(sink));
}

ScopedLogCapture::ScopedLogCapture()
    : before_(setSystemLogSink([this](std::string_view line) {
          text_.append(line);
          text_.push_back('\n');
      })) {}

ScopedLogCapture::~ScopedLogCapture() {
    setSystemLogSink(std::move(before_));
}

}  // namespace skarnel
