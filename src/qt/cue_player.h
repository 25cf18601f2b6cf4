// The completion cue.
#pragma once

#include <functional>
#include <string>

#include "imaging/io/image_io.h"
#include "platform/services.h"

namespace skarnel {

/// A sound held in memory. Without a sound device, or without the sound module, it is silent.
class QtSound final : public NSSound {
  public:
    using Muted = std::function<bool()>;

    /// Null when the file cannot be read.
    static std::shared_ptr<QtSound> read(const std::string& path, Muted muted);

    QtSound(Bytes bytes, Muted muted) : bytes_(std::move(bytes)), muted_(std::move(muted)) {}
    ~QtSound() override;

    void play() override;

  private:
    Bytes bytes_;
    Muted muted_;
    void* playing_ = nullptr;
};

/// The full path of one of the program's own modules: beside the program's libraries in the build
/// tree and in an installation; empty when it is not there.
std::string modulePath(const std::string& fileName);

}  // namespace skarnel
