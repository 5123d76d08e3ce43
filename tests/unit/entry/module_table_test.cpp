// The module table against the one that callers were promised: modules that answer 0 either way are seen only here.
#include "entry/module_table.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

namespace qv {
namespace {

/// k kept, d dropped, r raw: desktop export, desktop recover, local export, local recover.
constexpr const char* kPromised[] = {"kkkk", "kkkk", "dddd", "kkkk", "dddd", "dddr", "kkkk", "kkkk",
                                     "kkkk", "kkkk", "kkkk", "kkkk", "kkkk", "dkkd", "ddkd", "kkkk"};

char Letter(Report report) {
  return report == Report::kKept ? 'k' : report == Report::kDropped ? 'd' : 'r';
}

TEST(ModuleTableTest, EachCellIsAsPromised) {
  ASSERT_EQ(std::size(kModuleTable), std::size(kPromised));
  for (std::size_t i = 0; i < std::size(kModuleTable); ++i) {
    const ModuleRow& row = kModuleTable[i];
    EXPECT_EQ(row.id, static_cast<std::int32_t>(i + 1));
    EXPECT_EQ((std::string{Letter(row.desktop_export), Letter(row.desktop_recover), Letter(row.local_export),
                           Letter(row.local_recover)}),
              kPromised[i])
        << row.name;
  }
}

}  // namespace
}  // namespace qv
