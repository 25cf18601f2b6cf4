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
#include <vector>

namespace skarnel {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kTextPrefix = "skarnel-text-";
constexpr std::string_view kRandom = "XXXXXX";  // what mkdtemp replaces by letters and digits
constexpr int kMaxAttempts = 8;

bool isFolderName(std::string_view name, std::string_view prefix) {
    if (name.size() != prefix.size() + kRandom.size() || !name.starts_with(prefix)) return false;
    return std::all_of(
        name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(), [](char c) {
            return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        });
}

/// A descriptor that holds the lock of the folder, or -1: somebody else's, locked, or gone.
int lockedFolder(const std::string& path, FileSystem& fileSystem) {
    const int folder = fileSystem.open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW, 0);
    if (folder < 0) return -1;
    struct stat status = {};
    struct stat named = {};
    if (fileSystem.flock(folder, LOCK_EX | LOCK_NB) == 0 && fileSystem.fstat(folder, status) == 0 &&
        status.st_uid == ::geteuid() && fileSystem.lstat(path.c_str(), named) == 0 &&
        named.st_ino == status.st_ino) {
        return folder;
    }
    fileSystem.close(folder);
    return -1;
}

}  // namespace

void removeAbandonedFolders(const std::string& parent, std::string_view prefix,
                            FileSystem& fileSystem) {
    std::vector<std::string> names;
    if (fileSystem.list(parent.c_str(), names) < 0) return;
    for (const std::string& name : names) {
        if (!isFolderName(name, prefix)) continue;
        const std::string path = (fs::path(parent) / name).string();
        const int folder = lockedFolder(path, fileSystem);
        if (folder < 0) continue;
        std::error_code ignored;
        fs::remove_all(path, ignored);
        fileSystem.close(folder);
    }
}

PrivateFolder::PrivateFolder(FileSystem& fileSystem) : fileSystem_(fileSystem) {
    std::error_code error;
    const fs::path parent = fs::temp_directory_path(error);
    if (!error) make(parent.string(), kTextPrefix);
}

PrivateFolder::PrivateFolder(const std::string& parent, std::string_view prefix,
                             FileSystem& fileSystem)
    : fileSystem_(fileSystem) {
    make(parent, prefix);
}

void PrivateFolder::make(const std::string& parent, std::string_view prefix) {
    removeAbandonedFolders(parent, prefix, fileSystem_);
    const std::string pattern = (fs::path(parent) / prefix).string().append(kRandom);
    // Another program may take a folder that is not locked yet for an abandoned one.
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        std::string name = pattern;
        if (::mkdtemp(name.data()) == nullptr) return;
        lock_ = lockedFolder(name, fileSystem_);
        if (lock_ >= 0) {
            path_ = std::move(name);
            return;
        }
        ::rmdir(name.c_str());  // where nobody can lock it, nobody would ever remove it
    }
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
    if (lock_ >= 0) fileSystem_.close(lock_);
}

}  // namespace skarnel
