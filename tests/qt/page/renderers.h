// The page renderer's processes of this test.
#pragma once

#include <unistd.h>

#include <algorithm>
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

inline bool isProgram(int process, const std::string& name) {
    std::ifstream command("/proc/" + std::to_string(process) + "/cmdline");
    std::string path;
    std::getline(command, path, '\0');
    return path.ends_with("/" + name);
}

inline bool isEngineProcess(int process) {
    return isProgram(process, "QtWebEngineProcess");
}

/// Every process of the system for which `isWanted`.
template <typename IsWanted>
std::vector<int> processes(IsWanted isWanted) {
    std::vector<int> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const int process = std::atoi(entry.path().filename().c_str());
        if (process > 0 && isWanted(process)) found.push_back(process);
    }
    return found;
}

/// The page renderers that this process, or the given one, has started.
inline std::vector<int> ourPageProcesses(int starter = ::getpid()) {
    return processes([starter](int process) {
        return parentOf(process) == starter && isProgram(process, "skarnel-page-renderer");
    });
}

/// The engine's processes that fork those which draw.
inline std::vector<int> ourZygotes(int starter = ::getpid()) {
    const std::vector<int> ours = ourPageProcesses(starter);
    return processes([&](int process) {
        return isEngineProcess(process) &&
               std::find(ours.begin(), ours.end(), parentOf(process)) != ours.end();
    });
}

/// The processes that draw this test's pages: forked by a process of the engine.
inline std::vector<int> ourRenderers(int starter = ::getpid()) {
    const std::vector<int> zygotes = ourZygotes(starter);
    return processes([&](int process) {
        return isEngineProcess(process) &&
               std::find(zygotes.begin(), zygotes.end(), parentOf(process)) != zygotes.end();
    });
}

}  // namespace skarnel::test_page
