// MailStore.dll, as far as the handset's mail id goes: a setting in the database.
#include "host/stores/store_library.h"

/// Not 0 when the handset has no mail id.
STORE_ENTRY_POINT std::uint32_t GetSystemMailID(std::uint32_t* id) {
  return stores::StatusOf([&] {
    stores::Expect({id});
    const std::optional<std::int64_t> setting = stores::Database().Setting(stores::kSystemMailId);
    if (!setting) stores::Refuse(stores::kUnknownRecord);
    *id = static_cast<std::uint32_t>(*setting);
  });
}
