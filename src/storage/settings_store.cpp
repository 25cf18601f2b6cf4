#include "storage/settings_store.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <new>
#include <thread>
#include <utility>

#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/settings_json.h"
#include "storage/whole_file.h"

namespace skarnel {
namespace {

/// A hundred times what all settings take; anything larger is not a settings file.
constexpr std::uint64_t kMaxFileBytes = std::uint64_t{1} << 20;
constexpr mode_t kPrivateFileMode = 0600;
constexpr int kMaxCopies = 1000;
constexpr std::chrono::milliseconds kLockPause{2};

/// Holds the lock file's lock while it lives. The file itself stays: removing it would let two
/// programs hold locks on two files of one name.
class FileLock {
  public:
    explicit FileLock(FileSystem& fileSystem) : fileSystem_(fileSystem) {}
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() {
        if (descriptor_ >= 0) fileSystem_.close(descriptor_);
    }

    Result<void> take(const std::string& path, std::chrono::milliseconds patience) {
        descriptor_ = uninterrupted(
            [&] { return fileSystem_.open(path.c_str(), O_RDWR | O_CREAT, kPrivateFileMode); });
        if (descriptor_ < 0) return {ErrorCode::CannotWrite, describeError(-descriptor_)};
        const auto end = std::chrono::steady_clock::now() + patience;
        for (;;) {
            const int locked =
                uninterrupted([&] { return fileSystem_.flock(descriptor_, LOCK_EX | LOCK_NB); });
            // Without locks in the file system the merge alone has to do.
            if (locked == 0 || locked == -ENOLCK || locked == -EOPNOTSUPP) return {};
            if (locked != -EWOULDBLOCK) return {ErrorCode::CannotWrite, describeError(-locked)};
            if (std::chrono::steady_clock::now() >= end) {
                return {ErrorCode::CannotWrite, "Another program keeps the settings locked"};
            }
            std::this_thread::sleep_for(kLockPause);
        }
    }

  private:
    FileSystem& fileSystem_;
    int descriptor_ = -1;
};

std::string homeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') return home;
    const passwd* user = ::getpwuid(::geteuid());
    return user != nullptr && user->pw_dir != nullptr && user->pw_dir[0] == '/' ? user->pw_dir : "";
}

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool isSameFile(const std::string& path, const struct stat& status, FileSystem& fileSystem) {
    struct stat other = {};
    return fileSystem.lstat(path.c_str(), other) == 0 && other.st_dev == status.st_dev &&
           other.st_ino == status.st_ino;
}

/// Of the copy of a given number, from 1.
std::string copyName(const std::string& target, int number) {
    return target + ".damaged" + (number == 1 ? "" : "-" + std::to_string(number));
}

}  // namespace

std::string SettingsStore::defaultPath() {
    std::string folder;
    // A relative path there is invalid and to be ignored, says the base directory rule.
    if (const char* config = std::getenv("XDG_CONFIG_HOME");
        config != nullptr && config[0] == '/') {
        folder = config;
    } else if (const std::string home = homeFolder(); !home.empty()) {
        folder = home + "/.config";
    }
    return folder.empty() ? folder : folder + "/skarnel/settings.json";
}

SettingsStore::SettingsStore(std::string path, FileSystem& fileSystem)
    : path_(std::move(path)), fileSystem_(fileSystem) {
    if (path_.empty()) return;
    try {
        OnDisk found = readFile();
        values_ = std::move(found.values);
        foundUnreadable_ = found.readability != Readability::Whole;
    } catch (const std::bad_alloc&) {
        values_.clear();
        foundUnreadable_ = true;
    }
}

bool SettingsStore::contains(std::string_view key) const {
    return values_.find(key) != values_.end();
}

std::optional<SettingValue> SettingsStore::valueForKey(std::string_view key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

float SettingsStore::floatForKey(std::string_view key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return 0;
    if (const bool* flag = std::get_if<bool>(&found->second)) return *flag ? 1.0F : 0.0F;
    return std::get<float>(found->second);
}

bool SettingsStore::boolForKey(std::string_view key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return false;
    if (const bool* flag = std::get_if<bool>(&found->second)) return *flag;
    return std::get<float>(found->second) != 0;
}

void SettingsStore::setFloat(std::string_view key, float value) {
    set(key, value);
}

void SettingsStore::setBool(std::string_view key, bool value) {
    set(key, value);
}

void SettingsStore::set(std::string_view key, SettingValue value) try {
    const std::string name(key);
    changes_.insert_or_assign(name, value);
    if (values_.insert_or_assign(name, value).second) ++keySetChanges_;
    notify(name);
} catch (const std::bad_alloc&) {
    // A change that finds no memory does not happen.
}

void SettingsStore::removeObject(std::string_view key) try {
    const auto found = values_.find(key);
    if (found == values_.end()) return;
    const std::string name = found->first;
    changes_.insert_or_assign(name, std::nullopt);
    values_.erase(found);
    ++keySetChanges_;
    notify(name);
} catch (const std::bad_alloc&) {
    // A removal that finds no memory does not happen.
}

std::vector<std::string> SettingsStore::keys() const {
    std::vector<std::string> keys;
    keys.reserve(values_.size());
    for (const auto& [key, value] : values_) keys.push_back(key);
    return keys;
}

void SettingsStore::setObserver(std::function<void(const std::string&)> observer) {
    observer_ = std::move(observer);
}

void SettingsStore::notify(const std::string& key) {
    if (observer_) observer_(key);
}

Result<void> SettingsStore::synchronize() try {
    if (changes_.empty()) return {};
    if (path_.empty()) return {ErrorCode::NotFound, "There is no folder for the settings"};
    // A loop of links has no target; it is kept aside like any file that cannot be read.
    const Result<std::string> followed = followLinks(path_, fileSystem_);
    const std::string target = followed ? *followed : path_;
    struct stat status = {};
    // Moved aside or replaced, it would be lost to the whole system.
    if (fileSystem_.stat(target.c_str(), status) == 0 &&
        (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode))) {
        return {ErrorCode::CannotWrite, "There is a device in place of the settings"};
    }
    if (Result<void> made = makeFolders(folderOfPath(target), fileSystem_); !made) return made;
    FileLock lock(fileSystem_);
    if (Result<void> locked = lock.take(target + ".lock", lockPatience_); !locked) return locked;
    return mergeAndWrite(target);
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, "Out of memory"};
}

void SettingsStore::removeLeftOvers() {
    if (path_.empty()) return;
    const Result<std::string> followed = followLinks(path_, fileSystem_);
    skarnel::removeLeftOvers(folderOfPath(followed ? *followed : path_), fileSystem_);
}

Result<void> SettingsStore::mergeAndWrite(const std::string& target) {
    OnDisk onDisk = readFile();
    if (foundUnreadable_ || onDisk.readability != Readability::Whole) {
        if (Result<void> kept = keepCopy(target); !kept) return kept;
        foundUnreadable_ = false;
    }
    for (const auto& [key, value] : changes_) {
        if (value) {
            onDisk.values.insert_or_assign(key, *value);
        } else {
            onDisk.values.erase(key);
        }
    }
    const std::string text = serializeSettings(onDisk.values);
    Result<void> written = writeFileSafely(target, bytesOf(text), Overwrite::Allow, fileSystem_);
    if (written) changes_.clear();
    return written;
}

/// A second name for what lies there costs no space and cannot be half done. Where that is not
/// possible (a folder, a loop of links, a file system without hard links) the thing itself moves
/// aside.
Result<void> SettingsStore::keepCopy(const std::string& target) {
    struct stat status = {};
    const int found = fileSystem_.lstat(target.c_str(), status);
    if (found == -ENOENT) return {};  // gone meanwhile: nothing to keep
    if (found < 0) return {ErrorCode::CannotWrite, describeError(-found)};
    const bool ordinary = S_ISREG(status.st_mode);
    for (int number = 1; number <= kMaxCopies; ++number) {
        const std::string copy = copyName(target, number);
        int kept = ordinary ? fileSystem_.link(target.c_str(), copy.c_str()) : -EPERM;
        if (kept < 0 && kept != -EEXIST) {
            kept = fileSystem_.renameNoReplace(target.c_str(), copy.c_str());
        }
        if (kept == -EEXIST) {
            if (!ordinary || !isSameFile(copy, status, fileSystem_)) continue;
            kept = 0;  // by an earlier try, whose write failed
        }
        if (kept < 0) return {ErrorCode::CannotWrite, describeError(-kept)};
        // The copy's name must be on disk before the new file can take the old one's place.
        return flushFolder(folderOfPath(target), fileSystem_);
    }
    // No program may be kept from saving for ever: the youngest copy gives way.
    const int moved = fileSystem_.rename(target.c_str(), copyName(target, kMaxCopies).c_str());
    if (moved < 0) return {ErrorCode::CannotWrite, describeError(-moved)};
    return flushFolder(folderOfPath(target), fileSystem_);
}

Result<void> SettingsStore::reload() try {
    const Result<void> written = synchronize();
    if (path_.empty()) return written;
    OnDisk onDisk = readFile();
    foundUnreadable_ = foundUnreadable_ || onDisk.readability != Readability::Whole;
    SettingValues now = std::move(onDisk.values);
    for (const auto& [key, value] : changes_) {
        if (value) now.insert_or_assign(key, *value);
        if (!value) now.erase(key);
    }
    takeOver(std::move(now));
    return written;
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, "Out of memory"};
}

/// Makes `now` the values and tells of each key that is not as before. Whatever needs memory comes
/// before the change.
void SettingsStore::takeOver(SettingValues now) {
    std::vector<std::string> changed;
    std::uint64_t keySetChanges = 0;
    SettingValues either = values_;
    either.insert(now.begin(), now.end());
    for (const auto& [key, value] : either) {
        const auto old = values_.find(key);
        const auto fresh = now.find(key);
        const bool comesOrGoes = (old == values_.end()) != (fresh == now.end());
        keySetChanges += comesOrGoes ? 1 : 0;
        if (comesOrGoes || old->second != fresh->second) changed.push_back(key);
    }
    values_.swap(now);
    keySetChanges_ += keySetChanges;
    for (const std::string& key : changed) notify(key);
}

SettingsStore::OnDisk SettingsStore::readFile() const {
    struct stat status = {};
    // Opening a named pipe would wait for somebody to write into it.
    if (fileSystem_.stat(path_.c_str(), status) == 0 && S_ISFIFO(status.st_mode)) {
        return {{}, Readability::PartlyOrNot};
    }
    const Result<std::vector<std::uint8_t>> bytes =
        readWholeFile(path_, kMaxFileBytes, fileSystem_);
    if (!bytes) {
        const bool absent = bytes.error().code == ErrorCode::NotFound;
        return {{}, absent ? Readability::Whole : Readability::PartlyOrNot};
    }
    ParsedSettings parsed = parseSettings(*bytes);
    return {std::move(parsed.values), parsed.whole ? Readability::Whole : Readability::PartlyOrNot};
}

}  // namespace skarnel
