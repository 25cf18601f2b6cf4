// The system log: one process-wide sink that receives finished lines.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace skarnel {

/// Receives one line of text without its line end. Called on the thread that logs.
using LogSink = std::function<void(std::string_view line)>;

/// Writes one line to the current sink. Never fails; a sink that cannot write loses the line.
void systemLog(std::string_view line);

/// Formats as printf does, then logs. The result may have any length.
[[gnu::format(printf, 1, 2)]] void systemLogFormat(const char* format, ...);

/// Replaces the sink and gives back the one before. An empty function restores the default,
/// which writes "skarnel: <line>" to standard error, as forEachShown does.
LogSink setSystemLogSink(LogSink sink);

/// Collects what is logged while it lives; for tests and for commands that report it themselves.
class ScopedLogCapture {
  public:
    ScopedLogCapture();
    ~ScopedLogCapture();
    ScopedLogCapture(const ScopedLogCapture&) = delete;
    ScopedLogCapture& operator=(const ScopedLogCapture&) = delete;

    /// All lines so far, each ended by "\n".
    const std::string& text() const { return text_; }

  private:
    std::string text_;
    LogSink before_;
};

}  // namespace skarnel
