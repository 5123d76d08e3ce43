// The handset's malloc: its counts show what the agent leaves behind, and its guards show where it strays.
// What must end the process is tested to end it, with the message that says why.
#include <cstring>

#include "tests/handset/handset_fixture.h"

namespace handset {
namespace {

// With every kind of block, since both kinds must behave alike.
class MemoryTest : public HandsetTest, public testing::WithParamInterface<bool> {
 protected:
  MemoryTest() { SetGuardedBlocks(GetParam()); }

  static char* Allocate(std::size_t size) { return static_cast<char*>(coredll::malloc(size)); }
};

INSTANTIATE_TEST_SUITE_P(Blocks, MemoryTest, testing::Bool(),
                         [](const auto& test) { return test.param ? "Guarded" : "Plain"; });

TEST_P(MemoryTest, BlocksAreCountedUntilTheyAreFreed) {
  char* first = Allocate(100);
  char* second = Allocate(5000);
  EXPECT_EQ(TakeCensus(), Census{.blocks = 2});
  EXPECT_EQ(AllocatedBytes(), 5100u);
  EXPECT_EQ(BlockSize(second), 5000u);
  coredll::free(first);
  coredll::free(nullptr);
  EXPECT_EQ(AllocatedBytes(), 5000u);
  coredll::free(second);
  EXPECT_EQ(TakeCensus(), Census());
  EXPECT_EQ(PeakAllocatedBytes(), 5100u);
  ResetPeakMemory();
  EXPECT_EQ(PeakAllocatedBytes(), 0u);
}

TEST_P(MemoryTest, EveryByteOfAnAlignedBlockCanBeWritten) {
  for (std::size_t size = 1; size < 40; ++size) {
    char* block = Allocate(size);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 8, 0u);
    std::memset(block, 'x', size);
    coredll::free(block);
  }
}

TEST_P(MemoryTest, EmptyBlocksAreBlocksOfTheirOwn) {
  char* first = Allocate(0);
  char* second = Allocate(0);
  ASSERT_NE(first, nullptr);
  EXPECT_NE(first, second);
  coredll::free(first);
  coredll::free(second);
}

TEST_P(MemoryTest, ReallocKeepsTheContent) {
  char* block = static_cast<char*>(coredll::realloc(nullptr, 3));
  std::memcpy(block, "abc", 3);
  block = static_cast<char*>(coredll::realloc(block, 10000));
  EXPECT_EQ(std::string(block, 3), "abc");
  block = static_cast<char*>(coredll::realloc(block, 2));
  EXPECT_EQ(std::string(block, 2), "ab");
  EXPECT_EQ(AllocatedBytes(), 2u);
  EXPECT_EQ(PeakAllocatedBytes(), 10000u);
  EXPECT_EQ(coredll::realloc(block, 0), nullptr);
  EXPECT_EQ(TakeCensus(), Census());
}

TEST_P(MemoryTest, WhatAHandsetCannotHaveIsRefused) {
  EXPECT_EQ(Allocate((512u << 20) + 1), nullptr);
  EXPECT_EQ(Allocate(0xFFFF'FFFF), nullptr);
  EXPECT_EQ(coredll::GetLastError(), 8u);
  char* block = Allocate(3);
  std::memcpy(block, "abc", 3);
  EXPECT_EQ(coredll::realloc(block, 0x8000'0000), nullptr);
  EXPECT_EQ(std::string(block, 3), "abc") << "the block stays";
  EXPECT_EQ(TakeCensus(), Census{.blocks = 1});
  EXPECT_EQ(AllocatedBytes(), 3u);
}

TEST_P(MemoryTest, ABlockIsFreedInEitherMode) {
  char* block = Allocate(10);
  std::memcpy(block, "0123456789", 10);
  SetGuardedBlocks(!GetParam());
  block = static_cast<char*>(coredll::realloc(block, 20));
  EXPECT_EQ(std::string(block, 10), "0123456789");
  SetGuardedBlocks(GetParam());
  coredll::free(block);
  EXPECT_EQ(TakeCensus(), Census());
}

TEST_P(MemoryTest, FreeingTwiceOrFreeingWhatIsNoBlockEndsTheProcess) {
  char* block = Allocate(10);
  EXPECT_DEATH(coredll::free(block + 1), "no block");
  coredll::free(block);
  EXPECT_DEATH(coredll::free(block), "freed already");
  EXPECT_DEATH(coredll::realloc(block, 20), "freed already");
}

using GuardedBlocksTest = HandsetTest;

TEST_F(GuardedBlocksTest, DamageNextToABlockEndsTheProcessWhenItIsFreed) {
  SetGuardedBlocks(true);
  auto* block = static_cast<volatile char*>(coredll::malloc(5));
  auto* start = const_cast<char*>(block);
  EXPECT_DEATH((block[5] = 1, coredll::free(start)), "past the end of a block");
  EXPECT_DEATH((block[-1] = 1, coredll::free(start)), "in front of a block");
}

TEST_F(GuardedBlocksTest, AccessBehindTheGuardBytesEndsTheProcessAtOnce) {
  SetGuardedBlocks(true);
  auto* block = static_cast<volatile char*>(coredll::malloc(16));
  EXPECT_DEATH(block[16] = 1, "");
  EXPECT_DEATH(static_cast<void>(block[16]), "");
  block[15] = 1;
  coredll::free(const_cast<char*>(block));
}

}  // namespace
}  // namespace handset
