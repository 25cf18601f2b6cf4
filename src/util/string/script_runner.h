// Runs a text as a script: the abstract runner, and JavaScript in a walled-off process.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "util/string/nsstring.h"

namespace skarnel {

/// Descriptor types: four-character codes in one number.
inline constexpr std::uint32_t kDescriptorList = 0x6c697374;     // 'list'
inline constexpr std::uint32_t kDescriptorText = 0x75747874;     // 'utxt'
inline constexpr std::uint32_t kDescriptorNumber = 0x646f7562;   // 'doub'
inline constexpr std::uint32_t kDescriptorBoolean = 0x626f6f6c;  // 'bool'
inline constexpr std::uint32_t kDescriptorNull = 0x6e756c6c;     // 'null'
inline constexpr std::uint32_t kDescriptorRecord = 0x7265636f;   // 'reco': any other object

/// What a script gave back.
class ScriptDescriptor {
  public:
    explicit ScriptDescriptor(std::uint32_t type, std::optional<NSString> text = std::nullopt)
        : type_(type), text_(std::move(text)) {}
    static ScriptDescriptor list(std::vector<ScriptDescriptor> items);

    std::uint32_t descriptorType() const { return type_; }
    std::size_t numberOfItems() const { return items_.size(); }
    /// Items count from 1; none for any other index, 0 among them.
    std::optional<ScriptDescriptor> descriptorAtIndex(std::size_t index) const;
    /// The text of a text, number or boolean; none for the other types.
    const std::optional<NSString>& stringValue() const { return text_; }

  private:
    std::uint32_t type_;
    std::optional<NSString> text_;
    std::vector<ScriptDescriptor> items_;
};

/// A script that was made from its source and can be run.
class Script {
  public:
    virtual ~Script() = default;
    /// None when it fails, or gives nothing.
    virtual std::optional<ScriptDescriptor> execute() = 0;
};

class ScriptRunner {
  public:
    virtual ~ScriptRunner() = default;
    /// Null when the source makes no script.
    virtual std::unique_ptr<Script> scriptWithSource(const NSString& source) = 0;
};

struct ScriptLimits {
    /// On the processor, for one script, 1 ms to an hour; the clock gives it 20 times that.
    std::chrono::milliseconds time{2000};
    /// Of the engine, its result included.
    std::size_t memoryBytes = 64 * 1024 * 1024;
};

/// Runs JavaScript (ECMAScript 5.1, the engine's later parts as they come). Each script gets a
/// fresh engine in a forked process that may open no file or socket, so it reaches neither, and
/// that is killed when a limit is passed: an endless script, one that eats memory and one that
/// brings the engine down are all scripts without a result. Source that does not compile is found
/// when it is executed.
class JavaScriptRunner final : public ScriptRunner {
  public:
    /// A time outside its range becomes the nearest end of it.
    explicit JavaScriptRunner(ScriptLimits limits = {});
    std::unique_ptr<Script> scriptWithSource(const NSString& source) override;

  private:
    ScriptLimits limits_;
};

}  // namespace skarnel
