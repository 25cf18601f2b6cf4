#include "cli/watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <string_view>

#include "imaging/io/image_io.h"
#include "storage/file_system.h"

namespace skarnel::cli {
namespace {

constexpr std::uint32_t kEvents =
    IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    int number() const { return number_; }

  private:
    int number_;
};

bool isPictureName(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (name.starts_with('.') || dot == std::string_view::npos) return false;
    const ImageType* type = imageTypeWithExtension(name.substr(dot + 1));
    return type != nullptr && type->canRead;
}

Error lastError() {
    return {ErrorCode::CannotRead, describeError(errno)};
}

/// Calls `each` with every event of one read of the queue.
template <typename Each>
void forEachEvent(std::string_view events, Each each) {
    while (events.size() >= sizeof(inotify_event)) {
        inotify_event event;
        std::memcpy(&event, events.data(), sizeof event);
        // The name is filled up with zeros to `len`.
        const char* name = events.data() + sizeof event;
        each(event.mask, std::string(name, event.len == 0 ? 0 : ::strnlen(name, event.len)));
        events.remove_prefix(sizeof event + event.len);
    }
}

/// The name of a result that lies in the watched folder, however the two are spelled; else empty.
std::string nameWithin(const std::string& folder, const std::filesystem::path& result) {
    const std::filesystem::path parent = result.has_parent_path() ? result.parent_path() : ".";
    std::error_code failed;
    return std::filesystem::equivalent(parent, folder, failed) ? result.filename().string() : "";
}

}  // namespace

Result<void> watchFolder(const std::string& folder,
                         const std::function<std::string(const std::string&)>& appeared) {
    const Descriptor queue(::inotify_init1(IN_CLOEXEC));
    if (queue.number() < 0) return lastError();
    if (::inotify_add_watch(queue.number(), folder.c_str(), kEvents) < 0) return lastError();
    const std::string prefix = folder.ends_with('/') ? folder : folder + "/";
    std::set<std::string> ownNames;  // each appears twice: renamed, then closed
    std::array<char, 1 << 16> buffer;
    for (;;) {
        const ssize_t got = ::read(queue.number(), buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return lastError();
        bool gone = false;
        forEachEvent({buffer.data(), static_cast<std::size_t>(got)},
                     [&](std::uint32_t mask, const std::string& name) {
                         gone = gone || (mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0;
                         if ((mask & (IN_CLOSE_WRITE | IN_MOVED_TO)) == 0) return;
                         if (ownNames.contains(name) || !isPictureName(name)) return;
                         const std::string result = appeared(prefix + name);
                         if (!result.empty()) ownNames.insert(nameWithin(folder, result));
                     });
        if (gone) return {ErrorCode::NotFound, "The folder is no longer there"};
    }
}

}  // namespace skarnel::cli
