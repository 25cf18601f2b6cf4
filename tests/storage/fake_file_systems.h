// File systems for tests: one that lets chosen calls of the real one fail, and one that records
// what would have to survive a power cut.
#pragma once

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "storage/file_system.h"

namespace skarnel::test {

/// Passes every call on; `before` sees its name first and may answer in its place.
class InterceptedFileSystem : public FileSystem {
  public:
    int open(const char* path, int flags, mode_t mode) override {
        const int answer = before("open", path);
        return answer < 0 ? answer : real_.open(path, flags, mode);
    }
    int close(int descriptor) override {
        const int answer = before("close", "");
        const int result = real_.close(descriptor);  // Linux closes even when it reports a failure
        return answer < 0 ? answer : result;
    }
    ssize_t read(int descriptor, void* bytes, std::size_t count) override {
        const int answer = before("read", "");
        return answer < 0 ? answer : real_.read(descriptor, bytes, count);
    }
    ssize_t write(int descriptor, const void* bytes, std::size_t count) override {
        const int answer = before("write", "");
        return answer < 0 ? answer : real_.write(descriptor, bytes, writable(count));
    }
    int fsync(int descriptor) override {
        const int answer = before("fsync", "");
        return answer < 0 ? answer : real_.fsync(descriptor);
    }
    int fstat(int descriptor, struct stat& status) override {
        const int answer = before("fstat", "");
        return answer < 0 ? answer : real_.fstat(descriptor, status);
    }
    int fchmod(int descriptor, mode_t mode) override {
        const int answer = before("fchmod", "");
        return answer < 0 ? answer : real_.fchmod(descriptor, mode);
    }
    int fchown(int descriptor, uid_t user, gid_t group) override {
        const int answer = before("fchown", "");
        return answer < 0 ? answer : real_.fchown(descriptor, user, group);
    }
    int flock(int descriptor, int operation) override {
        const int answer = before("flock", "");
        return answer < 0 ? answer : real_.flock(descriptor, operation);
    }
    int setBlocking(int descriptor) override {
        const int answer = before("setBlocking", "");
        return answer < 0 ? answer : real_.setBlocking(descriptor);
    }
    void pause(std::chrono::milliseconds time) override { real_.pause(time); }
    int stat(const char* path, struct stat& status) override {
        const int answer = before("stat", path);
        return answer < 0 ? answer : real_.stat(path, status);
    }
    int lstat(const char* path, struct stat& status) override {
        const int answer = before("lstat", path);
        return answer < 0 ? answer : real_.lstat(path, status);
    }
    int canWrite(const char* path) override {
        const int answer = before("canWrite", path);
        return answer < 0 ? answer : real_.canWrite(path);
    }
    int readlink(const char* path, std::string& target) override {
        const int answer = before("readlink", path);
        return answer < 0 ? answer : real_.readlink(path, target);
    }
    int list(const char* folder, std::vector<std::string>& names) override {
        const int answer = before("list", folder);
        return answer < 0 ? answer : real_.list(folder, names);
    }
    int mkdir(const char* path, mode_t mode) override {
        const int answer = before("mkdir", path);
        return answer < 0 ? answer : real_.mkdir(path, mode);
    }
    int link(const char* from, const char* to) override {
        const int answer = before("link", from);
        return answer < 0 ? answer : real_.link(from, to);
    }
    int unlink(const char* path) override {
        const int answer = before("unlink", path);
        return answer < 0 ? answer : real_.unlink(path);
    }
    int rename(const char* from, const char* to) override {
        const int answer = before("rename", from);
        return answer < 0 ? answer : real_.rename(from, to);
    }
    int renameNoReplace(const char* from, const char* to) override {
        const int answer = before("renameNoReplace", from);
        return answer < 0 ? answer : real_.renameNoReplace(from, to);
    }

  protected:
    /// 0 to pass the call on, or the negative error number that it shall give.
    virtual int before(const std::string& call, const std::string& path) = 0;
    /// How much of a write is let through.
    virtual std::size_t writable(std::size_t count) { return count; }

    FileSystem& real_ = systemFileSystem();
};

enum class Repeat { Once, FromThenOn };

/// In place of an error number: a write takes half of its bytes. Other calls do their work.
inline constexpr int kShortWrite = -1;
/// The same, and then there is no space for the rest, as on a disk that fills up.
inline constexpr int kShortWriteThenNoSpace = -2;

/// Fails the call of a given number (from 0), and with FromThenOn all later ones too. The calls of
/// `lacking` are refused always, each with its own error, as a file system without them does.
class FaultyFileSystem final : public InterceptedFileSystem {
  public:
    FaultyFileSystem(int failingCall, int error, Repeat repeat,
                     std::map<std::string, int> lacking = {})
        : failingCall_(failingCall), error_(error), repeat_(repeat), lacking_(std::move(lacking)) {}

    const std::vector<std::string>& calls() const { return calls_; }

    /// The disk itself is left alone: thousands of flushes would take minutes on a busy one.
    int fsync(int) override { return before("fsync", ""); }

  private:
    int before(const std::string& call, const std::string&) override {
        const int number = static_cast<int>(calls_.size());
        calls_.push_back(call);
        const bool isChosen =
            repeat_ == Repeat::Once ? number == failingCall_ : number >= failingCall_;
        fails_ = failingCall_ >= 0 && isChosen;
        if (error_ == kShortWriteThenNoSpace && call == "write" && halved_) return -ENOSPC;
        if (fails_ && error_ > 0) return -error_;
        const auto lacks = lacking_.find(call);
        return lacks == lacking_.end() ? 0 : -lacks->second;
    }
    std::size_t writable(std::size_t count) override {
        if (!fails_) return count;
        halved_ = true;
        return (count + 1) / 2;
    }

    int failingCall_;
    int error_;
    Repeat repeat_;
    std::map<std::string, int> lacking_;
    std::vector<std::string> calls_;
    bool fails_ = false;   // the call that is being made
    bool halved_ = false;  // a write
};

/// Fails every call of one name.
class RefusingFileSystem final : public InterceptedFileSystem {
  public:
    RefusingFileSystem(std::map<std::string, int> errors) : errors_(std::move(errors)) {}
    int count(const std::string& call) const {
        const auto found = counts_.find(call);
        return found == counts_.end() ? 0 : found->second;
    }

  private:
    int before(const std::string& call, const std::string&) override {
        ++counts_[call];
        const auto found = errors_.find(call);
        return found == errors_.end() ? 0 : -found->second;
    }

    std::map<std::string, int> errors_;
    std::map<std::string, int> counts_;
};

/// Lets at most `most` bytes of each write through, as a signal or a nearly full disk does.
class ShortWritingFileSystem final : public InterceptedFileSystem {
  public:
    explicit ShortWritingFileSystem(std::size_t most) : most_(most) {}
    int writes() const { return writes_; }

  private:
    int before(const std::string&, const std::string&) override { return 0; }
    std::size_t writable(std::size_t count) override {
        ++writes_;
        return count < most_ ? count : most_;
    }
    std::size_t most_;
    int writes_ = 0;
};

}  // namespace skarnel::test
