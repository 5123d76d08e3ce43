// The comparisons, and the first to be compared: the card reader and the graphic memo, which read a whole table in one
// call.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "bench/bench.h"
#include "bench/one_table.h"
#include "host/handset/handset.h"
#include "layout/bytes.h"
#include "modules/organizer/card_reader_layout.h"
#include "modules/organizer/graphic_memo_layout.h"
#include "platform/file.h"

namespace bench {
namespace {

constexpr std::uint32_t kRecords = 10000;

struct CardStore {
  static std::uint32_t Count() noexcept { return MemoryStore::count; }
  static std::uint32_t List(const std::uint32_t* count, std::uint8_t* entries, std::uint32_t) noexcept {
    return MemoryStore::List(*count, qv::kFileTimeIn12Bytes, entries), 1;
  }
  static std::uint32_t Read(std::uint32_t count, const std::uint32_t*, std::uint8_t* out, std::uint32_t) noexcept {
    return MemoryStore::Read(count, out), 1;
  }
  static std::uint32_t Insert(const std::uint8_t* record, std::uint32_t* new_id, std::uint32_t) noexcept {
    return MemoryStore::Insert(record, new_id), 1;
  }

  static Bytes Install() {
    handset::InstallLibrary(u"CardScanStore.dll", {{u"CR_Sync_GetAllRecNum", Point(&Count)},
                                                   {u"CR_Sync_GetAllidTime", Point(&List)},
                                                   {u"CR_Sync_Read", Point(&Read)},
                                                   {u"CR_Sync_Insert", Point(&Insert)}});
    Bytes record(qv::card_reader::kStoreSize);
    PutTime(&record[4]);
    PutText(&record[12], "Anna Mueller");
    PutText(&record[84], "Blue Harbour Ltd");
    PutText(&record[214], "Project manager");
    PutText(&record[280], "+49 170 5550123");
    PutText(&record[478], "anna.mueller@example.org");
    PutText(&record[670], "17 Main Street, second floor");
    return record;
  }
};

struct MemoStore {
  static std::uint32_t Count(std::uint32_t) noexcept { return MemoryStore::count; }
  static std::uint32_t List(std::uint32_t, const std::uint32_t* count, std::uint8_t* entries) noexcept {
    return MemoryStore::List(*count, qv::kFileTimeIn12Bytes, entries), 0;
  }
  static std::uint32_t Read(std::uint32_t, std::uint32_t count, const std::uint32_t*, std::uint8_t* out) noexcept {
    return MemoryStore::Read(count, out), 0;
  }
  static std::uint32_t Insert(std::uint32_t, const std::uint8_t* record, std::uint32_t* new_id) noexcept {
    return MemoryStore::Insert(record, new_id), 0;
  }

  static Bytes Install() {
    handset::InstallLibrary(u"SketchStore.dll", {{u"DrawInfo_GetAllRecNum", Point(&Count)},
                                                 {u"DrawInfo_GetAllidTime", Point(&List)},
                                                 {u"DrawInfo_Read", Point(&Read)},
                                                 {u"DrawInfo_Insert", Point(&Insert)}});
    Bytes record(qv::graphic_memo::kStoreSize);
    PutTime(&record[16]);
    PutTime(&record[24]);
    PutText(&record[32], "Way to the lake");
    PutText(&record[206], "\\My Documents\\Sketch0001.bmp");
    PutText(&record[620], "Turn left behind the mill; the gate is green.");
    return record;
  }
};

/// Reads the records as an export has them read, and writes as many bytes with the same writes.
void WriteBare(const OneTable& table) {
  const Bytes exchange(std::ranges::max(table.writes), 1);
  const std::uint32_t batch = table.batch != 0 ? table.batch : kRecords;
  Bytes records(batch * MemoryStore::record.size());
  qv::File file = qv::File::CreateAlways(table.file);
  for (std::uint32_t done = 0; done < kRecords; done += batch) {
    table.read(std::min(batch, kRecords - done), records.data());
    for (std::uint32_t i = 0; i < std::min(batch, kRecords - done); ++i) {
      for (const std::size_t size : table.writes) {
        if (!file.Write(exchange.data(), size)) Die("cannot write");
      }
    }
  }
}

bool MeasureAgainstBare(const OneTable& table, Desktop& desktop) {
  std::printf("%s: %u exported\n", table.name, kRecords);
  MemoryStore::count = kRecords;
  handset::ResetPeakMemory();
  const std::vector<double> seconds = Shortest(9, {[&] { desktop.Export(4); }, [&] { WriteBare(table); }});
  std::printf("  agent %.1f ms, bare %.1f ms, peak memory %llu bytes\n", 1e3 * seconds[0], 1e3 * seconds[1],
              static_cast<unsigned long long>(handset::PeakAllocatedBytes()));
  return Report("full export against the same reads and write calls", seconds[0] / seconds[1], 1.5);
}

/// Each recover, which empties nothing, takes what the export before it wrote.
bool MeasureGrowth(const OneTable& table, Desktop& desktop) {
  std::printf("%s: how export and recover grow\n", table.name);
  std::vector<double> exports, recovers;
  for (const std::uint32_t records : table.sizes) {
    const int runs = std::clamp(static_cast<int>(table.sizes.back() / records), 3, 100);
    double shortest_export = 1e9, shortest_recover = 1e9;
    for (int run = 0; run < runs; ++run) {
      MemoryStore::count = records;
      shortest_export = std::min(shortest_export, Shortest(1, {[&] { desktop.Export(4); }})[0]);
      shortest_recover = std::min(shortest_recover, Shortest(1, {[&] { desktop.Recover(table.recover_mode); }})[0]);
    }
    exports.push_back(shortest_export / records);
    recovers.push_back(shortest_recover / records);
    std::printf("  %6u records: export %6.0f ns, recover %6.0f ns a record\n", records, 1e9 * exports.back(),
                1e9 * recovers.back());
  }
  const std::string of =
      "time per record, " + std::to_string(table.sizes.back()) + " against " + std::to_string(table.sizes.front());
  const bool good = Report(("export: " + of).c_str(), exports.back() / exports.front(), 2);
  return Report(("recover: " + of).c_str(), recovers.back() / recovers.front(), 2) && good;
}

}  // namespace

void PutTime(std::uint8_t* place) {
  qv::layout::StoreNumber(place, 4, 0xD800AE07);
  qv::layout::StoreNumber(place + 4, 4, 0x01C611D6);
}

void MemoryStore::List(std::uint32_t room, const qv::SyncInfoForm& form, std::uint8_t* entries) {
  for (std::uint32_t id = 1; id <= room; ++id, entries += form.entry_size) {
    qv::layout::StoreNumber(entries, 4, id);
    PutTime(entries + form.time_offset);
  }
}

void MemoryStore::Read(std::uint32_t records, std::uint8_t* out) {
  for (std::uint32_t i = 0; i < records; ++i) std::memcpy(out + i * record.size(), record.data(), record.size());
}

void MemoryStore::Insert(const std::uint8_t* from, std::uint32_t* new_id) {
  std::memcpy(taken.data(), from, taken.size());
  *new_id = ++count;
}

bool MeasureOneTable(const OneTable& table, const loader::AgentLibrary& agent) {
  MemoryStore::record = table.install();
  MemoryStore::taken = MemoryStore::record;
  Desktop desktop(agent, table.module);
  const bool good = MeasureAgainstBare(table, desktop);
  return MeasureGrowth(table, desktop) && good;
}

bool MeasureCardsAndMemos(const loader::AgentLibrary& agent) {
  const std::vector<std::uint32_t> sizes = {1000, 10000, 100000};
  const OneTable cards = {.name = "Business cards",
                          .module = 7,
                          .file = u"\\sync\\cardreader.tbl",
                          .install = CardStore::Install,
                          .writes = {qv::card_reader::kCardLayout.exchange_size},
                          .recover_mode = 5,
                          .sizes = sizes};
  const OneTable memos = {.name = "Graphic memos",
                          .module = 13,
                          .file = u"\\sync\\gmemoinfo.tbl",
                          .install = MemoStore::Install,
                          .writes = {qv::graphic_memo::kMemoLayout.exchange_size},
                          .recover_mode = 5,
                          .sizes = sizes};
  const bool good = MeasureOneTable(cards, agent);
  return MeasureOneTable(memos, agent) && good;
}

}  // namespace bench
