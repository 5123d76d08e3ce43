// The steps of a contacts export.
#include <algorithm>

#include "modules/contacts/contacts.h"
#include "sync/timing.h"

namespace qv::contacts {
namespace {

/// Records in one call of the store.
constexpr std::size_t kBatch = 400;

void Clear(List<std::uint8_t>& records) {
  std::fill(records.begin(), records.end(), std::uint8_t{0});
}

}  // namespace

Result ContactsHandler::ExportTables(SyncMode mode) {
  ExportFiles files;
  if (const Result created = files.Create(directory_, kNames, mode); IsFailure(created)) return created;
  SyncInfoList contacts;
  List<std::uint32_t> pictures;
  const Result contacts_done = ExportContacts(files.ChangeList(), contacts, pictures);
  if (IsFailure(contacts_done)) return contacts_done | StepFlag::kTable0Exported;
  const Result groups_done = ExportGroups(files.ChangeList());
  if (IsFailure(groups_done)) return groups_done | StepFlag::kTable1Exported;
  const Result memberships_done = ExportMemberships(contacts.QueuedIds());
  if (IsFailure(memberships_done)) return memberships_done | kMembershipsExported;
  const Result pictures_done = ExportPictures({pictures.data(), pictures.size()});
  return IsFailure(pictures_done) ? pictures_done | kPicturesExported : Result::kOk;
}

// Where a step opens its table decides which failure is told of several: contacts after the changes are known, groups
// after they are read, memberships and pictures first.

Result ContactsHandler::ExportContacts(File* change_list, SyncInfoList& contacts, List<std::uint32_t>& pictures) {
  ContactTable table(store_, kMainTable, kTables[kMainTable]);
  if (!table.LookUp(StoreTable::Use::kListAndRead)) return Result::kEntryPointMissing;
  if (const Result listed = ListRecords(table, contacts); listed != Result::kOk) return listed;
  if (const Result queued = QueueRecords(table, change_list, contacts); IsFailure(queued)) return queued;
  File exchange_table = File::CreateAlways(directory_ / table.names().exchange_file);
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  if (contacts.QueuedIds().empty()) return Result::kOk;

  List<std::uint8_t> records;
  List<std::uint8_t> exchange;
  if (!records.Resize(kBatch * kStoreSize) || !exchange.Resize(kBatch * kContactExchangeSize)) return Result::kNoMemory;
  return ForEachBatch(contacts.QueuedIds(), kBatch, [&](std::span<const std::uint32_t> ids) {
    const TimedStep batch("Backup Contacts Time", ids.size());
    Clear(records);
    {
      const TimedStep call("The InterFace Executing Time", ids.size());
      if (!table.Read(ids, records.data())) return Result::kReadFailed;
    }
    for (std::size_t i = 0; i < ids.size(); ++i) {
      const std::uint8_t* const record = records.data() + i * kStoreSize;
      const std::uint32_t picture = layout::LoadSlot(kStorePicture, record);
      if (picture != kNoPicture && !pictures.Append(picture)) return Result::kNoMemory;
      ContactToExchange(record, exchange.data() + i * kContactExchangeSize);
    }
    return exchange_table.Write(exchange.data(), ids.size() * kContactExchangeSize) ? Result::kOk : Result::kFileFailed;
  });
}

Result ContactsHandler::ExportGroups(File* change_list) {
  ContactTable table(store_, kGroupTable, kTables[kGroupTable]);
  if (!table.LookUp(StoreTable::Use::kListAndRead)) return Result::kEntryPointMissing;
  SyncInfoList groups;
  if (const Result listed = ListRecords(table, groups); listed != Result::kOk) return listed;
  if (const Result queued = QueueRecords(table, change_list, groups); IsFailure(queued)) return queued;
  const std::span<const std::uint32_t> ids = groups.QueuedIds();
  if (ids.empty()) return Result::kOk;

  // There are few groups, so they need no batches.
  List<std::uint8_t> records;
  List<std::uint8_t> exchange;
  if (!records.Resize(ids.size() * kStoreSize)) return Result::kNoMemory;
  if (!exchange.Resize(ids.size() * kGroupExchangeSize)) return Result::kNoMemory;
  Clear(records);
  if (!table.Read(ids, records.data())) return Result::kReadFailed;
  File exchange_table = File::CreateAlways(directory_ / table.names().exchange_file);
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    GroupToExchange(records.data() + i * kStoreSize, exchange.data() + i * kGroupExchangeSize);
  }
  return exchange_table.Write(exchange.data(), exchange.size()) ? Result::kOk : Result::kFileFailed;
}

Result ContactsHandler::ExportMemberships(std::span<const std::uint32_t> contacts) {
  File exchange_table = File::CreateAlways(directory_ / kMembershipFile);
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  auto* const query = store_.Resolve<QueryMembershipsFunction>(u"DTP_PIMQueryManAttachGroup");
  if (query == nullptr) return Result::kEntryPointMissing;
  List<std::uint8_t> records;
  List<std::uint8_t> exchange;
  if (!records.Resize(kBatch * kMembershipStoreSize)) return Result::kNoMemory;
  if (!exchange.Resize(kBatch * kMembershipStoreSize)) return Result::kNoMemory;
  return ForEachBatch(contacts, kBatch, [&](std::span<const std::uint32_t> ids) {
    const TimedStep batch("Export GroupAttach Time", ids.size());
    Clear(records);
    for (std::size_t i = 0; i < ids.size(); ++i) {
      layout::StoreSlot(kRecordId, records.data() + i * kMembershipStoreSize, ids[i]);
    }
    {
      const TimedStep call("Executing InterFace Time ", ids.size());
      if (query(static_cast<std::int32_t>(ids.size()), records.data()) != 0) return Result::kReadFailed;
    }
    std::uint8_t* end = exchange.data();
    for (std::size_t i = 0; i < ids.size(); ++i) {
      end = AppendMembership(records.data() + i * kMembershipStoreSize, end);
    }
    const auto size = static_cast<std::size_t>(end - exchange.data());
    return exchange_table.Write(exchange.data(), size) ? Result::kOk : Result::kFileFailed;
  });
}

Result ContactsHandler::ExportPictures(std::span<const std::uint32_t> pictures) {
  File exchange_table = File::CreateAlways(directory_ / kPictureFile);
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  auto* const download = store_.Resolve<DownloadPictureFunction>(u"DTP_DownloadingImage");
  if (download == nullptr) return Result::kEntryPointMissing;
  List<std::uint8_t> record;
  List<std::uint8_t> exchange;
  if (!record.Resize(kPictureStoreSize) || !exchange.Resize(kPictureExchangeSize)) return Result::kNoMemory;
  for (const std::uint32_t id : pictures) {
    const TimedStep picture("Export An Image Time", 1);
    Clear(record);
    bool downloaded = false;
    {
      const TimedStep call("Executing DownloadingImage Time", 1);
      downloaded = download(id, record.data()) == 0;
    }
    // The pictures so far are better than none, and contacts are worth more than pictures.
    if (!downloaded) break;
    layout::StoreSlot(kRecordId, record.data(), id);
    PictureToExchange(record.data(), exchange.data());
    if (!exchange_table.Write(exchange.data(), kPictureExchangeSize)) return Result::kFileFailed;
  }
  return Result::kOk;
}

}  // namespace qv::contacts
