// The words behind the sample tasks. Of a task's record only its store knows what the bytes say; the texts are put
// where entries of the schedule have theirs.
#include "tools/qvdesk/sample_tasks.h"

#include <string_view>
#include <vector>

#include "host/stores/task_kinds.h"
#include "tools/qvdesk/sample_data.h"

namespace qvdesk {
namespace {

constexpr std::string_view kGroups[] = {"Home", "Office", "购物", "Garden"};
constexpr std::string_view kTitles[] = {"Buy milk and bread",   "Pay the electricity bill", "给妈妈打电话",
                                        "Return library books", "Write the report",         "交水费",
                                        "Water the plants",     "Book the ferry",           "修自行车"};
constexpr std::string_view kNotes[] = {"Before Friday.", "The blue folder on the shelf.", "别忘了带发票。", ""};

// In the fields of bytes that they lie in.
constexpr std::size_t kTitleAt = 0;
constexpr std::size_t kNoteAt = 62;
constexpr std::size_t kGroupNameAt = 42;

std::vector<std::uint32_t> InsertGroups(stores::Database& database, std::uint32_t count, Dice& dice) {
  const stores::KindDescription& kind = stores::kTaskKinds[stores::kTaskGroups];
  stores::RecordStore groups(database, kind);
  std::vector<std::uint32_t> ids;
  for (std::uint32_t i = 0; i < count; ++i) {
    RecordBuilder group(kind.layout);
    group.SetWideText("bytes_4", kGroupNameAt, NameByTurns(kGroups[i % std::size(kGroups)], std::size(kGroups), i));
    group.Set("value_250", i + 1);
    ids.push_back(groups.Insert(group.data(), ModifiedTime(dice)));
  }
  return ids;
}

RecordBuilder MakeTask(const qv::layout::RecordLayout& layout, const std::vector<std::uint32_t>& groups, Dice& dice) {
  RecordBuilder task(layout);
  if (!groups.empty()) task.Set("group_id", groups[dice.Roll(groups.size())]);
  task.SetWideText("bytes_8", kTitleAt, dice.Pick(kTitles));
  task.SetWideText("bytes_8", kNoteAt, dice.Pick(kNotes));
  if (dice.OneIn(3)) task.SetItems(0, "item_80_count", 1 + dice.Roll(3), dice);
  if (dice.OneIn(4)) task.SetItems(1, "item_144_count", 1 + dice.Roll(2), dice);
  if (dice.OneIn(5)) task.SetItems(2, "item_6476_count", 1, dice);
  return task;
}

}  // namespace

void InsertSampleTasks(stores::Database& database, const SampleTasks& count, std::uint32_t seed) {
  Dice dice(seed);
  stores::Transaction transaction(database);
  const std::vector<std::uint32_t> groups = InsertGroups(database, count.groups, dice);
  const stores::KindDescription& kind = stores::kTaskKinds[stores::kTasks];
  stores::RecordStore tasks(database, kind);
  for (std::uint32_t i = 0; i < count.tasks; ++i) {
    const RecordBuilder task = MakeTask(kind.layout, groups, dice);
    tasks.Insert(task.data(), ModifiedTime(dice));
  }
  transaction.Commit();
}

}  // namespace qvdesk
