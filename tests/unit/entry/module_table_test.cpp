// The module table against the one that callers were promised: modules that answer 0 either way are seen only here.
#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "entry/dispatch.h"

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

TEST(ModuleTableTest, AResultIsReportedAsItsCellSays) {
  constexpr Result kFailed{0x1000005};
  EXPECT_EQ(Reported(kFailed, Report::kKept, 0x20000000), 0x21000005u);
  EXPECT_EQ(Reported(kFailed, Report::kRaw, 0x20000000), 0x1000005u);
  EXPECT_EQ(Reported(kFailed, Report::kDropped, 0x20000000), 0u);
  for (const Report report : {Report::kKept, Report::kRaw, Report::kDropped}) {
    EXPECT_EQ(Reported(Result::kOk, report, 0x20000000), 0u) << "success is never flagged";
  }
}

TEST(ModuleTableTest, OnlyTheSixteenModulesAreFound) {
  for (std::int32_t id = 1; id <= 16; ++id) EXPECT_EQ(FindModule(id)->id, id);
  for (const std::int32_t id : {0, 17, -1}) EXPECT_EQ(FindModule(id), nullptr);
}

}  // namespace
}  // namespace qv
