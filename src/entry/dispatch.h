// From a module's number to its handler: opened, run once and closed within the call.
#ifndef QV_ENTRY_DISPATCH_H
#define QV_ENTRY_DISPATCH_H

#include <cstdint>

#include "entry/module_table.h"
#include "sync/result.h"
#include "sync/sync_mode.h"

namespace qv {

/// The row of a module, or null for an id outside 1..16.
const ModuleRow* FindModule(std::int32_t module_id);

/// What an entry point tells its caller of a module's result; `flag` names the direction.
constexpr std::uint32_t Reported(Result result, Report report, std::uint32_t flag) {
  const auto code = static_cast<std::uint32_t>(result);
  if (code == 0 || report == Report::kDropped) return 0;
  return report == Report::kRaw ? code : code | flag;
}

/// Run a module that FindModule found. `directory` is UTF-16LE text of any alignment. `mode` and `anchor` come back as
/// the module leaves them; a plain copy may pass a null anchor.
Result ExportModule(const ModuleRow& module, SyncMode& mode, char16_t* anchor, const void* directory);
Result RecoverModule(const ModuleRow& module, SyncMode mode, char16_t* anchor, const void* directory);

}  // namespace qv

#endif  // QV_ENTRY_DISPATCH_H
