// What recovers of the modules of two tables, entries and groups, have in common: the change list's rules, and the
// failures that concern no table alone.
#include "tests/support/call_filter_records.h"
#include "tests/support/schedule_records.h"
#include "tests/support/scripted_call_filter_store.h"
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

struct TwoTableModule {
  const char* name;
  std::int32_t id;
  const char16_t* library;
  std::array<const char16_t*, 2> tables, logs;  ///< Of the entries, and of the groups.
  const char16_t* changes;
  const char16_t* id_map;
  std::map<std::u16string, Bytes> more_files;  ///< What a recover needs besides.
  Bytes (*entry)(std::uint32_t id);            ///< Exchange records that say no more than who they are.
  Bytes (*group)(std::uint32_t id);
  std::unique_ptr<ScriptedRecordStore> (*make_store)();
};
void PrintTo(const TwoTableModule& module, std::ostream* out) {
  *out << module.name;
}

TwoTableModule Schedule() {
  return {
      .name = "Schedule",
      .id = 2,
      .library = u"SchedStore.dll",
      .tables = {kEntries, kGroups},
      .logs = {kEntryLog, kGroupLog},
      .changes = kChangeList,
      .id_map = kIdMap,
      .more_files = {},
      .entry = [](std::uint32_t id) { return PlainEntry(id); },
      .group = [](std::uint32_t id) { return ExchangeGroup(id); },
      .make_store = []() -> std::unique_ptr<ScriptedRecordStore> { return std::make_unique<ScriptedScheduleStore>(); }};
}

TwoTableModule CallFilter() {
  return {.name = "CallFilter",
          .id = 11,
          .library = u"CallFilterStore.dll",
          .tables = {kFilterEntries, kFilterGroups},
          .logs = {kFilterEntryLog, kFilterGroupLog},
          .changes = kFilterChanges,
          .id_map = kFilterIdMap,
          .more_files = {{kFilterConfig, ExchangeFilterConfig()}},
          .entry = [](std::uint32_t id) { return PlainFilterEntry(id); },
          .group = PlainFilterGroup,
          .make_store = []() -> std::unique_ptr<ScriptedRecordStore> {
            return std::make_unique<ScriptedCallFilterStore>();
          }};
}

class TwoTableModuleRecoverTest : public AgentTest, public testing::WithParamInterface<TwoTableModule> {
 protected:
  TwoTableModuleRecoverTest() : owned_store_(module_.make_store()), store_(*owned_store_) {}

  void Place(const Bytes& entries, const Bytes& groups = {}) const {
    WriteFile(module_.tables[0], entries);
    WriteFile(module_.tables[1], groups);
    for (const auto& [file, bytes] : module_.more_files) WriteFile(file, bytes);
  }
  Answer RecoverChanges(const Bytes& changes, const Bytes& entries = {}, const Bytes& groups = {}) {
    WriteFile(module_.changes, changes);
    Place(entries, groups);
    return Recover(module_.id, 3);
  }
  void ExpectTablesAreGone() const {
    for (const char16_t* const table : module_.tables) EXPECT_FALSE(Exists(table));
    for (const auto& [file, bytes] : module_.more_files) EXPECT_FALSE(Exists(file));
  }

  const TwoTableModule& module_ = GetParam();

 private:
  std::unique_ptr<ScriptedRecordStore> owned_store_;

 protected:
  ScriptedRecordStore& store_;
};

INSTANTIATE_TEST_SUITE_P(Modules, TwoTableModuleRecoverTest, testing::Values(Schedule(), CallFilter()),
                         testing::PrintToStringParamName());

// --- Change lists ---

TEST_P(TwoTableModuleRecoverTest, TheFirstChangeOfARecordCounts) {
  store_.Add(0, 1, 1);
  const Bytes changes = Words({0, 1, 2, 0, 1, 1, 0, 2, 1, 0, 2, 2});
  EXPECT_EQ(RecoverChanges(changes, TableOf(module_.entry, {1, 2})).code, 0u);
  EXPECT_EQ(ReadFile(module_.id_map), Words({0, 1000, 2}));
}

TEST_P(TwoTableModuleRecoverTest, AChangeWithoutItsRecordInsertsNothing) {
  EXPECT_EQ(RecoverChanges(Words({0, 1, 1, 1, 1, 1}), module_.entry(2), module_.group(2)).code, 0u);
  for (const auto& table : store_.tables) EXPECT_THAT(table, IsEmpty());
  EXPECT_THAT(store_.CallsOf("Insert"), IsEmpty());
  ExpectTablesAreGone();
}

TEST_P(TwoTableModuleRecoverTest, DeletionsHaveNoLimit) {
  Bytes changes;
  for (std::uint32_t id = 1; id <= 2500; ++id) {
    store_.Add(0, id, 1);
    store_.Add(1, id, 1);
    Append(changes, Words({0, id, 3, 1, id, 3}));
  }
  EXPECT_EQ(RecoverChanges(changes).code, 0u);
  for (const auto& table : store_.tables) EXPECT_THAT(table, IsEmpty());
}

TEST_P(TwoTableModuleRecoverTest, ATornChangeIsPassedOver) {
  store_.Add(0, 1, 1);
  for (std::size_t size = 1; size < 12; ++size) {
    Bytes changes = Words({0, 1, 3});
    changes.resize(size);
    EXPECT_EQ(RecoverChanges(changes).code, 0u);
    EXPECT_THAT(store_.tables[0], SizeIs(1)) << size << " bytes";
  }
}

// --- Failures ---

TEST_P(TwoTableModuleRecoverTest, AStoreThatIsNotLoadedTouchesNothing) {
  Place(module_.entry(1));
  const auto before = AllFiles();
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(module_.library, reinterpret_cast<coredll::HMODULE>(handle));
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u}) EXPECT_EQ(Recover(module_.id, mode).code, 0x20000001u);
    EXPECT_EQ(Recover(module_.id, 2, u"", std::u16string(300, u'x')).code, 0x20000001u);
    EXPECT_EQ(AllFiles(), before);
  }
}

TEST_P(TwoTableModuleRecoverTest, ASnapshotThatCannotBeRewrittenIsFlaggedAfterTheTablesAreGone) {
  for (const char16_t* const log : module_.logs) {
    Place(module_.entry(1));
    MakeDirectory(log);
    EXPECT_EQ(Recover(module_.id, 1).code, 0x25000100u);
    ExpectTablesAreGone();
    EXPECT_FALSE(Exists(module_.id_map));
    std::filesystem::remove(handset::HostPath(log));
  }
}

}  // namespace
}  // namespace qv_test
