// What the window takes away from itself before it opens a file that somebody else made.
#pragma once

#include <string>
#include <vector>

#include "util/log/result.h"
#include "util/walls/landlock.h"

namespace skarnel {

/// Where this process's user keeps files, by the account and the surroundings: the home and the
/// folders for settings, state, data and caches. They need not be there.
std::vector<std::string> ownFolders();

/// The grants that the window keeps. Execution: `programs` and the dynamic loader, nothing else.
/// Changing files: every folder of the root but the system's own (/bin /boot /etc /lib* /sbin /sys
/// /usr, of which /usr/local stays, since people keep files there), and of `own` what lies below
/// those and may be written; of a folder that is yet to be made the nearest above it. `root` is "/"
/// but in tests.
std::vector<FileGrant> windowGrants(const std::vector<std::string>& programs,
                                    const std::vector<std::string>& own = {},
                                    const std::string& root = "/");

/// What is taken away: execution, and changing files unless `user` is the super-user, who may save
/// anywhere, or `root` cannot be listed, where nothing could be granted again.
FileAccess windowLoses(unsigned user, const std::string& root = "/");

/// Restricts this process to `windowGrants` with its `ownFolders`. No save to a place that a person
/// chose may fail by this wall. Call it before a second thread starts.
Result<void> raiseWindowWalls(const std::vector<std::string>& programs);

}  // namespace skarnel
