// Rows through memory that two processes share.
#include "imaging/io/row_ring.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace skarnel::io {
namespace {

TEST(RowRing, GivesEveryPieceInItsTurnToAnotherProcess) {
    constexpr std::uint32_t kPieces = 400;  // a hundred times around
    const auto file = makeRingFile();
    ASSERT_TRUE(file);
    int told[2];
    ASSERT_EQ(::pipe(told), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        auto ring = RowRing::map(file->number());
        if (!ring) ::_exit(1);
        for (std::uint32_t i = 0; i < kPieces; ++i) {
            std::fill_n(ring->freeSlot(), kRingSlotBytes, static_cast<std::uint8_t>(i));
            ring->filled();
            if (::write(told[1], "x", 1) != 1) ::_exit(2);
        }
        ::_exit(0);
    }
    auto ring = RowRing::map(file->number());
    ASSERT_TRUE(ring);
    std::vector<std::uint8_t> piece(kRingSlotBytes);
    for (std::uint32_t i = 0; i < kPieces; ++i) {
        char byte = 0;
        ASSERT_EQ(::read(told[0], &byte, 1), 1);
        ring->take(piece.data(), piece.size());
        const auto expected = static_cast<std::uint8_t>(i);
        ASSERT_TRUE(std::all_of(piece.begin(), piece.end(),
                                [&](std::uint8_t value) { return value == expected; }))
            << "piece " << i;
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    ::close(told[0]);
    ::close(told[1]);
}

TEST(RowRing, GivesTheSameSlotUntilItIsFilled) {
    const auto file = makeRingFile();
    ASSERT_TRUE(file);
    auto filling = RowRing::map(file->number());
    auto taking = RowRing::map(file->number());
    ASSERT_TRUE(filling && taking);
    EXPECT_EQ(filling->freeSlot(), filling->freeSlot());
    std::memcpy(filling->freeSlot(), "one", 3);
    filling->filled();
    std::memcpy(filling->freeSlot(), "two", 3);
    filling->filled();
    char text[4] = {};
    taking->take(text, 3);
    EXPECT_STREQ(text, "one");
    taking->take(text, 3);
    EXPECT_STREQ(text, "two");
}

TEST(RowRing, MapsNothingButItsOwnFiles) {
    EXPECT_FALSE(RowRing::map(-1));
    const FileDescriptor other(::memfd_create("other", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    const auto ring = makeRingFile();
    ASSERT_TRUE(ring);
    const off_t size = ::lseek(ring->number(), 0, SEEK_END);
    ASSERT_EQ(::ftruncate(other.number(), size), 0);
    EXPECT_FALSE(RowRing::map(other.number())) << "it could still be made smaller";
    ASSERT_EQ(::ftruncate(other.number(), size - 1), 0);
    ASSERT_EQ(::fcntl(other.number(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL), 0);
    EXPECT_FALSE(RowRing::map(other.number())) << "it is shorter";
}

TEST(RowRing, HasAFileThatNobodyCanResize) {
    const auto ring = makeRingFile();
    ASSERT_TRUE(ring);
    EXPECT_NE(::ftruncate(ring->number(), 0), 0);
    EXPECT_NE(::ftruncate(ring->number(), 1 << 30), 0);
}

}  // namespace
}  // namespace skarnel::io
