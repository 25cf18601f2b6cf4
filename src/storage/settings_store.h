// The user's settings: numbers and flags under keys, in one JSON file that survives damage, full
// disks and several programs at once.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "storage/file_system.h"
#include "storage/shared_file.h"
#include "util/log/result.h"

namespace skarnel {

using SettingValue = std::variant<float, bool>;
using SettingValues = std::map<std::string, SettingValue, std::less<>>;

/// Reading and changing work on memory; only `synchronize` touches the file. What was changed
/// here is merged over what lies on disk by then, so that programs that run at the same time lose
/// none of each other's keys; what others changed is seen after `reload`.
///
/// A file that cannot be read (damaged, wrong types, no permission, a folder in its place) counts
/// as what can be read of it, and what was read of it before; before anything is written it is kept
/// beside as "settings.json.damaged", ".damaged-2" and so on. One that cannot be read at the moment
/// (a disk that fails, no memory) is not replaced: the write fails and is for a later try. Where
/// that happens at the start, what is set until the first `synchronize` ends counts as a new
/// user's defaults: what lies in the file comes first. Floats read back bit for bit, those that are
/// not finite too. Without memory a change does not happen and a write is OutOfMemory. Not for use
/// from two threads.
class SettingsStore {
  public:
    /// What the environment and the system's accounts tell; each may be null.
    struct UserFolders {
        const char* config;       // $XDG_CONFIG_HOME
        const char* home;         // $HOME
        const char* accountHome;  // of the account
    };

    /// CONFIG/skarnel/settings.json, with ~/.config where no CONFIG is set. Empty when the user has
    /// no home: the store then lives in memory.
    static std::string pathWithin(const UserFolders& folders);

    /// That path for the user who runs the program.
    static std::string defaultPath();

    /// Reads the file; a missing one is an empty store. Never writes.
    explicit SettingsStore(std::string path, FileSystem& fileSystem = systemFileSystem());

    bool contains(std::string_view key) const;
    std::optional<SettingValue> valueForKey(std::string_view key) const;  // none when absent
    float floatForKey(std::string_view key) const;  // 0 when absent; a flag counts as 0 or 1
    bool boolForKey(std::string_view key) const;    // false when absent; a number unless it is 0
    void setFloat(std::string_view key, float value);
    void setBool(std::string_view key, bool value);
    void removeObject(std::string_view key);
    std::vector<std::string> keys() const;  // sorted; a copy that later changes leave alone

    /// Counts every change of the key set, so that a loop over it can notice one.
    std::uint64_t keySetChanges() const { return keySetChanges_; }

    /// Called with the key after each change through this object, and for each key that `reload`
    /// found changed. An empty function ends it.
    void setObserver(std::function<void(const std::string& key)> observer);

    /// Writes the changes since the last success, if there are any: lock, read again, merge,
    /// write whole, flush. On failure memory keeps everything and a later call tries again.
    /// CannotWrite when another program keeps the file locked for longer than the patience.
    Result<void> synchronize();

    /// Removes what a killed program's write left beside the file.
    void removeLeftOvers();

    /// Synchronizes, then takes over what lies on disk. A failure to write keeps the own changes.
    Result<void> reload();

    bool hasUnsavedChanges() const { return !changes_.empty(); }
    const std::string& path() const { return path_; }

    /// How long `synchronize` waits for other programs at first; five seconds unless set.
    void setLockPatience(std::chrono::milliseconds patience) {
        lockPatience_ = LockPatience(patience);
    }

  private:
    enum class Readability { Whole, PartlyOrNot };
    struct OnDisk {
        SettingValues values;
        Readability readability = Readability::Whole;
        std::optional<Error> unread;  // at the moment, and why
    };
    enum class Sight {
        Seen,
        FirstTry,   // the file could not be read at the start, and nobody tried to write
        NeverSeen,  // nor when somebody did
    };

    void set(std::string_view key, SettingValue value);
    void notify(const std::string& key);
    void takeOver(SettingValues now);
    OnDisk readFile() const;
    void addKnown(OnDisk& onDisk) const;
    void addChanges(SettingValues& values) const;
    void yieldTo(const SettingValues& stored);
    Result<void> write();
    Result<void> mergeAndWrite(const std::string& target);

    std::string path_;
    FileSystem& fileSystem_;
    SettingValues values_;
    std::map<std::string, std::optional<SettingValue>, std::less<>> changes_;  // none = removed
    bool foundUnreadable_ = false;  // a copy is owed before the next write
    Sight sight_ = Sight::Seen;
    std::set<std::string, std::less<>> blind_;  // what was set in FirstTry
    std::uint64_t keySetChanges_ = 0;
    std::function<void(const std::string&)> observer_;
    LockPatience lockPatience_{std::chrono::milliseconds(5000)};
};

}  // namespace skarnel
