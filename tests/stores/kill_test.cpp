// A process killed at any point of a store call leaves the whole call or none of it.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <string>

#include "layout/bytes.h"
#include "modules/calendar/schedule_layout.h"
#include "tests/stores/store_test.h"
#include "tests/stores/victim_calls.h"

namespace {

/// Records by id, of each table.
using Contents = std::array<std::map<std::uint32_t, Record>, std::size(stores::kScheduleKinds)>;

Contents ReadContents() {
  stores::Database database;
  EXPECT_TRUE(database.IsIntact());
  Contents contents;
  for (std::size_t table = 0; table < contents.size(); ++table) {
    const stores::RecordStore store(database, stores::kScheduleKinds[table]);
    for (const std::uint32_t id : IdsOf(store)) contents[table][id] = ReadOne(store, id);
  }
  return contents;
}

void FillDatabase() {
  std::mt19937 random(2);
  stores::Database database;
  stores::Transaction transaction(database);
  for (const auto& [table, count] :
       {std::pair{stores::kScheduleEntries, kEntriesBefore}, std::pair{stores::kScheduleGroups, kGroupsBefore}}) {
    stores::RecordStore store(database, stores::kScheduleKinds[table]);
    for (std::uint32_t i = 0; i < count; ++i) store.Insert(SmallRecord(store.Kind().layout, random).data());
  }
  transaction.Commit();
}

/// What the whole call makes of `contents`.
Contents After(std::string_view call, Contents contents) {
  auto& entries = contents[stores::kScheduleEntries];
  if (call == "delete_all") return {};
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

/// True when it was killed, false when it came through; anything else fails the test.
bool IsKilled(const std::filesystem::path& root, std::string call, unsigned n, std::string when) {
  std::string program = QV_STORE_CALL_VICTIM, library = QV_SCHED_STORE, number = std::to_string(n);
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
                         testing::Combine(testing::ValuesIn(kCalls), testing::Values("before", "after")),
                         [](const testing::TestParamInfo<Sweep>& sweep) {
                           return std::string(std::get<0>(sweep.param)) + "_" + std::string(std::get<1>(sweep.param));
                         });

}  // namespace
