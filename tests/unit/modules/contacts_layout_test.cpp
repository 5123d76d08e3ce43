// The chosen flag of an exported contact: its second test looks at a byte that an export always clears, so only here
// can it be seen to hold.
#include "modules/contacts/contacts_layout.h"

#include <gtest/gtest.h>

#include <vector>

namespace qv::contacts {
namespace {

struct Flags {
  std::uint8_t first, second, behind;
  std::uint8_t chosen = 0;
  bool operator==(const Flags&) const = default;
};

Flags Taken(const Flags& flags) {
  std::vector<std::uint8_t> exchange(kContactExchangeSize);
  exchange[1120] = flags.first;
  exchange[1121] = flags.second;
  exchange[1122] = flags.behind;
  TakeChosenFlag(exchange.data());
  return {exchange[1120], exchange[1121], exchange[1122], exchange[1124]};
}

TEST(ContactsLayoutTest, TheFirstFlagIsChosenWhenItIsAbove128) {
  EXPECT_EQ(Taken({129, 200, 200}), (Flags{1, 200, 200, 1}));
  EXPECT_EQ(Taken({255, 0, 0}), (Flags{127, 0, 0, 1}));
  EXPECT_EQ(Taken({128, 200, 0}), (Flags{128, 200, 0, 0}));
}

TEST(ContactsLayoutTest, TheByteBehindTheFlagsChoosesTheSecondWithTheFirstOnesValue) {
  EXPECT_EQ(Taken({5, 200, 129}), (Flags{5, 5, 129, 2}));
  EXPECT_EQ(Taken({128, 7, 255}), (Flags{128, 0, 255, 2}));
  EXPECT_EQ(Taken({5, 200, 128}), (Flags{5, 200, 128, 0}));
}

}  // namespace
}  // namespace qv::contacts
