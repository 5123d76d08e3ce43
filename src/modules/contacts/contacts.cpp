// The order of a contacts export and of a recover.
#include "modules/contacts/contacts.h"

namespace qv::contacts {

Result ContactsHandler::Export(SyncMode& mode, char16_t* anchor) {
  procedure_.BeginExport(mode, anchor);
  if (const Result exported = ExportTables(mode); IsFailure(exported)) return exported;
  return procedure_.WriteSnapshots(mode);
}

Result ContactsHandler::Recover(SyncMode mode, char16_t* anchor) {
  procedure_.BeginRecover(mode, anchor);
  const bool incremental = mode == SyncMode::kIncremental;
  if (incremental) {
    const Result deletions = ApplyChangeList();
    if (IsFailure(deletions)) return deletions | StepFlag::kChangeListApplied;
  } else if (IsEmptied(kFacts.emptied_by, mode)) {
    if (const Result emptied = EmptyStore(); IsFailure(emptied)) return emptied;
  }
  const Result applied = ApplyTables(incremental);
  if (IsFailure(applied)) return applied;
  if (incremental) call_.Delete(kNames.change_list);
  return procedure_.Finish(mode);
}

}  // namespace qv::contacts
