// What each of the four entry points tells its caller of each module's result, cell by cell.
#include "tests/support/mail_records.h"

namespace qv_test {
namespace {

/// What is reported of a module whose store library is not on the handset.
struct Row {
  int id;
  std::uint32_t desktop_export;
  std::uint32_t desktop_recover;
  std::uint32_t local_export;
  std::uint32_t local_recover;
};

constexpr std::uint32_t kExported = 0x10000001;
constexpr std::uint32_t kRecovered = 0x20000001;

// Module 3 itself answers 0 when its store is not there. Module 6 is none of these: without its store, which the agent
// imports, no handset loads the agent.
constexpr Row kRows[] = {
    {1, kExported, kRecovered, kExported, kRecovered},
    {2, kExported, kRecovered, kExported, kRecovered},
    {3, 0, 0, 0, 0},
    {4, kExported, kRecovered, kExported, kRecovered},
    {5, 0, 0, 0, 0},
    {7, kExported, kRecovered, kExported, kRecovered},
    {8, kExported, kRecovered, kExported, kRecovered},
    {9, kExported, kRecovered, kExported, kRecovered},
    {10, kExported, kRecovered, kExported, kRecovered},
    {11, kExported, kRecovered, kExported, kRecovered},
    {12, kExported, kRecovered, kExported, kRecovered},
    {13, kExported, kRecovered, kExported, kRecovered},
    {14, 0, kRecovered, kExported, 0},
    {15, 0, 0, kExported, 0},
    {16, kExported, kRecovered, kExported, kRecovered},
};

class ModuleTableTest : public AgentTest, public testing::WithParamInterface<Row> {};

TEST_P(ModuleTableTest, AMissingStoreIsReportedAsTheModulesCellsSay) {
  const Row& row = GetParam();
  const Answer exported = Export(row.id, 1, u"77");
  EXPECT_EQ(exported.code, row.desktop_export);
  EXPECT_EQ(exported.returned, row.desktop_export & ~0x10000000u);
  EXPECT_EQ(exported.mode, 1u);
  EXPECT_EQ(exported.anchor, u"77") << "a store that is not loaded moves no anchor";

  const Answer recovered = Recover(row.id, 2, u"77");
  EXPECT_EQ(recovered.code, row.desktop_recover);
  EXPECT_EQ(recovered.returned, row.desktop_recover & ~0x20000000u);
  EXPECT_EQ(recovered.mode, 2u);
  EXPECT_EQ(recovered.anchor, u"77");

  EXPECT_EQ(LocalExport(row.id), row.local_export);
  EXPECT_EQ(LocalRecover(row.id), row.local_recover);
  EXPECT_THAT(AllFiles(), testing::IsEmpty()) << "a store that is not loaded writes no file";
}

TEST_F(AgentTest, TheNumberOfMessagesThatModule6AppliedIsToldAsItIsAndToALocalRecoverOnly) {
  const ScriptedMailStore store;
  const Answer exported = Export(6, 1, u"77");
  EXPECT_EQ(exported.code, 0u);
  EXPECT_EQ(exported.returned, 0u);
  EXPECT_EQ(exported.anchor, u"77");
  EXPECT_EQ(LocalExport(6), 0u);
  const auto place = [] {
    for (const MailForm& form : kMailForms) WriteFile(form.table, {});
    WriteFile(kMailForms[kUser].table, UserRecord(5));
    WriteFile(kMailForms[kConfig].table, ConfigRecord(5));
    WriteFile(kMailForms[kFolder].table, FolderRecord(3, 5));
    WriteFile(kMailForms[kHeader].table, HeaderRecord(17, 3, 5));
  };
  place();
  const Answer recovered = Recover(6, 2, u"77");
  EXPECT_EQ(recovered.code, 0u);
  EXPECT_EQ(recovered.returned, 0u);
  EXPECT_EQ(recovered.mode, 2u);
  EXPECT_EQ(recovered.anchor, u"77");
  place();
  EXPECT_EQ(LocalRecover(6), 1u);
}

INSTANTIATE_TEST_SUITE_P(Modules, ModuleTableTest, testing::ValuesIn(kRows),
                         [](const auto& module) { return "Module" + std::to_string(module.param.id); });

}  // namespace
}  // namespace qv_test
