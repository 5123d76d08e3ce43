// The call filter's own steps: its configuration, its way of emptying the store, and group 7.
#include "modules/telephony/call_filter.h"

#include "sync/exchange_table.h"

namespace qv::call_filter {
namespace {

constexpr EntryPoint kReadConfig = {u"Sync_rbc_ReadConfig", {Argument::kRecords}};
constexpr EntryPoint kWriteConfig = {u"Sync_rbc_WriteConfig", {Argument::kRecords}};
constexpr EntryPoint kEraseConfig = {u"Sync_rbc_DelConfig", {}, kEmptied};

constexpr std::uint32_t kNoSuchRecord = 3;  ///< What an update answers.

}  // namespace

Result CallFilterHandler::Export(SyncMode& mode, char16_t* anchor) {
  procedure_.BeginExport(mode, anchor);
  if (const Result exported = procedure_.ExportTables(mode); IsFailure(exported)) return exported;
  if (const Result exported = ExportConfig(); IsFailure(exported)) return exported | StepFlag::kTable0Exported;
  return procedure_.WriteSnapshots(mode);
}

Result CallFilterHandler::Recover(SyncMode mode, char16_t* anchor) {
  procedure_.BeginRecover(mode, anchor);
  if (IsEmptied(kFacts.emptied_by, mode)) {
    if (const Result emptied = EmptyStore(); IsFailure(emptied)) return emptied;
  }
  if (const Result applied = procedure_.ApplyTables(mode); IsFailure(applied)) return applied;
  if (const Result applied = ApplyConfig(); IsFailure(applied)) return applied | kEntriesApplied;
  return procedure_.Finish(mode);
}

Result CallFilterHandler::ExportConfig() {
  StoreFunction read;
  if (!read.LookUp(call_.store(), kReadConfig)) return Result::kEntryPointMissing;
  alignas(std::uint32_t) std::uint8_t record[kConfigStoreSize] = {};
  if (!read({.records = record})) return Result::kReadFailed;
  std::uint8_t exchange[kConfigExchangeSize];
  ConfigToExchange(record, exchange);
  File file = File::CreateAlways(call_.PathOf(kConfigFile));
  return file.IsOpen() && file.Write(exchange, sizeof(exchange)) ? Result::kOk : Result::kFileFailed;
}

Result CallFilterHandler::EmptyStore() {
  StoreFunction erase_all;
  StoreFunction erase_config;
  const bool found =
      erase_all.LookUp(call_.store(), kFacts.erase_all) && erase_config.LookUp(call_.store(), kEraseConfig);
  if (!found) return Result::kEntryPointMissing;
  const bool emptied = erase_config({}) && erase_all({.table = kMainTable}) && erase_all({.table = kGroupTable});
  return emptied ? Result::kOk : Result::kWipeFailed;
}

Result CallFilterHandler::ApplyConfig() {
  File file = File::OpenExisting(call_.PathOf(kConfigFile));
  if (!file.IsOpen()) return Result::kFileFailed;
  std::uint8_t exchange[kConfigExchangeSize];
  bool is_there = false;
  const Result read = ReadRecord(file, exchange, sizeof(exchange), sizeof(exchange), is_there);
  if (IsFailure(read)) return read;
  StoreFunction write;
  if (!write.LookUp(call_.store(), kWriteConfig)) return Result::kEntryPointMissing;
  alignas(std::uint32_t) std::uint8_t record[kConfigStoreSize];
  ConfigToStore(exchange, record);
  return write({.records = record}) ? Result::kOk : Result::kUpdateFailed;
}

bool CallFilterHandler::GroupTable::LookUpForApplying(bool incremental) {
  return RecordTable::LookUpForApplying(incremental) && (incremental || LookUpUpdate());
}

Result CallFilterHandler::GroupTable::Insert(const Applying& applying, Arguments arguments) {
  if (!applying.incremental && arguments.id == kFixedGroup) {
    const std::uint32_t answer = update().Answer(arguments);
    if (answer == 0) return applying.id_map.Append(number(), 0, kFixedGroup) ? Result::kOk : Result::kNoMemory;
    if (answer != kNoSuchRecord) return Result::kUpdateFailed;
  }
  return RecordTable::Insert(applying, arguments);
}

}  // namespace qv::call_filter
