// A fixture for property tests: a random source whose seed is printed and can be given again.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>

namespace skarnel {

/// SKARNEL_TEST_SEED repeats the run that printed it.
class SeededTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const char* given = std::getenv("SKARNEL_TEST_SEED");
        const unsigned seed = given != nullptr
                                  ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                                  : std::random_device{}();
        random_.seed(seed);
        std::printf("seed %u\n", seed);
    }

    int whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

    std::mt19937 random_;
};

}  // namespace skarnel
