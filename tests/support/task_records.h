// Tasks and their groups written out by hand, as the store holds them and as they travel. Nothing here comes from the
// agent's field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_TASK_RECORDS_H
#define QV_TESTS_SUPPORT_TASK_RECORDS_H

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the tasks' files lie on the handset of a behaviour test.
constexpr char16_t kTasks[] = u"\\sync\\taskinfo.tbl";
constexpr char16_t kTaskGroups[] = u"\\sync\\taskgroup.tbl";
constexpr char16_t kTaskChanges[] = u"\\sync\\taskcmd.tbl";
constexpr char16_t kTaskIdMap[] = u"\\sync\\taskmap.tbl";
constexpr char16_t kTaskLog[] = u"\\dbdata\\sysconfig\\taskinfo.log";
constexpr char16_t kTaskGroupLog[] = u"\\dbdata\\sysconfig\\taskgroup.log";

// Sizes.
constexpr std::size_t kTaskInStore = 34696;
constexpr std::size_t kTaskFixedPart = 856;  ///< Of an exchange record, and what a store record begins with.
constexpr std::size_t kTaskGroupSize = 288;  ///< On both sides.

/// The kinds of items of a task, in their order: where the fixed part counts them, how large they are, where they begin
/// in a store record, and how many there are room for.
struct TaskItems {
  std::size_t count_place, size, store, room;
};
constexpr TaskItems kTaskItems[] = {{449, 80, 856, 20}, {456, 144, 2456, 44}, {457, 6476, 8792, 4}};

constexpr std::uint32_t kTaskId = 0xD5A1A2A3;
constexpr std::uint32_t kTaskGroup = 78;

/// A task in the store: every byte set, those of the unused items too, and the counts 2, 1 and 3.
Bytes StoreTask();
/// The same task as an export writes it under kTaskId.
Bytes ExchangeTask();
/// What a recover hands to the store for it, before the group is translated.
Bytes RecoveredTask();

/// A task that says no more than who it is and which group it is in; and what a recover makes of it.
Bytes PlainTask(std::uint32_t id, std::uint32_t group = 0);
Bytes RecoveredPlainTask(std::uint32_t id, std::uint32_t group = 0);

/// A group, which is the same on both sides.
Bytes TaskGroup(std::uint32_t id = 5, std::uint16_t value = 0x1234);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_TASK_RECORDS_H
