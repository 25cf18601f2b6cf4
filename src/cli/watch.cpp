#include "cli/watch.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "imaging/io/image_io.h"
#include "util/log/system_error.h"

namespace skarnel::cli {
namespace {

constexpr std::uint32_t kEvents =
    IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::uint32_t kGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;

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

/// What a file is known by for as long as nobody touches it.
struct FileState {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;         // bytes
    std::int64_t seconds = 0;      // of its last change
    std::int64_t nanoseconds = 0;  // beyond them
    friend bool operator==(const FileState&, const FileState&) = default;
};

std::optional<FileState> stateOf(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return FileState{status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec,
                     status.st_mtim.tv_nsec};
}

/// A link is there at once; what is written in place is told of again when it is closed.
bool isLink(const std::string& path) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0) return false;
    return S_ISLNK(status.st_mode) || (S_ISREG(status.st_mode) && status.st_nlink > 1);
}

/// Whether somebody has the file open for writing; its closing will then be told. Only a file of
/// one's own can be asked, and any other counts as finished.
bool isBeingWritten(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.number() < 0) return false;
    // Who opens it for writing in this very moment makes the kernel send a signal, by default one
    // that ends a program.
    ::fcntl(file.number(), F_SETSIG, SIGURG);
    return ::fcntl(file.number(), F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
}

/// The same, asked for a while: the kernel tells of a closing a moment before it counts the writer
/// out.
bool staysOpen(const std::string& path) {
    constexpr int kTries = 50;
    constexpr auto kPause = std::chrono::milliseconds(2);
    for (int i = 0; i < kTries; ++i) {
        if (!isBeingWritten(path)) return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

/// The name of a result that lies in the watched folder, however the two are spelled; else empty.
std::string nameWithin(const std::string& folder, const std::filesystem::path& result) {
    const std::filesystem::path parent = result.has_parent_path() ? result.parent_path() : ".";
    std::error_code failed;
    return std::filesystem::equivalent(parent, folder, failed) ? result.filename().string() : "";
}

/// Tells pictures that are new from those that were seen, and from the results among them.
class Watcher {
  public:
    Watcher(const std::string& folder, const Appeared& appeared)
        : folder_(folder),
          prefix_(folder.ends_with('/') ? folder : folder + "/"),
          appeared_(appeared) {
        forEachPicture([this](const std::string& name) { remember(name); });
    }

    /// Something happened to a file of that name.
    void see(std::uint32_t mask, const std::string& name) {
        const bool isWhole = (mask & (IN_CLOSE_WRITE | IN_MOVED_TO)) != 0;
        const bool isNewLink = (mask & IN_CREATE) != 0 && isLink(prefix_ + name);
        if (isWhole || isNewLink) take(name);
    }

    /// Hands on what came together.
    void flush() {
        if (fresh_.empty()) return;
        std::vector<std::string> paths;
        for (const std::string& name : std::exchange(fresh_, {})) {
            remember(name);  // before its pixels are read, so that a later change is one
            paths.push_back(prefix_ + name);
        }
        appeared_(paths, [this](const std::string& result) {
            const std::string own = nameWithin(folder_, result);
            if (const auto state = stateOf(prefix_ + own)) own_[own] = *state;
        });
    }

    /// Events were lost: what is there tells what has happened.
    void lookAround() {
        forEachPicture([&](const std::string& name) {
            const auto state = stateOf(prefix_ + name);
            const auto seen = seen_.find(name);
            const bool isNew = state && (seen == seen_.end() || seen->second != *state);
            if (isNew && !staysOpen(prefix_ + name)) take(name);
        });
    }

  private:
    void take(const std::string& name) {
        if (!isPictureName(name) || isUnchangedResult(name)) return;
        if (std::find(fresh_.begin(), fresh_.end(), name) == fresh_.end()) fresh_.push_back(name);
    }
    template <typename Each>
    void forEachPicture(Each each) const {
        std::error_code failed;
        for (std::filesystem::directory_iterator at(folder_, failed), end; !failed && at != end;
             at.increment(failed)) {
            const std::string name = at->path().filename().string();
            if (isPictureName(name)) each(name);
        }
    }
    void remember(const std::string& name) {
        if (const auto state = stateOf(prefix_ + name)) seen_[name] = *state;
    }
    /// Written here and untouched since. Each is told of twice, renamed and then closed, so that
    /// one that was replaced in between is taken once.
    bool isUnchangedResult(const std::string& name) {
        const auto own = own_.find(name);
        if (own == own_.end()) return false;
        const auto now = stateOf(prefix_ + name);
        if (now == own->second || staysOpen(prefix_ + name)) return true;
        if (now) own->second = *now;
        return false;
    }

    const std::string folder_;
    const std::string prefix_;
    const Appeared& appeared_;
    std::vector<std::string> fresh_;         // not yet handed on
    std::map<std::string, FileState> seen_;  // pictures that were there or were rendered
    std::map<std::string, FileState> own_;   // results that lie in the folder itself
};

}  // namespace

Result<void> watchFolder(const std::string& folder, const Appeared& appeared) {
    const Descriptor queue(::inotify_init1(IN_CLOEXEC));
    if (queue.number() < 0) return lastError();
    // The watch stands last: it tells that all is ready. What comes in the meantime is old.
    Watcher watcher(folder, appeared);
    if (::inotify_add_watch(queue.number(), folder.c_str(), kEvents) < 0) return lastError();
    std::array<char, 1 << 16> buffer;
    for (;;) {
        const ssize_t got = ::read(queue.number(), buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return lastError();
        bool gone = false;
        forEachEvent({buffer.data(), static_cast<std::size_t>(got)},
                     [&](std::uint32_t mask, const std::string& name) {
                         gone = gone || (mask & kGone) != 0;
                         watcher.see(mask, name);
                         if ((mask & IN_Q_OVERFLOW) != 0) watcher.lookAround();
                     });
        watcher.flush();
        if (gone) return {ErrorCode::NotFound, "The folder is no longer there"};
    }
}

}  // namespace skarnel::cli
