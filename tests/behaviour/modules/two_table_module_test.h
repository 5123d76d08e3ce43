// What the tests of the modules of two tables stand on: the module, and its store.
#ifndef QV_TESTS_BEHAVIOUR_MODULES_TWO_TABLE_MODULE_TEST_H
#define QV_TESTS_BEHAVIOUR_MODULES_TWO_TABLE_MODULE_TEST_H

#include "tests/support/two_table_module.h"

namespace qv_test {

class TwoTableModuleTest : public AgentTest, public testing::WithParamInterface<TwoTableModule> {
 protected:
  TwoTableModuleTest() : owned_store_(module_.make_store({}, 0)), store_(*owned_store_) {}

  /// A result as the desktop is told it.
  std::uint32_t Told(std::uint32_t code) const { return module_.is_told ? code : 0; }

  Answer ExportIn(std::uint32_t mode, std::u16string_view anchor = u"", std::u16string_view directory = kSync) {
    return Export(module_.id, mode, anchor, directory);
  }
  void StoreAnchor(const std::string& anchor) const {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\n" + module_.anchor_key + " = " + anchor);
  }
  std::string AnchorMoved() const { return "[ANCHORDATE]\r\n" + module_.anchor_key + " = 200612117210"; }
  void WriteLogs(const Bytes& entry_log, const Bytes& group_log = {}) const {
    WriteFile(module_.logs[0], entry_log);
    WriteFile(module_.logs[1], group_log);
  }
  /// An incremental export against a stored anchor and these snapshots.
  Answer ExportChanges(const Bytes& entry_log = {}, const Bytes& group_log = {}) {
    StoreAnchor("5");
    WriteLogs(entry_log, group_log);
    return ExportIn(3, u"5");
  }
  /// The ids of the records in an exchange table.
  std::vector<std::uint32_t> ExportedIds(std::size_t table) const {
    const Bytes plain = table == 0 ? module_.entry(0, 0) : module_.group(0);
    std::vector<std::uint32_t> ids;
    for (const Bytes& record : Split(ReadFile(module_.tables.at(table)), plain.size())) {
      ids.push_back(Get32(record, 0));
    }
    return ids;
  }

  Bytes Entry(std::uint32_t id, std::uint32_t group = 0) const { return module_.entry(id, group); }
  Bytes Entries(std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> ids_and_groups) const {
    Bytes entries;
    for (const auto& [id, group] : ids_and_groups) Append(entries, Entry(id, group));
    return entries;
  }
  Bytes Groups(std::initializer_list<std::uint32_t> ids) const { return TableOf(module_.group, ids); }
  void Place(const Bytes& entries, const Bytes& groups = {}) const {
    WriteFile(module_.tables[0], entries);
    WriteFile(module_.tables[1], groups);
    for (const auto& [file, bytes] : module_.more_files) WriteFile(file, bytes);
  }
  Answer RecoverIn(std::uint32_t mode, std::u16string_view anchor = u"", std::u16string_view directory = kSync) {
    return Recover(module_.id, mode, anchor, directory);
  }
  Answer RecoverChanges(const Bytes& changes, const Bytes& entries = {}, const Bytes& groups = {}) {
    WriteFile(module_.changes, changes);
    Place(entries, groups);
    return RecoverIn(3);
  }
  void ExpectTablesAreGone() const {
    for (const char16_t* const table : module_.tables) EXPECT_FALSE(Exists(table));
    for (const auto& [file, bytes] : module_.more_files) EXPECT_FALSE(Exists(file));
  }
  /// The group that an entry of the store is in.
  std::uint32_t GroupOf(const ScriptedRecordStore::Record& entry) const {
    return Get32(entry.bytes, module_.group_place);
  }

  void ClearStore() {
    for (auto& table : store_.tables) table.clear();
  }
  const char16_t* NameOf(StoreRole role) const { return store_.EntryPointFor(role).name; }
  std::vector<std::string> CallsFor(StoreRole role) const { return store_.CallsOf(store_.EntryPointFor(role).told); }

  /// What happened, less what concerns the anchor's file.
  static std::vector<std::string> Steps(std::vector<std::string> events) {
    std::erase_if(events, [](const std::string& event) { return event.ends_with("qvSyncAnchor.ini"); });
    return events;
  }

  const TwoTableModule& module_ = GetParam();

 private:
  std::unique_ptr<ScriptedRecordStore> owned_store_;

 protected:
  ScriptedRecordStore& store_;
};

inline std::string NameOfModule(const testing::TestParamInfo<TwoTableModule>& info) {
  return info.param.name;
}

}  // namespace qv_test

#endif  // QV_TESTS_BEHAVIOUR_MODULES_TWO_TABLE_MODULE_TEST_H
