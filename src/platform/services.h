// Small services of the desktop: sound, resources, the web browser and the pasteboard.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/io/image_io.h"
#include "platform/object.h"

namespace skarnel {

inline constexpr std::string_view NSTIFFPboardType = "NSTIFFPboardType";

class NSSound : public NSObject {
  public:
    /// Starts playing and returns at once. Without a sound device nothing happens.
    virtual void play() = 0;
};

/// The application's resources.
class NSBundle : public NSObject {
  public:
    /// The full path of a sound resource, none when it is missing.
    virtual std::optional<std::string> pathForSoundResource(std::string_view name) = 0;
};

class NSWorkspace : public NSObject {
  public:
    /// Opens a web address in the user's browser; false when that could not be started.
    virtual bool openURL(std::string_view url) = 0;
};

class NSPasteboard : public NSObject {
  public:
    /// Clears the pasteboard and announces the types that follow. `owner` may be null.
    virtual void declareTypes(const std::vector<std::string_view>& types,
                              const NSObject* owner) = 0;

    /// Hands the bytes over for a declared type; false when they were not taken.
    virtual bool setData(const Bytes& data, std::string_view type) = 0;
};

}  // namespace skarnel
