// How a module's main table is measured: what all stores in memory have in common, and the two comparisons.
#ifndef QV_BENCH_ONE_TABLE_H
#define QV_BENCH_ONE_TABLE_H

#include <cstdint>
#include <vector>

#include "host/loader/agent_library.h"
#include "platform/coredll.h"
#include "sync/sync_info.h"

namespace bench {

using Bytes = std::vector<std::uint8_t>;

/// 2006-01-05 09:03:07, as a FILETIME.
void PutTime(std::uint8_t* place);

/// A store library in memory that holds `count` equal records and takes whatever comes.
struct MemoryStore {
  static inline std::uint32_t count = 0;
  static inline Bytes record;
  static inline Bytes taken;

  static void List(std::uint32_t room, const qv::SyncInfoForm& form, std::uint8_t* entries);
  static void Read(std::uint32_t records, std::uint8_t* out);
  static void Insert(const std::uint8_t* from, std::uint32_t* new_id);
};

coredll::FARPROC Point(auto* function) {
  return reinterpret_cast<coredll::FARPROC>(function);
}

struct OneTable {
  const char* name;
  std::int32_t module;
  const char16_t* file;
  Bytes (*install)();                                ///< The store; returns its record.
  std::vector<std::size_t> writes;                   ///< Bytes of each write for a record.
  std::uint32_t recover_mode;                        ///< One that needs no change list.
  std::vector<std::uint32_t> sizes = {1000, 10000};  ///< How many records growth is measured at.
  std::uint32_t batch = 0;                           ///< Records a read; 0: all in one.
  /// Fills `out` with so many records as an export has them read, and does what else it cannot do without.
  void (*read)(std::uint32_t records, std::uint8_t* out) = MemoryStore::Read;
};

/// Export against a bare writer of 10,000 records, and how export and recover grow. False when a ratio is too high.
bool MeasureOneTable(const OneTable& table, const loader::AgentLibrary& agent);

}  // namespace bench

#endif  // QV_BENCH_ONE_TABLE_H
