// The schedule: growth of the incremental export, change computation, full export.
#include <cstdio>
#include <cstring>
#include <vector>

#include "bench/bench.h"
#include "host/handset/handset.h"
#include "modules/calendar/schedule_layout.h"
#include "platform/file.h"
#include "sync/changes.h"

namespace bench {
namespace {

using qv::schedule::kEntryExchangeSize;
using qv::schedule::kEntryStoreSize;

constexpr std::int32_t kScheduleModule = 2;
constexpr char16_t kEntries[] = u"\\sync\\schedule.tbl";

/// A SchedStore.dll in memory that holds `entries` equal entries and no groups.
struct MemoryStore {
  static inline std::uint32_t entries = 0;
  static inline std::vector<std::uint8_t> record;

  static std::uint32_t Total(std::uint32_t table) noexcept { return table == 0 ? entries : 0; }

  static std::uint32_t SyncInfo(std::uint32_t, std::uint32_t* count, qv::SyncInfoEntry* list) noexcept {
    for (std::uint32_t i = 0; i < *count; ++i) list[i] = {i + 1, 0, i, 30000000};
    return 0;
  }

  static std::uint32_t Read(std::uint32_t, std::uint32_t count, const std::uint32_t*, std::uint8_t* records) noexcept {
    for (std::uint32_t i = 0; i < count; ++i)
      std::memcpy(records + i * kEntryStoreSize, record.data(), kEntryStoreSize);
    return 0;
  }

  static void Install() {
    record.assign(kEntryStoreSize, 0);
    for (std::size_t i = 8; i < 704; ++i) record[i] = static_cast<std::uint8_t>(i % 2 == 0 ? 'a' + i % 23 : 0);
    record[40] = record[41] = 0;  // No items.
    handset::InstallLibrary(u"SchedStore.dll",
                            {{u"SC_Sync_GetTotalNum", reinterpret_cast<coredll::FARPROC>(&Total)},
                             {u"SC_Sync_GetAllSyncInfo", reinterpret_cast<coredll::FARPROC>(&SyncInfo)},
                             {u"SC_Sync_Read", reinterpret_cast<coredll::FARPROC>(&Read)}});
  }
};

void WriteBare(std::uint32_t entries, const std::vector<std::uint8_t>& bytes) {
  qv::File file = qv::File::CreateAlways(kEntries);
  for (std::uint32_t i = 0; i < entries; ++i) {
    // As the agent writes an entry without items: the fixed part, and two runs of nothing.
    const std::uint8_t* const entry = bytes.data() + i * kEntryExchangeSize;
    if (!file.Write(entry, kEntryExchangeSize) || !file.Write(entry, 0) || !file.Write(entry, 0)) Die("cannot write");
  }
}

bool MeasureFullExport(Desktop& desktop) {
  constexpr std::uint32_t kEntryCount = 100000;
  std::printf("Schedule: full export of %u entries\n", kEntryCount);
  MemoryStore::entries = kEntryCount;
  std::vector<std::uint8_t> bytes(kEntryCount * kEntryExchangeSize, 1);
  handset::ResetPeakMemory();
  const std::vector<double> seconds = Shortest(7, {[&] { desktop.Export(4); }, [&] { WriteBare(kEntryCount, bytes); }});
  std::printf("  agent %.0f ms, bare %.0f ms, peak memory %llu bytes\n", 1e3 * seconds[0], 1e3 * seconds[1],
              static_cast<unsigned long long>(handset::PeakAllocatedBytes()));
  return Report("full export against the same write calls", seconds[0] / seconds[1], 1.5);
}

constexpr std::uint32_t kPairs = 100000;

std::vector<qv::SnapshotEntry> ShuffledPairs() {
  std::vector<qv::SnapshotEntry> pairs(kPairs);
  for (std::uint32_t i = 0; i < kPairs; ++i) pairs[i] = {i * 2654435761u, i, 30000000};
  return pairs;
}

/// Indexes one list of pairs and looks the other's up: what no comparison by hash can do without.
unsigned CompareBare(const std::vector<qv::SnapshotEntry>& before, const std::vector<qv::SnapshotEntry>& now) {
  constexpr std::uint32_t kSlots = 1u << 18;
  std::vector<std::uint32_t> slots(kSlots, ~0u);
  const auto slot_of = [&](std::uint32_t id) {
    std::uint32_t slot = qv::HashWord(id) % kSlots;
    while (slots[slot] != ~0u && before[slots[slot]].id != id) slot = (slot + 1) % kSlots;
    return slot;
  };
  for (std::uint32_t i = 0; i < before.size(); ++i) slots[slot_of(before[i].id)] = i;
  unsigned changes = 0;
  for (const qv::SnapshotEntry& pair : now) {
    const std::uint32_t found = slots[slot_of(pair.id)];
    changes += found == ~0u || before[found].time_low != pair.time_low || before[found].time_high != pair.time_high;
  }
  return changes;
}

}  // namespace

bool MeasureSchedule(const loader::AgentLibrary& agent, Growth& incremental) {
  MemoryStore::Install();
  Desktop desktop(agent, kScheduleModule);
  std::printf("Schedule: incremental export, nothing changed\n");
  incremental = MeasureIncrementalExport(
      desktop, [](std::uint32_t entries) { MemoryStore::entries = entries; }, [] {});
  const bool good = MeasureFullExport(desktop);
  return incremental.good && good;
}

bool MeasureChangeComputation() {
  std::printf("Change computation of %u pairs, the snapshot in memory\n", kPairs);
  const std::vector<qv::SnapshotEntry> pairs = ShuffledPairs();
  qv::SyncInfoList current;
  if (!current.Resize(kPairs, qv::kFileTimeIn16Bytes)) Die("no memory");
  auto* const entries = static_cast<qv::SyncInfoEntry*>(current.data());
  for (std::uint32_t i = 0; i < kPairs; ++i) entries[i] = {pairs[i].id, 0, pairs[i].time_low, pairs[i].time_high};
  current.Take(kPairs);
  qv::File change_list = qv::File::CreateAlways(u"\\changes");
  unsigned bare_changes = 0;
  const std::vector<double> seconds =
      Shortest(30, {[&] {
                      qv::Snapshot snapshot;
                      for (const qv::SnapshotEntry& pair : pairs) {
                        if (!snapshot.Append(pair)) Die("no memory");
                      }
                      qv::EntryWriter<qv::ChangeRecord> changes(change_list);
                      if (qv::CompareWithSnapshot(0, current, snapshot, changes) != qv::Result::kOk)
                        Die("no comparison");
                      if (!current.QueuedIds().empty()) Die("changes where there are none");
                    },
                    [&] { bare_changes += CompareBare(pairs, pairs); }});
  if (bare_changes != 0) Die("changes where there are none");
  std::printf("  agent %.2f ms, bare %.2f ms\n", 1e3 * seconds[0], 1e3 * seconds[1]);
  return Report("change computation against a bare hash-index comparison", seconds[0] / seconds[1], 3);
}

}  // namespace bench
