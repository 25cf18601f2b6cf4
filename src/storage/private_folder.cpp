#include "storage/private_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace skarnel {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "skarnel-text-";
constexpr std::string_view kRandom = "XXXXXX";  // what mkdtemp replaces by letters and digits
constexpr int kMaxAttempts = 8;

bool isFolderName(std::string_view name) {
    if (name.size() != kPrefix.size() + kRandom.size() || !name.starts_with(kPrefix)) return false;
    return std::all_of(name.begin() + kPrefix.size(), name.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    });
}

/// A descriptor that holds the lock of the folder, or -1: somebody else's, locked, or gone.
int lockedFolder(const std::string& path) {
    const int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) return -1;
    struct stat status = {};
    struct stat named = {};
    if (::flock(folder, LOCK_EX | LOCK_NB) == 0 && ::fstat(folder, &status) == 0 &&
        status.st_uid == ::geteuid() && ::lstat(path.c_str(), &named) == 0 &&
        named.st_ino == status.st_ino) {
        return folder;
    }
    ::close(folder);
    return -1;
}

void removeAbandoned(const fs::path& parent) {
    std::error_code error;
    for (fs::directory_iterator at(parent, error), end; !error && at != end; at.increment(error)) {
        if (!isFolderName(at->path().filename().string())) continue;
        const int folder = lockedFolder(at->path().string());
        if (folder < 0) continue;
        std::error_code ignored;
        fs::remove_all(at->path(), ignored);
        ::close(folder);
    }
}

}  // namespace

PrivateFolder::PrivateFolder() {
    std::error_code error;
    const fs::path parent = fs::temp_directory_path(error);
    if (error) return;
    removeAbandoned(parent);
    const std::string pattern = (parent / kPrefix).string().append(kRandom);
    // Another program may take a folder that is not locked yet for an abandoned one.
    for (int attempt = 0; attempt < kMaxAttempts && lock_ < 0; ++attempt) {
        std::string name = pattern;
        if (::mkdtemp(name.data()) == nullptr) return;
        lock_ = lockedFolder(name);
        if (lock_ >= 0) path_ = std::move(name);
    }
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
    if (lock_ >= 0) ::close(lock_);
}

}  // namespace skarnel
