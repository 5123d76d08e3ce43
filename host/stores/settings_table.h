// Structures that are always there, in the database: settings have places instead of records that come and go.
#ifndef QV_HOST_STORES_SETTINGS_TABLE_H
#define QV_HOST_STORES_SETTINGS_TABLE_H

#include <cstdint>

#include "host/stores/record_store.h"

#pragma GCC visibility push(default)

namespace stores {

/// A table of so many places, numbered from the kind's first id on. One that has no row is zero.
class SettingsTable {
 public:
  SettingsTable(Database& database, const KindDescription& kind, std::uint32_t places);

  /// Fills the structure. Throws UnknownId for a place that there is not.
  void Read(std::uint32_t place, std::uint8_t* structure) const;
  /// The same for taking it in.
  void Write(std::uint32_t place, const std::uint8_t* structure);

  // All places, their structures back to back.
  void ReadAll(std::uint8_t* structures) const;
  void WriteAll(const std::uint8_t* structures);

 private:
  void ExpectPlace(std::uint32_t place) const;
  std::uint32_t PlaceOf(std::uint32_t i) const { return store_.Kind().first_id + i; }

  RecordStore store_;
  std::uint32_t places_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_SETTINGS_TABLE_H
