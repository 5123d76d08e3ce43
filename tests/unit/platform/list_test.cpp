// The fallible list at its limits.
#include <gtest/gtest.h>

#include <cstdint>

#include "host/handset/handset.h"
#include "platform/memory.h"

namespace qv {
namespace {

TEST(ListTest, GrowsAndKeepsItsItems) {
  List<std::uint32_t> list;
  for (std::uint32_t i = 0; i < 1000; ++i) ASSERT_TRUE(list.Append(i));
  for (std::uint32_t i = 0; i < 1000; ++i) ASSERT_EQ(list[i], i);
  EXPECT_EQ(list.size(), 1000u);
}

TEST(ListTest, IsAsItWasWhenThereIsNoMemory) {
  List<std::uint32_t> list;
  ASSERT_TRUE(list.Append(7u));
  handset::FailCallOf("realloc", 1);
  EXPECT_FALSE(list.Resize(1000));
  EXPECT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0], 7u);
}

TEST(ListTest, RefusesASizeThatNoAddressSpaceHolds) {
  List<std::uint64_t> list;
  EXPECT_FALSE(list.Resize(0x20000001));
  EXPECT_FALSE(list.Reserve(std::size_t(-1)));
  EXPECT_TRUE(list.empty());
}

}  // namespace
}  // namespace qv
