#include "util/log/system_log.h"

#include <array>
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
/// line of its own: of each control character, those from U+0080 to U+009F among them, the last
/// byte is shown as "\x1b".
void writeLine(std::string_view line) {
    StandardError out;
    out.add("skarnel: ");
    unsigned char previous = 0;
    for (const char character : line) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isHighControl = previous == 0xC2 && byte >= 0x80 && byte < 0xA0;
        previous = byte;
        if (byte >= 0x20 && byte != 0x7F && !isHighControl) {
            out.add({&character, 1});
            continue;
        }
        std::array<char, 5> shown{};
        std::snprintf(shown.data(), shown.size(), "\\x%02x", byte);
        out.add({shown.data(), shown.size() - 1});
    }
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
