#include "storage/left_overs.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <random>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

namespace skarnel {
namespace {

constexpr std::string_view kPrefix = ".skarnel-";
constexpr std::string_view kSuffix = ".part";
constexpr std::size_t kRandomDigits = 16;
constexpr std::string_view kDigits = "0123456789abcdef";

void removeIfAbandoned(const std::string& path, FileSystem& fileSystem) {
    // Without O_NONBLOCK a named pipe of that name would hold us up.
    const int descriptor = uninterrupted(
        [&] { return fileSystem.open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK, 0); });
    if (descriptor < 0) return;
    struct stat status = {};
    const bool ours = fileSystem.fstat(descriptor, status) == 0 && S_ISREG(status.st_mode) &&
                      status.st_uid == ::geteuid();
    // The name goes while the lock is held: a writer that made the file just now finds the lock
    // taken, or the file without a name, and takes another one.
    if (ours && fileSystem.flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        fileSystem.unlink(path.c_str());
    }
    fileSystem.close(descriptor);
}

}  // namespace

std::string temporaryFilePath(std::string_view folder) {
    thread_local std::random_device random;
    std::string path(folder);
    if (!path.empty() && path.back() != '/') path += '/';
    path += kPrefix;
    std::uniform_int_distribution<std::size_t> digit(0, kDigits.size() - 1);
    for (std::size_t i = 0; i < kRandomDigits; ++i) path += kDigits[digit(random)];
    path += kSuffix;
    return path;
}

bool isTemporaryFileName(std::string_view name) {
    if (name.size() != kPrefix.size() + kRandomDigits + kSuffix.size()) return false;
    if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix)) return false;
    const std::string_view middle = name.substr(kPrefix.size(), kRandomDigits);
    return middle.find_first_not_of(kDigits) == std::string_view::npos;
}

void removeLeftOvers(const std::string& folder, FileSystem& fileSystem) {
    std::vector<std::string> names;
    if (fileSystem.list(folder.c_str(), names) < 0) return;
    for (const std::string& name : names) {
        if (isTemporaryFileName(name)) removeIfAbandoned(folder + "/" + name, fileSystem);
    }
}

void removeLeftOversApart(std::string folder, FileSystem& fileSystem) try {
    std::thread([folder = std::move(folder), &fileSystem] {
        try {
            removeLeftOvers(folder, fileSystem);
        } catch (const std::bad_alloc&) {
            // Another start finds them.
        }
    }).detach();
} catch (const std::system_error&) {
    // There may be no more threads; the same.
} catch (const std::bad_alloc&) {
    // Not even for the thread's own state; the same.
}

void removeLeftOversOnce(const std::string& folder, FileSystem& fileSystem) {
    static std::mutex mutex;
    static std::set<std::string> done;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!done.insert(folder).second) return;
    }
    removeLeftOvers(folder, fileSystem);
}

}  // namespace skarnel
