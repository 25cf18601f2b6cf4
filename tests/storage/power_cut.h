// What a power cut may leave: the calls of a write are recorded, and after each prefix of them
// every state is built that a file system may show after the restart. Bytes count as on disk only
// after a flush of their file, names only after a flush of their folder; without one any subset
// of the pending names may have arrived, and of pending bytes none, half, all, or zeros.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "storage/fake_file_systems.h"

namespace skarnel::test {

using Inode = int;

enum class Kind { Create, Write, FlushFile, Rename, Link, Unlink, FlushFolder };

struct Operation {
    Kind kind;
    std::string name;   // Create, Link, Rename: the name that it gives; Unlink: that it takes
    std::string other;  // Rename: the name that it takes
    Inode inode = 0;
    std::string bytes;  // Write
};

inline std::string lastComponent(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

/// Performs and records what changes one folder.
class RecordingFileSystem final : public InterceptedFileSystem {
  public:
    std::vector<Operation> operations;
    std::map<std::string, Inode> names;  // as the running system sees them

    int open(const char* path, int flags, mode_t mode) override {
        const int descriptor = real_.open(path, flags, mode);
        if (descriptor < 0) return descriptor;
        const std::string name = lastComponent(path);
        if ((flags & O_DIRECTORY) != 0) {
            openInodes_[descriptor] = kFolder;
        } else {
            if (names.find(name) == names.end()) {
                names[name] = ++lastInode;
                operations.push_back({Kind::Create, name, "", lastInode, ""});
            }
            openInodes_[descriptor] = names[name];
        }
        return descriptor;
    }
    ssize_t write(int descriptor, const void* bytes, std::size_t count) override {
        const ssize_t written = real_.write(descriptor, bytes, count);
        operations.push_back({Kind::Write, "", "", openInodes_[descriptor],
                              std::string(static_cast<const char*>(bytes), count)});
        return written;
    }
    int fsync(int descriptor) override {
        const Inode inode = openInodes_[descriptor];
        operations.push_back(
            {inode == kFolder ? Kind::FlushFolder : Kind::FlushFile, "", "", inode, ""});
        return real_.fsync(descriptor);
    }
    int rename(const char* from, const char* to) override { return move(from, to); }
    int renameNoReplace(const char* from, const char* to) override { return move(from, to); }
    int link(const char* from, const char* to) override {
        const Inode inode = names.at(lastComponent(from));
        names[lastComponent(to)] = inode;
        operations.push_back({Kind::Link, lastComponent(to), "", inode, ""});
        return real_.link(from, to);
    }
    int unlink(const char* path) override {
        names.erase(lastComponent(path));
        operations.push_back({Kind::Unlink, lastComponent(path), "", 0, ""});
        return real_.unlink(path);
    }

    Inode lastInode = 0;

  private:
    static constexpr Inode kFolder = -1;
    int before(const std::string&, const std::string&) override { return 0; }
    int move(const char* from, const char* to) {
        const Inode inode = names.at(lastComponent(from));
        names.erase(lastComponent(from));
        names[lastComponent(to)] = inode;
        operations.push_back({Kind::Rename, lastComponent(to), lastComponent(from), inode, ""});
        return real_.rename(from, to);
    }
    std::map<int, Inode> openInodes_;
};

using Names = std::map<std::string, Inode>;
using Contents = std::map<Inode, std::string>;
using State = std::map<std::string, std::string>;  // what lies under each name after the restart

inline void applyName(Names& names, const Operation& operation) {
    if (operation.kind == Kind::Rename) names.erase(operation.other);
    if (operation.kind == Kind::Unlink) {
        names.erase(operation.name);
    } else {
        names[operation.name] = operation.inode;
    }
}

/// What of the bytes that were not flushed a file may show.
inline std::vector<std::string> possibleContents(const std::string& flushed,
                                                 const std::string& pending) {
    if (pending.empty()) return {flushed};
    return {flushed, flushed + pending.substr(0, pending.size() / 2), flushed + pending,
            flushed + std::string(pending.size(), '\0')};
}

/// Calls `check` with every state that may follow a power cut after the given operations.
inline void forEachState(const Names& namesBefore, const Contents& contentsBefore,
                         const std::vector<Operation>& operations,
                         const std::function<void(const State&)>& check) {
    Names durableNames = namesBefore;
    Contents flushed = contentsBefore;
    Contents pendingBytes;
    std::vector<Operation> pendingNames;
    for (const Operation& operation : operations) {
        switch (operation.kind) {
            case Kind::Write:
                pendingBytes[operation.inode] += operation.bytes;
                break;
            case Kind::FlushFile:
                flushed[operation.inode] += std::exchange(pendingBytes[operation.inode], "");
                break;
            case Kind::FlushFolder:
                for (const Operation& pending : pendingNames) applyName(durableNames, pending);
                pendingNames.clear();
                break;
            default:
                pendingNames.push_back(operation);
        }
    }
    for (unsigned subset = 0; subset < 1U << pendingNames.size(); ++subset) {
        Names names = durableNames;
        for (std::size_t i = 0; i < pendingNames.size(); ++i) {
            if ((subset >> i & 1U) != 0) applyName(names, pendingNames[i]);
        }
        for (std::size_t variant = 0; variant < 4; ++variant) {
            State state;
            for (const auto& [name, inode] : names) {
                const auto contents = possibleContents(flushed[inode], pendingBytes[inode]);
                state[name] = contents[std::min(variant, contents.size() - 1)];
            }
            check(state);
        }
    }
}

/// Checks the states after every prefix; gives the number of states.
inline int cutPowerEverywhere(const Names& names, const Contents& contents,
                              const std::vector<Operation>& operations,
                              const std::function<void(const State&)>& check) {
    int states = 0;
    for (std::size_t length = 0; length <= operations.size(); ++length) {
        SCOPED_TRACE("after " + std::to_string(length) + " operations");
        forEachState(names, contents,
                     {operations.begin(), operations.begin() + static_cast<std::ptrdiff_t>(length)},
                     [&](const State& state) {
                         ++states;
                         check(state);
                     });
    }
    return states;
}

inline std::string textIn(const State& state, const std::string& name) {
    const auto found = state.find(name);
    return found == state.end() ? "(none)" : found->second;
}

}  // namespace skarnel::test
