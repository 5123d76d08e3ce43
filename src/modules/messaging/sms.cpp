// The short messages' export and recover around the procedure of one table.
#include "modules/messaging/sms.h"

namespace qv::sms {

Result SmsHandler::Export(SyncMode& mode, char16_t* anchor, const void* directory) {
  if (!store_.IsLoaded()) return Result::kStoreNotLoaded;
  if (const Result taken = directory_.Assign(directory); IsFailure(taken)) return taken;
  CheckAnchor(mode, kNames.anchor_key, anchor);
  MoveAnchor(mode, kNames.anchor_key, anchor);

  coredll::DeleteFileW(directory_ / kTables[kMainTable].exchange_file);
  if (const Result exported = ExportConfig(store_, directory_ / kConfigFile); IsFailure(exported)) return exported;
  return run_.Export(mode);
}

Result SmsHandler::Recover(SyncMode mode, char16_t* anchor, const void* directory) {
  if (!store_.IsLoaded()) return Result::kStoreNotLoaded;
  if (const Result taken = directory_.Assign(directory); IsFailure(taken)) return taken;
  // A desktop that sends no configuration gets its anchor back as it was.
  const Result applied = ApplyConfig(store_, directory_ / kConfigFile, folders_);
  if (IsFailure(applied)) return applied;
  if (const Result learnt = LearnFolders(store_, folders_); IsFailure(learnt)) return learnt;
  MoveAnchor(mode, kNames.anchor_key, anchor);

  coredll::DeleteFileW(directory_ / kConfigFile);
  return run_.Recover(mode);
}

void SmsHandler::Table::Repoint(std::uint8_t* message, const IdMap& /*id_map*/) const {
  const std::uint32_t folder = layout::LoadSlot(kMessageFolder, message);
  layout::StoreSlot(kMessageFolder, message, folders_.Translate(folder));
}

}  // namespace qv::sms
