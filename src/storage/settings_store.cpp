#include "storage/settings_store.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <new>
#include <utility>

#include "storage/left_overs.h"
#include "storage/safe_file.h"
#include "storage/settings_json.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

/// A hundred times what all settings take; anything larger is not a settings file.
constexpr std::uint64_t kMaxFileBytes = std::uint64_t{1} << 20;

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

std::string SettingsStore::pathWithin(const UserFolders& folders) {
    // A relative path there is invalid and to be ignored, says the base directory rule.
    const auto isFolder = [](const char* path) { return path != nullptr && path[0] == '/'; };
    std::string path;
    if (isFolder(folders.config)) {
        path = folders.config;
    } else if (isFolder(folders.home)) {
        path.append(folders.home).append("/.config");
    } else if (isFolder(folders.accountHome)) {
        path.append(folders.accountHome).append("/.config");
    } else {
        return path;
    }
    return path.append("/skarnel/settings.json");
}

std::string SettingsStore::defaultPath() {
    std::string path = pathWithin({std::getenv("XDG_CONFIG_HOME"), std::getenv("HOME"), nullptr});
    if (!path.empty()) return path;
    // Asked last: it may have to ask a server.
    const passwd* account = ::getpwuid(::geteuid());
    return pathWithin({nullptr, nullptr, account == nullptr ? nullptr : account->pw_dir});
}

SettingsStore::SettingsStore(std::string path, FileSystem& fileSystem)
    : path_(std::move(path)), fileSystem_(fileSystem) {
    if (path_.empty()) return;
    try {
        OnDisk found = readFile();
        values_ = std::move(found.values);
        foundUnreadable_ = found.readability != Readability::Whole;
        if (found.unread) sight_ = Sight::FirstTry;
    } catch (const std::bad_alloc&) {
        values_.clear();
        sight_ = Sight::FirstTry;
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
    if (sight_ == Sight::FirstTry) blind_.insert(name);
    changes_.insert_or_assign(name, value);
    if (sight_ == Sight::NeverSeen) blind_.erase(name);
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
    if (sight_ == Sight::NeverSeen) blind_.erase(name);
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

Result<void> SettingsStore::synchronize() {
    if (changes_.empty()) return {};
    Result<void> written = write();
    if (sight_ == Sight::FirstTry) sight_ = Sight::NeverSeen;
    return written;
}

Result<void> SettingsStore::write() try {
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
    if (Result<void> made = makeFolders(folderOfPath(target), fileSystem_, NewOwner::FoldersOwner);
        !made) {
        return made;
    }
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
    if (onDisk.unread) return *onDisk.unread;
    if (foundUnreadable_ || onDisk.readability != Readability::Whole) {
        if (Result<void> kept = keepDamagedCopy(target, fileSystem_); !kept) return kept;
        systemLog(target + ": What could not be read is kept beside it");
        foundUnreadable_ = false;
    }
    yieldTo(onDisk.values);
    addKnown(onDisk);
    addChanges(onDisk.values);
    const std::string text = serializeSettings(onDisk.values);
    Result<void> written = writeFileSafely(target, bytesOf(text), Overwrite::Allow, fileSystem_,
                                           NewOwner::FoldersOwner);
    if (written) changes_.clear();
    return written;
}

Result<void> SettingsStore::reload() try {
    const Result<void> written = synchronize();
    if (path_.empty()) return written;
    OnDisk onDisk = readFile();
    if (onDisk.unread) return *onDisk.unread;
    foundUnreadable_ = foundUnreadable_ || onDisk.readability != Readability::Whole;
    yieldTo(onDisk.values);
    addKnown(onDisk);
    addChanges(onDisk.values);
    takeOver(std::move(onDisk.values));
    return written;
} catch (const std::bad_alloc&) {
    return {ErrorCode::OutOfMemory, "Out of memory"};
}

/// What a damaged file does not tell may have been read before.
void SettingsStore::addKnown(OnDisk& onDisk) const {
    if (onDisk.readability == Readability::Whole) return;
    onDisk.values.insert(values_.begin(), values_.end());
}

void SettingsStore::addChanges(SettingValues& values) const {
    for (const auto& [key, value] : changes_) {
        if (value) values.insert_or_assign(key, *value);
        if (!value) values.erase(key);
    }
}

/// The first time that the file can be read, what was set before gives way to it. After the first
/// try the user has seen what was set, so that it stays in use here until the next reload.
void SettingsStore::yieldTo(const SettingValues& stored) {
    if (sight_ == Sight::Seen) return;
    for (const std::string& key : blind_) {
        if (stored.contains(key)) changes_.erase(key);
    }
    if (sight_ == Sight::FirstTry) {
        SettingValues now = stored;
        addChanges(now);
        takeOver(std::move(now));
    }
    blind_.clear();
    sight_ = Sight::Seen;
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
    const Result<std::vector<std::uint8_t>> bytes =
        readSharedFile(path_, kMaxFileBytes, fileSystem_);
    if (!bytes) {
        if (mayBeReadLater(bytes.error())) return {{}, Readability::Whole, bytes.error()};
        const bool absent = bytes.error().code == ErrorCode::NotFound;
        return {{}, absent ? Readability::Whole : Readability::PartlyOrNot, std::nullopt};
    }
    ParsedSettings parsed = parseSettings(*bytes);
    return {std::move(parsed.values), parsed.whole ? Readability::Whole : Readability::PartlyOrNot,
            std::nullopt};
}

}  // namespace skarnel
