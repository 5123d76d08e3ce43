// The tasks' field tables. What a task's fixed part says only the store knows: it lies the same on both sides.
#include "modules/calendar/tasks_layout.h"

namespace qv::tasks {
namespace {

using namespace layout;

constexpr Slot kItem80Count = U8(449);
constexpr Slot kItem144Count = U8(456);
constexpr Slot kItem6476Count = U8(457);

constexpr Field kTaskFields[] = {
    Both("task_id", kTaskId, kTaskId),
    Both("group_id", kTaskGroupId, kTaskGroupId),
    Both("bytes_8", Bytes(8, 441), Bytes(8, 441)),
    Both("item_80_count", kItem80Count, kItem80Count),
    Both("bytes_450", Bytes(450, 6), Bytes(450, 6)),
    Both("item_144_count", kItem144Count, kItem144Count),
    Both("item_6476_count", kItem6476Count, kItem6476Count),
    Both("bytes_458", Bytes(458, 398), Bytes(458, 398)),
};

constexpr ItemRun kTaskItems[] = {
    {.name = "item_80", .count = kItem80Count, .item = Bytes(0, 80), .store_offset = 856, .slots = 20},
    {.name = "item_144", .count = kItem144Count, .item = Bytes(0, 144), .store_offset = 2456, .slots = 44},
    {.name = "item_6476", .count = kItem6476Count, .item = Bytes(0, 6476), .store_offset = 8792, .slots = 4},
};

constexpr Field kGroupFields[] = {
    Both("group_id", U32(0), U32(0)),
    Both("bytes_4", Bytes(4, 246), Bytes(4, 246)),
    Both("value_250", kGroupValue, kGroupValue),
    Both("bytes_252", Bytes(252, 36), Bytes(252, 36)),
};

}  // namespace

constinit const RecordLayout kTaskLayout =
    TiledLayout<kTaskStoreSize, kTaskExchangeSize>("task", kTaskFields, kTaskItems);
constinit const RecordLayout kGroupLayout = TiledLayout<kGroupSize, kGroupSize>("task group", kGroupFields);

}  // namespace qv::tasks
