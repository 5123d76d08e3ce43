// What the tests of the plain modules stand on: the module, and its store.
#ifndef QV_TESTS_BEHAVIOUR_MODULES_PLAIN_MODULE_TEST_H
#define QV_TESTS_BEHAVIOUR_MODULES_PLAIN_MODULE_TEST_H

#include "tests/support/plain_module.h"

namespace qv_test {

class PlainModuleTest : public AgentTest, public testing::WithParamInterface<PlainModule> {
 protected:
  PlainModuleTest() : owned_store_(module_.make_store({}, 0)), store_(*owned_store_) {}

  Answer ExportIn(std::uint32_t mode, std::u16string_view anchor = u"", std::u16string_view directory = kSync) {
    return Export(module_.id, mode, anchor, directory);
  }
  /// With an empty configuration, in modules that have one.
  Answer RecoverIn(std::uint32_t mode, std::u16string_view anchor = u"", std::u16string_view directory = kSync) {
    PlaceConfig();
    return Recover(module_.id, mode, anchor, directory);
  }

  void PlaceConfig() const {
    if (module_.config) WriteFile(module_.config->file, module_.config->empty);
  }
  void StoreAnchor(const std::string& anchor) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\n" + module_.anchor_key + " = " + anchor);
  }
  /// An incremental export against a stored anchor and this snapshot.
  Answer ExportChanges(const Bytes& log = {}) {
    StoreAnchor("5");
    WriteFile(module_.log, log);
    return ExportIn(3, u"5");
  }
  Answer RecoverChanges(const Bytes& changes, const Bytes& table = {}) {
    WriteFile(module_.table, table);
    WriteFile(module_.changes, changes);
    return RecoverIn(3);
  }

  std::size_t StoreSize() const { return module_.in_store.size(); }
  std::size_t ExchangeSize() const { return module_.exported.size(); }
  Bytes Plain(std::initializer_list<std::uint32_t> ids) const { return TableOf(module_.plain, ids); }
  /// The ids of the records in the exchange table.
  std::vector<std::uint32_t> ExportedIds() const {
    std::vector<std::uint32_t> ids;
    for (const Bytes& record : Split(ReadFile(module_.table), ExchangeSize())) {
      ids.push_back(Get32(record, module_.exported_id_at));
    }
    return ids;
  }
  /// The record that an export makes of a stored one.
  Bytes Exported(const Bytes& record) {
    store_.records.clear();
    store_.Add(9, std::nullopt, record);
    EXPECT_EQ(ExportIn(4).code, 0u);
    return ReadFile(module_.table);
  }
  /// What reaches the store for an exchange record.
  Bytes Recovered(const Bytes& record) {
    store_.records.clear();
    WriteFile(module_.table, record);
    EXPECT_EQ(RecoverIn(4).code, 0u);
    EXPECT_EQ(store_.records.size(), 1u);
    return store_.records.empty() ? Bytes() : store_.records.back().bytes;
  }

  /// The snapshot entry of a record that a test added, and of one that the agent wrote.
  Bytes Old(std::uint32_t id) const { return Words({id, module_.old_time[0], module_.old_time[1]}); }
  Bytes New(std::uint32_t id) const { return Words({id, module_.new_time[0], module_.new_time[1]}); }
  static Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) Append(all, part);
    return all;
  }

  std::string Told(StoreRole role) const { return store_.EntryPointFor(role).told; }
  const char16_t* NameOf(StoreRole role) const { return store_.EntryPointFor(role).name; }
  std::vector<std::string> CallsFor(StoreRole role) const { return store_.CallsOf(Told(role)); }
  /// The entry points called, in order, less those of a session.
  static std::vector<StoreRole> RolesCalled(const ScriptedStore& store) {
    std::vector<StoreRole> roles;
    for (const std::string& call : store.calls) {
      if (const auto role = store.RoleOf(call.substr(0, call.find(' ')))) roles.push_back(*role);
    }
    return roles;
  }
  /// How a call that names records is told.
  std::string CallWithIds(StoreRole role, const std::vector<std::uint32_t>& ids) const {
    const bool has_table = std::ranges::count(store_.EntryPointFor(role).arguments, Argument::kTable) != 0;
    return Told(role) + (has_table ? " 0 " : " ") + IdList(ids.data(), ids.size());
  }
  /// A store in the place of the module's, which lacks this entry point, or has it at this address.
  std::unique_ptr<ScriptedTableStore> StoreWithout(StoreRole role, std::uintptr_t address) const {
    return module_.make_store({NameOf(role)}, address);
  }

  /// What happened, less what concerns the anchor's file.
  static std::vector<std::string> Steps(std::vector<std::string> events) {
    std::erase_if(events, [](const std::string& event) { return event.ends_with("qvSyncAnchor.ini"); });
    return events;
  }

  const PlainModule& module_ = GetParam();

 private:
  std::unique_ptr<ScriptedTableStore> owned_store_;

 protected:
  ScriptedTableStore& store_;
};

inline std::string NameOfModule(const testing::TestParamInfo<PlainModule>& info) {
  return info.param.name;
}

}  // namespace qv_test

#endif  // QV_TESTS_BEHAVIOUR_MODULES_PLAIN_MODULE_TEST_H
