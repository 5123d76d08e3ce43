// A process killed at any point of a store call leaves the whole call or none of it.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <string>

#include "host/stores/contact_database.h"
#include "layout/bytes.h"
#include "modules/calendar/schedule_layout.h"
#include "tests/stores/store_test.h"
#include "tests/stores/victim_calls.h"

namespace {

struct Contents {
  /// By table and id. Where a record tells its time it is zero: that depends on the hour.
  std::map<std::string, std::map<std::uint32_t, Record>> records;
  /// By contact.
  std::map<std::uint32_t, std::vector<std::uint32_t>> groups;

  bool operator==(const Contents&) const = default;
};

void ClearTime(const stores::KindDescription& kind, Record& record) {
  std::fill_n(record.begin() + kind.time.offset, kind.time.size, std::uint8_t{0});
}

/// Those that calls here change.
std::vector<const stores::KindDescription*> AllKinds() {
  std::vector<const stores::KindDescription*> kinds = {&stores::kCallFilterConfigKind};
  for (const stores::KindDescription& kind : stores::kScheduleKinds) kinds.push_back(&kind);
  for (const stores::KindDescription& kind : stores::kContactKinds) kinds.push_back(&kind);
  for (const ListDeletion& deletion : kListDeletions) kinds.push_back(&deletion.kind);
  return kinds;
}

Contents ReadContents() {
  stores::Database database;
  EXPECT_TRUE(database.IsIntact());
  Contents contents;
  for (const stores::KindDescription* const kind : AllKinds()) {
    const stores::RecordStore store(database, *kind);
    auto& records = contents.records[kind->table];
    for (const std::uint32_t id : IdsOf(store)) ClearTime(*kind, records[id] = ReadOne(store, id));
  }
  stores::ContactDatabase contacts(database);
  for (const std::uint32_t id : IdsOf(contacts.Table(stores::kContacts))) contents.groups[id] = contacts.GroupsOf(id);
  return contents;
}

void Fill(stores::RecordStore& store, std::uint32_t count, std::mt19937& random) {
  for (std::uint32_t i = 0; i < count; ++i) store.Insert(SmallRecord(store.Kind().layout, random).data());
}

void FillDatabase() {
  std::mt19937 random(2);
  stores::Database database;
  stores::Transaction transaction(database);
  const auto fill = [&](const stores::KindDescription& kind, std::uint32_t count) {
    stores::RecordStore store(database, kind);
    Fill(store, count, random);
  };
  fill(stores::kScheduleKinds[stores::kScheduleEntries], kEntriesBefore);
  fill(stores::kScheduleKinds[stores::kScheduleGroups], kGroupsBefore);
  fill(stores::kCallFilterConfigKind, 1);
  for (const ListDeletion& deletion : kListDeletions) fill(deletion.kind, kEntriesBefore);
  stores::ContactDatabase contacts(database);
  Fill(contacts.Table(stores::kContacts), kContactsBefore, random);
  Fill(contacts.Table(stores::kContactGroups), kContactGroupsBefore, random);
  const std::uint32_t first_group = 1;
  for (std::uint32_t id = 1; id <= kContactsBefore; ++id) contacts.AddToGroups(id, {&first_group, 1});
  transaction.Commit();
}

Contents AfterScheduleCall(std::string_view call, Contents contents) {
  auto& entries = contents.records[stores::kScheduleKinds[stores::kScheduleEntries].table];
  if (call == "delete_all") {
    for (const stores::KindDescription& kind : stores::kScheduleKinds) contents.records[kind.table].clear();
    return contents;
  }
  if (call == "delete") {
    for (const std::uint32_t id : DeletedIds()) entries.erase(id);
    return contents;
  }
  const std::uint32_t id = call == "insert" ? kEntriesBefore + 1 : kUpdatedId;
  Record record = VictimRecord();
  PutId(qv::schedule::kEntryLayout, id, record);
  const qv::layout::Slot& group = qv::schedule::kEntryGroupId;
  qv::layout::StoreNumber(record.data() + group.offset, group.size, kGroupArgument);
  entries[id] = record;
  return contents;
}

Contents AfterContactCall(std::string_view call, Contents contents) {
  if (call == "modify_groups") {
    for (auto& [id, groups] : contents.groups) groups.assign(kOtherGroups.begin(), kOtherGroups.end());
    return contents;
  }
  const stores::KindDescription& kind = stores::kContactKinds[stores::kContacts];
  std::uint32_t id = kContactsBefore;
  for (Record& contact : AddedContacts()) {
    PutId(kind.layout, ++id, contact);
    ClearTime(kind, contact);
    contents.records[kind.table][id] = contact;
    contents.groups[id] = {};
  }
  return contents;
}

/// What the whole call makes of `contents`.
Contents After(std::string_view call, Contents contents) {
  if (IsContactCall(call)) return AfterContactCall(call, contents);
  if (const ListDeletion* const deletion = FindListDeletion(call)) {
    for (const std::uint32_t id : DeletedIds()) contents.records[deletion->kind.table].erase(id);
    return contents;
  }
  if (call != kWriteConfig) return AfterScheduleCall(call, contents);
  contents.records[stores::kCallFilterConfigKind.table] = {{2, WrittenConfig()}};
  return contents;
}

/// True when it was killed, false when it came through; anything else fails the test.
bool IsKilled(const std::filesystem::path& root, std::string call, unsigned n, std::string when) {
  std::string program = QV_STORE_CALL_VICTIM, number = std::to_string(n);
  std::string library = std::filesystem::path(QV_SCHED_STORE).replace_filename(LibraryOf(call)).string();
  std::string root_name = root.string();
  char* const arguments[] = {program.data(), root_name.data(), library.data(), call.data(),
                             number.data(),  when.data(),      nullptr};
  pid_t child = 0;
  int status = 0;
  EXPECT_EQ(posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ), 0);
  EXPECT_EQ(waitpid(child, &status, 0), child);
  if (WIFSIGNALED(status)) {
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    return true;
  }
  EXPECT_EQ(WEXITSTATUS(status), 0);
  return false;
}

using Sweep = std::tuple<std::string_view, std::string_view>;

class KillTest : public StoreTest, public testing::WithParamInterface<Sweep> {};

TEST_P(KillTest, LeavesTheWholeCallOrNothing) {
  const auto [call, when] = GetParam();
  const std::filesystem::path file = handset::HostPath(stores::kDatabasePath);
  FillDatabase();
  const std::filesystem::path filled = handset_.Root() / "filled.db";
  std::filesystem::copy_file(file, filled);
  const Contents before = ReadContents();
  const Contents after = After(call, before);

  unsigned without = 0, with = 0;
  bool killed = true;
  for (unsigned n = 1; killed; ++n) {
    SCOPED_TRACE(n);
    std::filesystem::copy_file(filled, file, std::filesystem::copy_options::overwrite_existing);
    killed = IsKilled(handset_.Root(), std::string(call), n, std::string(when));
    const Contents found = ReadContents();
    ++(found == after ? with : without);
    ASSERT_TRUE(found == after || (killed && found == before));
  }
  EXPECT_GT(without, 0u);
  EXPECT_GT(with, 1u) << "only the call that was not killed";
  RecordProperty("kills", static_cast<int>(without + with - 1));
}

INSTANTIATE_TEST_SUITE_P(AtEachFileSystemCall, KillTest,
                         testing::Combine(testing::ValuesIn(AllCalls()), testing::Values("before", "after")),
                         [](const testing::TestParamInfo<Sweep>& sweep) {
                           return std::string(std::get<0>(sweep.param)) + "_" + std::string(std::get<1>(sweep.param));
                         });

}  // namespace
