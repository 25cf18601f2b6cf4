// Refuses one request for memory after the other.
#pragma once

#include <gtest/gtest.h>

#include "memory/failing_memory.h"

namespace skarnel::testing {

/// Runs `work` with one request after the other refused until none is any more. `work` gives true
/// when what it got is right or a clean error. More than `mayBeLost` blocks left behind fail.
template <typename Work>
void refuseEach(const std::string& name, Refusal refusal, Work work, long mayBeLost = 0) {
    ASSERT_TRUE(work()) << name;  // fills what is kept for good
    long refused = 0;
    for (;; ++refused) {
        const long before = liveBlocks();
        refuseMemory(refused, refusal);
        const bool right = work();
        const long requests = allowMemory();
        const long after = liveBlocks();
        ASSERT_TRUE(right) << name << ", request " << refused;
        if (requests <= refused) break;
        ASSERT_LE(after - before, mayBeLost) << name << ", request " << refused << " left a leak";
        ASSERT_LT(refused, 20000) << name;
    }
    EXPECT_GT(refused, 0) << name;
}

}  // namespace skarnel::testing
