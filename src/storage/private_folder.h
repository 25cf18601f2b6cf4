// A folder for one program's own temporary files.
#pragma once

#include <string>
#include <string_view>

#include "storage/file_system.h"

namespace skarnel {

/// A new folder of mode 0700 in the system's temporary directory, that goes, with all that is in
/// it, when the object goes. What a killed program left is removed by the next one that makes such
/// a folder: as long as its owner lives it carries a lock.
class PrivateFolder {
  public:
    /// Empty path when it cannot be made.
    explicit PrivateFolder(FileSystem& fileSystem = systemFileSystem());
    /// The same in another directory, with a name that begins with `prefix`; folders of other
    /// prefixes stay.
    PrivateFolder(const std::string& parent, std::string_view prefix,
                  FileSystem& fileSystem = systemFileSystem());
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    const std::string& path() const { return path_; }

  private:
    void make(const std::string& parent, std::string_view prefix);

    FileSystem& fileSystem_;
    std::string path_;
    int lock_ = -1;
};

/// Removes the folders of that prefix that killed programs left in the directory.
void removeAbandonedFolders(const std::string& parent, std::string_view prefix,
                            FileSystem& fileSystem = systemFileSystem());

}  // namespace skarnel
