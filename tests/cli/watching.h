// Waits until a program's --watch stands.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "cli/process.h"

namespace skarnel::test {

/// The text of one of the kernel's files on a process; empty when what it tells of is gone.
inline std::string kernelText(const std::filesystem::path& path) {
    std::string text;
    if (FILE* file = std::fopen(path.c_str(), "re")) {
        char part[512];
        std::size_t count = 0;
        while ((count = std::fread(part, 1, sizeof part, file)) > 0) text.append(part, count);
        std::fclose(file);
    }
    return text;
}

/// Whether the kernel watches a folder for the process; what appears before that is not seen.
inline void waitUntilWatching(const Process& process) {
    const std::string folder = "/proc/" + std::to_string(process.id()) + "/fdinfo";
    for (;;) {
        std::error_code ignored;
        for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
            if (kernelText(entry.path()).find("inotify wd:") != std::string::npos) {
                return;
            }
        }
        ::usleep(1000);
    }
}

/// Stops the process, and comes back when it stands.
inline void halt(const Process& process) {
    process.signal(SIGSTOP);
    siginfo_t stopped = {};
    ::waitid(P_PID, static_cast<id_t>(process.id()), &stopped, WSTOPPED | WNOWAIT);
}

}  // namespace skarnel::test
