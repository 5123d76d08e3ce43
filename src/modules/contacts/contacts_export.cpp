// The steps of a contacts export.
#include "modules/contacts/contacts.h"
#include "sync/timing.h"

namespace qv::contacts {
namespace {

using QueryMembershipsFunction = std::int32_t(std::int32_t count, void* memberships);
using DownloadPictureFunction = std::int32_t(std::uint32_t id, void* picture);

/// Records in one call of the store.
constexpr std::size_t kBatch = kTableFacts[kMainTable].read_batch;

}  // namespace

Result ContactsHandler::ExportTables(SyncMode mode) {
  File change_list;
  if (const Result created = procedure_.CreateFiles(mode, change_list); IsFailure(created)) return created;
  File* const changes = change_list.IsOpen() ? &change_list : nullptr;
  SyncInfoList contacts;
  List<std::uint32_t> pictures;
  const Result contacts_done = ExportContacts(changes, contacts, pictures);
  if (IsFailure(contacts_done)) return contacts_done | StepFlag::kTable0Exported;
  const Result groups_done = ExportGroups(changes);
  if (IsFailure(groups_done)) return groups_done | StepFlag::kTable1Exported;
  const Result memberships_done = ExportMemberships(contacts.QueuedIds());
  if (IsFailure(memberships_done)) return memberships_done | kMembershipsExported;
  const Result pictures_done = ExportPictures({pictures.data(), pictures.size()});
  return IsFailure(pictures_done) ? pictures_done | kPicturesExported : Result::kOk;
}

// Where a step opens its table decides which failure is told of several: contacts after the changes are known, groups
// after they are read, memberships and pictures first.

Result ContactsHandler::ExportContacts(File* change_list, SyncInfoList& listed, List<std::uint32_t>& pictures) {
  if (!contacts_.LookUp(RecordTable::Use::kListAndRead)) return Result::kEntryPointMissing;
  if (const Result found = contacts_.ListRecords(listed); found != Result::kOk) return found;
  if (const Result queued = contacts_.QueueRecords(change_list, listed); IsFailure(queued)) return queued;
  File exchange_table = contacts_.CreateExchangeTable();
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  if (listed.QueuedIds().empty()) return Result::kOk;

  List<std::uint8_t> records;
  List<std::uint8_t> exchange;
  if (!records.Resize(kBatch * kStoreSize) || !exchange.Resize(kBatch * kContactExchangeSize)) return Result::kNoMemory;
  return ForEachBatch(listed.QueuedIds(), kBatch, [&](std::span<const std::uint32_t> ids) {
    const TimedStep batch("Backup Contacts Time", ids.size());
    records.Zero();
    {
      const TimedStep call("The InterFace Executing Time", ids.size());
      if (!contacts_.Read(ids, records.data())) return Result::kReadFailed;
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
  if (!groups_.LookUp(RecordTable::Use::kListAndRead)) return Result::kEntryPointMissing;
  SyncInfoList listed;
  if (const Result found = groups_.ListRecords(listed); found != Result::kOk) return found;
  if (const Result queued = groups_.QueueRecords(change_list, listed); IsFailure(queued)) return queued;
  const std::span<const std::uint32_t> ids = listed.QueuedIds();
  if (ids.empty()) return Result::kOk;

  // There are few groups, so they need no batches.
  List<std::uint8_t> records;
  List<std::uint8_t> exchange;
  if (!records.Resize(ids.size() * kStoreSize)) return Result::kNoMemory;
  if (!exchange.Resize(ids.size() * kGroupExchangeSize)) return Result::kNoMemory;
  records.Zero();
  if (!groups_.Read(ids, records.data())) return Result::kReadFailed;
  File exchange_table = groups_.CreateExchangeTable();
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    GroupToExchange(records.data() + i * kStoreSize, exchange.data() + i * kGroupExchangeSize);
  }
  return exchange_table.Write(exchange.data(), exchange.size()) ? Result::kOk : Result::kFileFailed;
}

Result ContactsHandler::ExportMemberships(std::span<const std::uint32_t> contacts) {
  File exchange_table = File::CreateAlways(call_.PathOf(kMembershipFile));
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  auto* const query = call_.store().Resolve<QueryMembershipsFunction>(u"DTP_PIMQueryManAttachGroup");
  if (query == nullptr) return Result::kEntryPointMissing;
  List<std::uint8_t> records;
  List<std::uint8_t> exchange;
  if (!records.Resize(kBatch * kMembershipStoreSize)) return Result::kNoMemory;
  if (!exchange.Resize(kBatch * kMembershipStoreSize)) return Result::kNoMemory;
  return ForEachBatch(contacts, kBatch, [&](std::span<const std::uint32_t> ids) {
    const TimedStep batch("Export GroupAttach Time", ids.size());
    records.Zero();
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
  File exchange_table = File::CreateAlways(call_.PathOf(kPictureFile));
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  auto* const download = call_.store().Resolve<DownloadPictureFunction>(u"DTP_DownloadingImage");
  if (download == nullptr) return Result::kEntryPointMissing;
  List<std::uint8_t> record;
  List<std::uint8_t> exchange;
  if (!record.Resize(kPictureStoreSize) || !exchange.Resize(kPictureExchangeSize)) return Result::kNoMemory;
  for (const std::uint32_t id : pictures) {
    const TimedStep picture("Export An Image Time", 1);
    record.Zero();
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
