// Places as rows that are made when something is first put there.
#include "host/stores/settings_table.h"

#include <algorithm>

namespace stores {

SettingsTable::SettingsTable(Database& database, const KindDescription& kind, std::uint32_t places)
    : store_(database, kind), places_(places) {}

void SettingsTable::ExpectPlace(std::uint32_t place) const {
  if (place - store_.Kind().first_id >= places_) throw UnknownId(place);
}

void SettingsTable::Read(std::uint32_t place, std::uint8_t* structure) const {
  ExpectPlace(place);
  if (store_.Has(place)) {
    store_.Read({&place, 1}, structure);
  } else {
    std::fill_n(structure, store_.Kind().layout.store_size, std::uint8_t{0});
  }
}

void SettingsTable::Write(std::uint32_t place, const std::uint8_t* structure) {
  ExpectPlace(place);
  if (store_.Has(place)) {
    store_.Update(place, structure);
  } else {
    store_.Insert(structure, std::nullopt, place);
  }
}

void SettingsTable::ReadAll(std::uint8_t* structures) const {
  for (std::uint32_t i = 0; i < places_; ++i) Read(PlaceOf(i), structures + i * store_.Kind().layout.store_size);
}

void SettingsTable::WriteAll(const std::uint8_t* structures) {
  for (std::uint32_t i = 0; i < places_; ++i) Write(PlaceOf(i), structures + i * store_.Kind().layout.store_size);
}

}  // namespace stores
