// The page renderer's processes of this test.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace skarnel::test_page {

/// The parent of a process; 0 when it is gone.
inline int parentOf(int process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/stat");
    std::string name;
    char state = 0;
    int parent = 0;
    std::getline(status, name, ')');
    return status >> state >> parent ? parent : 0;
}

inline bool isEngineProcess(int process) {
    std::ifstream command("/proc/" + std::to_string(process) + "/cmdline");
    std::string path;
    std::getline(command, path, '\0');
    return path.ends_with("QtWebEngineProcess");
}

/// The processes that draw this test's pages: forked by a process of the engine that is a child of
/// this one.
inline std::vector<int> ourRenderers() {
    std::vector<int> ours;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const int process = std::atoi(entry.path().filename().c_str());
        if (process <= 0 || !isEngineProcess(process)) continue;
        const int parent = parentOf(process);
        const bool isRenderer =
            parent > 0 && isEngineProcess(parent) && parentOf(parent) == ::getpid();
        if (isRenderer) ours.push_back(process);
    }
    return ours;
}

}  // namespace skarnel::test_page
