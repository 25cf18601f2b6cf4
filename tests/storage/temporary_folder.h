// A folder of its own for each test, gone afterwards, and short ways to look into it.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace skarnel::test {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name =
            (std::filesystem::temp_directory_path() / "skarnel-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path_ = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

  private:
    std::string path_;
};

inline std::vector<std::uint8_t> bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

inline void putFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

/// "(none)" when it cannot be read, which no test writes.
inline std::string fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return "(none)";
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The long mode multiplies what is repeated at random.
inline bool isLongRun() {
    return std::getenv("SKARNEL_LONG") != nullptr;
}

}  // namespace skarnel::test
