// What the agent costs beyond what its work costs bare: each figure is a ratio of two things timed in this very run, so
// that it means the same on any machine. Exits 1 when a ratio is above its bound.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/handset/handset.h"
#include "host/loader/agent_library.h"
#include "host/loader/refusing_stream.h"
#include "modules/calendar/schedule_layout.h"
#include "platform/file.h"
#include "qv_rapi.h"
#include "sync/changes.h"

namespace {

using qv::schedule::kEntryExchangeSize;
using qv::schedule::kEntryStoreSize;

constexpr std::uint32_t kScheduleModule = 2;
constexpr char16_t kDirectory[] = u"\\sync";
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

double Seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The shortest of several runs of each, taken in turns, so that a disturbance does not hit only one of them.
std::vector<double> Shortest(int runs, const std::vector<std::function<void()>>& works) {
  std::vector<double> shortest(works.size(), 1e9);
  for (int run = 0; run < runs; ++run) {
    for (std::size_t i = 0; i < works.size(); ++i) shortest[i] = std::min(shortest[i], Seconds(works[i]));
  }
  return shortest;
}

[[noreturn]] void Die(const char* what) {
  std::fprintf(stderr, "qv_bench: %s\n", what);
  std::exit(2);
}

class Desktop {
 public:
  explicit Desktop(const loader::AgentLibrary& agent) : export_(agent.Export<RapiFunction>("fnQV_ExportTabs")) {}

  /// Runs an export and returns the mode it came back with; the anchor is kept for the next one.
  std::uint32_t Export(std::uint32_t mode) {
    request_.mode = mode;
    std::copy(answer_.record.anchor, answer_.record.anchor + qv::kAnchorCapacity, request_.anchor);
    export_(0, reinterpret_cast<std::uint8_t*>(&request_), nullptr, nullptr, &answer_);
    if (answer_.record.code != 0) Die("an export failed");
    return answer_.record.mode;
  }

 private:
  struct Answer final : loader::RefusingStream {
    qv::ResultRecord record{};
    std::int32_t QV_STDCALL Write(const void* buffer, std::uint32_t size, std::uint32_t* written) override {
      std::memcpy(&record, buffer, std::min<std::size_t>(size, sizeof(record)));
      *written = size;
      return 0;
    }
    std::uint32_t QV_STDCALL Release() override { return 0; }
  };

  static qv::RequestRecord NewRequest() {
    qv::RequestRecord request{};
    request.module_id = kScheduleModule;
    std::copy(std::begin(kDirectory), std::end(kDirectory), request.directory);
    return request;
  }

  RapiFunction* export_;
  qv::RequestRecord request_ = NewRequest();
  Answer answer_;
};

bool Report(const char* what, double ratio, double bound) {
  std::printf("  %-72s %5.2f   (at most %.1f)%s\n", what, ratio, bound, ratio > bound ? "   TOO MUCH" : "");
  return ratio <= bound;
}

// --- An incremental export with nothing changed ---

bool MeasureIncrementalExport(Desktop& desktop) {
  std::printf("Incremental export, nothing changed\n");
  std::vector<double> per_entry;
  for (const std::uint32_t entries : {1000u, 10000u, 100000u}) {
    MemoryStore::entries = entries;
    desktop.Export(1);
    handset::ResetPeakMemory();
    const double seconds = Shortest(static_cast<int>(1000000 / entries), {[&] {
                                      if (desktop.Export(3) != 3) Die("an incremental export was downgraded");
                                    }})[0];
    per_entry.push_back(seconds / entries);
    std::printf("  %6u entries: %8.2f ms, %6.1f ns an entry, peak memory %9llu bytes, %5.1f an entry\n", entries,
                1e3 * seconds, 1e9 * per_entry.back(), static_cast<unsigned long long>(handset::PeakAllocatedBytes()),
                static_cast<double>(handset::PeakAllocatedBytes()) / entries);
  }
  return Report("time per entry, 100,000 entries against 1,000", per_entry.back() / per_entry.front(), 2);
}

// --- Change computation against a bare hash index ---

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

bool MeasureChangeComputation() {
  std::printf("Change computation of %u pairs, the snapshot in memory\n", kPairs);
  const std::vector<qv::SnapshotEntry> pairs = ShuffledPairs();
  qv::SyncInfoList current;
  if (!current.Resize(kPairs)) Die("no memory");
  for (std::uint32_t i = 0; i < kPairs; ++i)
    current.data()[i] = {pairs[i].id, 0, pairs[i].time_low, pairs[i].time_high};
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

// --- A full export against its bare writes ---

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
  std::printf("Full export of %u entries\n", kEntryCount);
  MemoryStore::entries = kEntryCount;
  std::vector<std::uint8_t> bytes(kEntryCount * kEntryExchangeSize, 1);
  handset::ResetPeakMemory();
  const std::vector<double> seconds = Shortest(7, {[&] { desktop.Export(4); }, [&] { WriteBare(kEntryCount, bytes); }});
  std::printf("  agent %.0f ms, bare %.0f ms, peak memory %llu bytes\n", 1e3 * seconds[0], 1e3 * seconds[1],
              static_cast<unsigned long long>(handset::PeakAllocatedBytes()));
  return Report("full export against the same write calls", seconds[0] / seconds[1], 1.5);
}

}  // namespace

int main(int argc, char** argv) {
  const std::filesystem::path here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const std::filesystem::path file = argc > 1 ? std::filesystem::path(argv[1]) : here / "../src" / QV_AGENT_FILE;
  std::string root = (std::filesystem::temp_directory_path() / "handset-XXXXXX").string();
  if (mkdtemp(root.data()) == nullptr) Die("cannot make a directory for the handset");
  bool good = true;
  try {
    const auto agent = loader::AgentLibrary::Open(file);
    handset::Start(root);
    std::filesystem::create_directories(handset::HostPath(u"\\dbdata\\sysconfig"));
    std::filesystem::create_directories(handset::HostPath(kDirectory));
    MemoryStore::Install();
    Desktop desktop(*agent);
    good = MeasureIncrementalExport(desktop) && good;
    good = MeasureChangeComputation() && good;
    good = MeasureFullExport(desktop) && good;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qv_bench: %s\n", error.what());
    good = false;
  }
  std::filesystem::remove_all(root);
  return good ? 0 : 1;
}
