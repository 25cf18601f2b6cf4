// What a test tells a codec that stands in for a real one: words and numbers in the environment,
// since a library that is loaded late shares nothing else with the program.
#pragma once

#include <cstdlib>
#include <sstream>
#include <string>

namespace skarnel::testing {

inline constexpr char kToldVariable[] = "SKARNEL_TEST_CODEC";

/// The number behind "word=" among the words told, 1 for the bare word, `otherwise` without it.
inline long toldNumber(const std::string& word, long otherwise) {
    const char* told = std::getenv(kToldVariable);
    std::istringstream words(told == nullptr ? "" : told);
    for (std::string each; words >> each;) {
        if (each == word) return 1;
        if (each.starts_with(word + "=")) return std::stol(each.substr(word.size() + 1));
    }
    return otherwise;
}

inline bool isTold(const std::string& word) {
    return toldNumber(word, 0) != 0;
}

/// Tells the codec for as long as it lives.
class Told {
  public:
    explicit Told(const std::string& words) { ::setenv(kToldVariable, words.c_str(), 1); }
    ~Told() { ::unsetenv(kToldVariable); }
    Told(const Told&) = delete;
    Told& operator=(const Told&) = delete;
};

}  // namespace skarnel::testing
