#include "util/log/system_log.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <utility>
#include <vector>

#include "util/log/shown_text.h"

namespace skarnel {
namespace {

LogSink& currentSink() {
    static LogSink sink;
    return sink;
}

/// Standard error, to which a line of usual length goes in one piece. Asks for no memory.
class StandardError {
  public:
    ~StandardError() { flush(); }
    void add(std::string_view text) {
        for (const char character : text) {
            if (size_ == text_.size()) flush();
            text_[size_++] = character;
        }
    }

  private:
    void flush() {
        static_cast<void>(std::fwrite(text_.data(), 1, size_, stderr));
        size_ = 0;
    }

    std::array<char, 1024> text_;
    std::size_t size_ = 0;
};

/// A name within may hold what a terminal obeys, or a line's end, behind which it would begin a
/// line of its own.
void writeLine(std::string_view line) {
    StandardError out;
    out.add("skarnel: ");
    forEachShown(line, LineEnds::Escaped, [&out](std::string_view piece) { out.add(piece); });
    out.add("\n");
}

}  // namespace

void systemLog(std::string_view line) {
    if (const LogSink& sink = currentSink()) {
        sink(line);
        return;
    }
    writeLine(line);
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
