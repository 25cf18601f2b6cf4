// Runs a fuzz target over files and folders, and over every prefix of the small ones.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::size_t replay(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> text{std::istreambuf_iterator<char>(in), {}};
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    constexpr std::size_t kSmall = 600;
    if (bytes.size() > kSmall) return 1;
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const std::vector<std::uint8_t> prefix(bytes.begin(),
                                               bytes.begin() + static_cast<long>(size));
        LLVMFuzzerTestOneInput(prefix.data(), prefix.size());
    }
    return bytes.size() + 1;
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t runs = 0;
    for (int i = 1; i < count; ++i) {
        if (!std::filesystem::is_directory(arguments[i])) {
            runs += replay(arguments[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[i])) {
            if (entry.is_regular_file()) runs += replay(entry.path());
        }
    }
    std::printf("%zu inputs\n", runs);
    return runs > 0 ? 0 : 1;
}
