// The unified mail's runs: the folders and rules around the mails.
#include "modules/messaging/unified_mail.h"

#include <algorithm>

#include "modules/messaging/unified_mail_record.h"

namespace qv::unified_mail {
namespace {

// What fails ends this list alone.

void WriteList(const char16_t* path, const WholeList& list, const std::uint8_t* entries, std::uint32_t count) {
  if (count != 0 && entries == nullptr) return;
  if (count > static_cast<std::size_t>(-1) / list.entry_size) return;
  File file = File::CreateAlways(path);
  if (file.IsOpen() && count != 0) (void)file.Write(entries, std::size_t{count} * list.entry_size);
}

void ExportList(const Library& store, const char16_t* path, const WholeList& list) {
  StoreFunction get;
  if (!get.LookUp(store, list.get)) return;
  if (list.most_entries == layout::kAnyNumber) {
    StoreBlock block;
    std::uint32_t count = 0;
    if (get({.count_place = &count, .records = block.place()})) return WriteList(path, list, block.bytes(), count);
    return block.Forget();
  }
  List<std::uint8_t> entries;
  if (!entries.Resize(list.most_entries, list.entry_size)) return;
  entries.Zero();
  std::uint32_t count = list.most_entries;
  if (!get({.count_place = &count, .records = entries.data()})) return;
  WriteList(path, list, entries.data(), std::min(count, list.most_entries));
}

void ApplyList(const Library& store, const char16_t* path, const WholeList& list) {
  File file = File::OpenExisting(path);
  if (!file.IsOpen()) return;
  std::uint32_t room = list.most_entries;
  if (room == layout::kAnyNumber) {
    if (!file.Size(room)) return;
    room /= list.entry_size;
  }
  List<std::uint8_t> entries;
  std::size_t got = 0;
  if (!entries.Resize(room, list.entry_size) || !file.Read(entries.data(), entries.size(), got)) return;
  StoreFunction set;
  if (!set.LookUp(store, list.set)) return;
  const auto count = static_cast<std::uint32_t>(got / list.entry_size);
  (void)set({.count = count, .records = entries.data()});
}

}  // namespace

Result UnifiedMailHandler::Export(SyncMode& mode, char16_t* anchor) {
  for (const WholeList& list : kWholeLists) ExportList(call_.store(), call_.PathOf(list.file), list);
  procedure_.BeginExport(mode, anchor);
  mails_ = File::CreateAlways(call_.PathOf(kMailFile));
  if (mails_.IsOpen()) (void)procedure_.ExportTables(mode);
  mails_.Close();
  return procedure_.WriteSnapshots(mode);
}

Result UnifiedMailHandler::Recover(SyncMode mode, char16_t* anchor) {
  procedure_.BeginRecover(mode, anchor);
  for (const WholeList& list : kWholeLists) ApplyList(call_.store(), call_.PathOf(list.file), list);
  for (const WholeList& list : kWholeLists) call_.Delete(list.file);
  if (IsEmptied(kFacts.emptied_by, mode)) DeleteEachMail();
  (void)procedure_.ApplyTables(mode);
  call_.Delete(kMailFile);
  return procedure_.Remember(mode);
}

/// A mail that cannot be deleted ends it: the mails behind it stay.
void UnifiedMailHandler::DeleteEachMail() {
  constexpr EntryPoint kEraseOne = {u"UMAIL_DelRec", {Argument::kId, Argument::kTable}};
  StoreFunction erase;
  if (!erase.LookUp(call_.store(), kEraseOne)) return;
  for (MailTable* const table : {&received_, &sent_}) {
    SyncInfoList listed;
    if (!table->LookUp(RecordTable::Use::kList) || IsFailure(table->ListRecords(listed))) return;
    for (const SnapshotEntry& mail : listed.entries()) {
      if (!erase({.table = table->number(), .id = mail.id})) return;
    }
  }
}

/// The mails go to the file of both tables.
Result UnifiedMailHandler::MailTable::ExportRecords(std::span<const std::uint32_t> ids, std::size_t batch,
                                                    File& /*exchange_table*/) {
  List<std::uint8_t> mail;
  return ForEachBatch(ids, batch, [&](std::span<const std::uint32_t> id) {
    alignas(std::uint32_t) std::uint8_t record[kMailStoreSize] = {};
    if (!Read(id, record)) return Result::kReadFailed;
    if (const Result done = MailToExchange(number(), record, mail); IsFailure(done)) return done;
    if (mails_.IsOpen() && mails_.Write(mail.data(), mail.size())) return Result::kOk;
    mails_.Close();  // Behind a torn mail none could be read.
    return Result::kFileFailed;
  });
}

Result UnifiedMailHandler::MailTable::ApplyRecord(File& exchange_table, const Applying& applying, bool& more) {
  IncomingMail mail;
  if (const Result read = mail.Read(exchange_table, rest_, more); !more) return read;
  return Put(applying, {.table = mail.table(), .id = mail.id(), .records = mail.record()});
}

}  // namespace qv::unified_mail
