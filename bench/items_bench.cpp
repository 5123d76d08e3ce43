// Records with items: tasks, which have them in large records, the agenda, which has them in an area that the caller
// clears, and unified mails, which have them in chains and their texts in 8 bits.
#include <cstring>
#include <string_view>

#include "bench/bench.h"
#include "bench/one_table.h"
#include "host/handset/handset.h"
#include "layout/bytes.h"
#include "modules/calendar/agenda_layout.h"
#include "modules/calendar/tasks_layout.h"
#include "modules/messaging/unified_mail_layout.h"

namespace bench {
namespace {

using qv::layout::StoreNumber;

std::uint32_t AddressOf(const void* place) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(place));
}

/// The calls that are the same for tasks and the agenda. Groups there are none.
struct TwoTables {
  static std::uint32_t Count(std::uint32_t table) noexcept { return table == 0 ? MemoryStore::count : 0; }
  static std::uint32_t List(std::uint32_t, const std::uint32_t* count, std::uint8_t* entries) noexcept {
    return MemoryStore::List(*count, qv::kFileTimeIn16Bytes, entries), 0;
  }
  static std::uint32_t DeleteAll() noexcept { return MemoryStore::count = 0; }
};

/// With two items of 80 bytes, one of 144 and one of 6476.
struct TaskStore {
  static constexpr std::size_t kSize = qv::tasks::kTaskStoreSize;

  static std::uint32_t Read(std::uint32_t, std::uint32_t count, const std::uint32_t*, std::uint8_t* out) noexcept {
    return MemoryStore::Read(count, out), 0;
  }
  static std::uint32_t Insert(std::uint32_t, const std::uint8_t* record, std::uint32_t* new_id,
                              std::uint32_t) noexcept {
    return MemoryStore::Insert(record, new_id), 0;
  }
  /// A store gets cleared memory.
  static void ReadBare(std::uint32_t count, std::uint8_t* out) {
    std::memset(out, 0, count * kSize);
    MemoryStore::Read(count, out);
  }

  static Bytes Install() {
    handset::InstallLibrary(u"TodoStore.dll", {{u"TD_Sync_GetAllRecNum", Point(&TwoTables::Count)},
                                               {u"TD_Sync_GetAllidTime", Point(&TwoTables::List)},
                                               {u"TD_Sync_Read", Point(&Read)},
                                               {u"Td_Sync_Insert", Point(&Insert)},
                                               {u"TD_Sync_DelAll", Point(&TwoTables::DeleteAll)}});
    Bytes record(kSize);
    record[449] = 2;
    record[456] = 1;
    record[457] = 1;
    return record;
  }
};

/// With two items of 80 bytes and two long ones.
struct AgendaStore {
  static constexpr std::size_t kSize = qv::agenda::kEntryStoreSize;
  static constexpr std::uint32_t kBatch = 2;
  static constexpr std::uint32_t kLongItems = 2;
  static constexpr std::size_t kAreaAt = 4364;

  static std::uint32_t Read(std::uint32_t, std::uint32_t count, const std::uint32_t*, std::uint8_t* out) noexcept {
    static const Bytes long_items(kLongItems * qv::agenda::kLongItemStoreSize, 7);
    for (std::uint32_t i = 0; i < count; ++i, out += kSize) {
      const std::uint32_t area = qv::layout::LoadNumber(out + kAreaAt, 4);
      std::memcpy(out, MemoryStore::record.data(), kSize);
      StoreNumber(out + kAreaAt, 4, area);
      std::memcpy(reinterpret_cast<std::uint8_t*>(static_cast<std::uintptr_t>(area)), long_items.data(),
                  long_items.size());
    }
    return 0;
  }
  static std::uint32_t Insert(std::uint32_t, const std::uint8_t* record, std::uint32_t* new_id) noexcept {
    return MemoryStore::Insert(record, new_id), 0;
  }
  /// A store gets cleared records and areas.
  static void ReadBare(std::uint32_t count, std::uint8_t* out) {
    static Bytes areas(kBatch * qv::agenda::kAreaSize);
    std::memset(areas.data(), 0, areas.size());
    std::memset(out, 0, count * kSize);
    for (std::uint32_t i = 0; i < count; ++i) {
      StoreNumber(out + i * kSize + kAreaAt, 4, AddressOf(&areas[i * qv::agenda::kAreaSize]));
    }
    Read(0, count, nullptr, out);
  }

  static Bytes Install() {
    handset::InstallLibrary(u"AgendaStore.dll", {{u"AGD_Sync_GetAllRecNum", Point(&TwoTables::Count)},
                                                 {u"AGD_Sync_GetAllidTime", Point(&TwoTables::List)},
                                                 {u"AGD_Sync_Read", Point(&Read)},
                                                 {u"AGD_Sync_Insert", Point(&Insert)},
                                                 {u"AGD_Sync_DelAll", Point(&TwoTables::DeleteAll)}});
    Bytes record(kSize);
    PutText(&record[0], "Weekly round");
    PutText(&record[60], "Bring the figures of last year.");
    record[192] = 2;
    record[4368] = kLongItems;
    return record;
  }
};

/// With two receivers, a file and a text.
struct UnifiedMailStore {
  static constexpr std::size_t kSize = qv::unified_mail::kMailStoreSize;
  static constexpr std::string_view kText =
      "Dear all, please find the minutes of Monday below. Corrections until Friday, please; the next round is on the "
      "second of March, in the room with the big table.";

  static std::uint32_t Count(std::uint32_t table) noexcept { return TwoTables::Count(table & 0xFF); }
  static std::uint32_t Read(std::uint32_t, std::uint32_t, std::uint8_t* out) noexcept {
    return MemoryStore::Read(1, out), 0;
  }
  static std::uint32_t Insert(const std::uint8_t* record, std::uint32_t* new_id, std::uint32_t) noexcept {
    return MemoryStore::Insert(record, new_id), 0;
  }
  static std::uint32_t GetList(std::uint32_t* count, void*) noexcept { return *count = 0; }
  static std::uint32_t SetList(std::uint32_t, const void*) noexcept { return 0; }

  /// The platform's conversions too: of the mail's five texts, the receivers' two each, the file's, and the long one.
  static void ReadBare(std::uint32_t count, std::uint8_t* out) {
    std::memset(out, 0, count * kSize);
    MemoryStore::Read(count, out);
    const auto convert = [](const std::uint8_t* narrow, std::size_t room) {
      char16_t wide[256];
      coredll::mbstowcs(wide, reinterpret_cast<const char*>(narrow), room);
    };
    for (std::uint32_t i = 0; i < count; ++i) {
      for (const std::size_t at : {36u, 86u, 216u, 418u, 548u}) convert(&out[i * kSize + at], 24);
      for (const Bytes& node : nodes_182) convert(&node[4], 24), convert(&node[29], 64);
      convert(&node_308[8], 149);
      convert(reinterpret_cast<const std::uint8_t*>(kText.data()), kText.size());
    }
  }

  static Bytes Install() {
    handset::InstallLibrary(u"UniMailStore.dll", {{u"UMAIL_GetAllRecNum", Point(&Count)},
                                                  {u"UMAIL_GetAllidTime", Point(&TwoTables::List)},
                                                  {u"UMAIL_GetRec", Point(&Read)},
                                                  {u"UMAIL_AddOneRec", Point(&Insert)},
                                                  {u"UMAIL_GetSubFolderList", Point(&GetList)},
                                                  {u"UMAIL_WriteFolderList", Point(&SetList)},
                                                  {u"UMAIL_GetAllSubFolderFilterRecs", Point(&GetList)},
                                                  {u"UMAIL_WriteAllSubFolderFilterRecs", Point(&SetList)},
                                                  {u"UMAIL_GetAllSenderAppointRecs", Point(&GetList)},
                                                  {u"UMAIL_WriteAllSenderAppointRecs", Point(&SetList)}});
    for (Bytes& node : nodes_182) {
      PutNarrow(&node[4], "Anna Mueller");
      PutNarrow(&node[29], "anna.mueller@example.org");
    }
    StoreNumber(&nodes_182[0][96], 4, AddressOf(nodes_182[1].data()));
    PutNarrow(&node_308[8], "minutes.txt");
    Bytes record(kSize);
    PutNarrow(&record[36], "Tom Smith");
    PutNarrow(&record[86], "tom@example.com");
    PutNarrow(&record[216], "Minutes of Monday");
    StoreNumber(&record[752], 4, AddressOf(nodes_182[0].data()));
    StoreNumber(&record[764], 4, AddressOf(node_308.data()));
    StoreNumber(&record[768], 4, AddressOf(kText.data()));
    StoreNumber(&record[772], 4, kText.size());
    return record;
  }

 private:
  static void PutNarrow(std::uint8_t* place, std::string_view text) { std::memcpy(place, text.data(), text.size()); }

  static inline Bytes nodes_182[2] = {Bytes(qv::unified_mail::kItem182NodeSize),
                                      Bytes(qv::unified_mail::kItem182NodeSize)};
  static inline Bytes node_308 = Bytes(qv::unified_mail::kItem308NodeSize);
};

}  // namespace

bool MeasureRecordsWithItems(const loader::AgentLibrary& agent) {
  // A plain recover empties the stores of tasks and agenda.
  const OneTable tables[] = {
      {.name = "Tasks",
       .module = 3,
       .file = u"\\sync\\taskinfo.tbl",
       .install = TaskStore::Install,
       .writes = {qv::tasks::kTaskExchangeSize, 2 * 80, 144, 6476},
       .recover_mode = 4,
       .batch = 50,
       .read = TaskStore::ReadBare},
      {.name = "Agenda",
       .module = 4,
       .file = u"\\sync\\agenda.tbl",
       .install = AgendaStore::Install,
       .writes = {qv::agenda::kEntryExchangeSize, 80, 80, 4, 3928, 3928},
       .recover_mode = 4,
       .batch = AgendaStore::kBatch,
       .read = AgendaStore::ReadBare},
      {.name = "Unified mails",
       .module = 5,
       .file = u"\\sync\\UnMailinfo.tbl",
       .install = UnifiedMailStore::Install,
       .writes = {qv::unified_mail::kMailExchangeSize + 2 * 182 + 308 + 2 * UnifiedMailStore::kText.size()},
       .recover_mode = 4,
       .batch = 1,
       .read = UnifiedMailStore::ReadBare},
  };
  bool good = true;
  for (const OneTable& table : tables) good = MeasureOneTable(table, agent) && good;
  return good;
}

}  // namespace bench
