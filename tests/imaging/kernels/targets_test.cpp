#include "imaging/kernels/targets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

namespace skarnel::kernels {
namespace {

/// What the kernel says the first processor can do and lets programs use; none on other systems.
std::set<std::string> flagsOfProcessor() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("flags", 0) != 0) continue;
        std::istringstream words(line.substr(line.find(':') + 1));
        return {std::istream_iterator<std::string>(words), {}};
    }
    return {};
}

bool hasAll(const std::set<std::string>& flags, std::initializer_list<const char*> wanted) {
    return std::all_of(wanted.begin(), wanted.end(),
                       [&](const char* flag) { return flags.count(flag) > 0; });
}

TEST(Targets, AreThoseThatTheKernelKnowsOf) {
    const std::set<std::string> flags = flagsOfProcessor();
    if (flags.empty() || supportedTargets().empty()) GTEST_SKIP() << "Nothing to compare";
    std::set<std::string> names;
    for (const Target target : supportedTargets()) names.insert(targetName(target));
    EXPECT_EQ(names.count("SSSE3") > 0, hasAll(flags, {"ssse3"}));
    const bool allAreBuilt = !SKARNEL_FEWER_TARGETS;
    EXPECT_EQ(names.count("SSE4") > 0,
              allAreBuilt && hasAll(flags, {"sse4_1", "sse4_2", "pclmulqdq", "aes"}));
    EXPECT_EQ(names.count("AVX2") > 0,
              allAreBuilt && hasAll(flags, {"avx2", "bmi1", "bmi2", "fma", "f16c"}));
    EXPECT_EQ(names.count("AVX3") > 0,
              hasAll(flags, {"avx512f", "avx512vl", "avx512dq", "avx512bw", "avx512cd"}));
}

TEST(Targets, AChosenOneIsTheOnlyOne) {
    const std::vector<Target> all = supportedTargets();
    for (const Target target : all) {
        const ScopedTarget chosen(target);
        EXPECT_EQ(supportedTargets(), std::vector<Target>{target});
    }
    EXPECT_EQ(supportedTargets(), all);
}

TEST(Targets, AreFoundByTheirNamesInAnyCase) {
    if (supportedTargets().empty()) GTEST_SKIP() << "No targets in this build";
    for (const Target target : supportedTargets()) {
        std::string name = targetName(target);
        EXPECT_EQ(targetNamed(name.c_str()), target);
        for (char& letter : name) letter = static_cast<char>(std::tolower(letter));
        EXPECT_EQ(targetNamed(name.c_str()), target) << name;
    }
    EXPECT_EQ(targetNamed("scalar"), kScalarTarget);
    for (const char* other : {"", "avx", "avx22", "SSSE", "none"})
        EXPECT_FALSE(targetNamed(other)) << other;
}

}  // namespace
}  // namespace skarnel::kernels
