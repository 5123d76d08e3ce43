// The short messages' export and recover around the procedure.
#include "modules/messaging/sms.h"

namespace qv::sms {

Result SmsHandler::Export(SyncMode& mode, char16_t* anchor) {
  procedure_.BeginExport(mode, anchor);
  const Result exported = ExportConfig(call_.store(), call_.PathOf(kConfigFile));
  return IsFailure(exported) ? exported : procedure_.Export(mode);
}

Result SmsHandler::Recover(SyncMode mode, char16_t* anchor) {
  const Result applied = ApplyConfig(call_.store(), call_.PathOf(kConfigFile), folders_);
  if (IsFailure(applied)) return applied;
  if (const Result learnt = LearnFolders(call_.store(), folders_); IsFailure(learnt)) return learnt;
  // Only now: a desktop that sends no configuration gets its anchor back as it was.
  procedure_.BeginRecover(mode, anchor);
  call_.Delete(kConfigFile);
  return procedure_.Recover(mode);
}

void SmsHandler::Table::Repoint(std::uint8_t* message, const IdMap& /*id_map*/) const {
  const std::uint32_t folder = layout::LoadSlot(kMessageFolder, message);
  layout::StoreSlot(kMessageFolder, message, folders_.Translate(folder));
}

}  // namespace qv::sms
