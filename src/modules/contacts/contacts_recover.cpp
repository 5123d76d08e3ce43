// The steps of a contacts recover.
#include <algorithm>

#include "modules/contacts/contact_writers.h"
#include "modules/contacts/contacts.h"
#include "sync/entry_file.h"
#include "sync/exchange_table.h"

namespace qv::contacts {
namespace {

using LoadPictureFunction = std::int32_t(const void* picture, std::uint32_t* new_id);

constexpr EntryPoint kAddMemberships = {u"DTP_PIMPhoneAddToGroups", {Argument::kCount, Argument::kRecords}};
constexpr EntryPoint kModifyMemberships = {u"DTP_PIMModifyManToGroup", {Argument::kCount, Argument::kRecords}};

/// Reads the next chunk of records into `records`, which has the room; what the end of the file cuts off reads as zero.
/// `count` is 0 at the end. kFileUnreadable.
Result ReadChunk(File& exchange_table, std::size_t record_size, List<std::uint8_t>& records, std::size_t& count) {
  count = 0;
  std::size_t got = 0;
  if (!exchange_table.Read(records.data(), records.size(), got)) return Result::kFileUnreadable;
  std::fill(records.begin() + got, records.end(), std::uint8_t{0});
  count = (got + record_size - 1) / record_size;
  return Result::kOk;
}

/// Reads the next membership with its groups into a store record. `more` is false at the end, and after a failure:
/// kFileUnreadable.
Result ReadMembership(File& table, std::uint8_t* record, bool& more) {
  std::uint8_t head[kMembershipExchangeSize];
  const Result read = ReadRecord(table, head, sizeof(head), sizeof(head), more);
  if (!more) return read;
  layout::ToStore(kMembershipLayout, head, record);
  (void)ReadItems(table, kMembershipLayout, head, record, more);
  return more ? Result::kOk : Result::kFileUnreadable;
}

/// Points a membership at the ids that the groups received.
void TranslateGroups(const IdMap& id_map, std::uint8_t* record) {
  const std::uint32_t count = layout::LoadSlot(kMembershipCount, record);
  for (std::uint32_t i = 0; i < count; ++i) {
    const layout::Slot group = layout::U32(static_cast<std::uint16_t>(kMembershipGroups.offset + 4 * i));
    layout::StoreSlot(group, record, id_map.Translate(kGroupTable, layout::LoadSlot(group, record)));
  }
}

}  // namespace

Result ContactsHandler::EmptyStore() {
  TableEraser groups(call_.store(), kGroupTable);
  TableEraser contacts(call_.store(), kMainTable);
  // Both are prepared before either is emptied: a store that cannot be emptied whole must not lose half of its records.
  if (const Result prepared = groups.Prepare(); IsFailure(prepared)) return prepared;
  if (const Result prepared = contacts.Prepare(); IsFailure(prepared)) return prepared;
  if (const Result erased = groups.Erase(); IsFailure(erased)) return erased;
  return contacts.Erase();
}

Result ContactsHandler::ApplyChangeList() {
  ChangeEraser eraser;
  if (const Result opened = eraser.Open(call_.store()); IsFailure(opened)) return opened;
  const auto take = [&](const ChangeRecord& change) {
    switch (change.operation) {
      case Operation::kNew:
      case Operation::kModified:
        if (!changes_.Append(change)) return Result::kNoMemory;
        return change.table == kPictureChanges ? eraser.ErasePictureOf(change.id) : Result::kOk;
      case Operation::kDeleted: return eraser.Erase(change.table, change.id);
      default: return Result::kOk;
    }
  };
  const Result read = ForEachEntry<ChangeRecord>(call_.PathOf(kNames.change_list), take);
  return IsFailure(read) ? read : eraser.HandOver();
}

Result ContactsHandler::ApplyTables(bool incremental) {
  // Each step needs the ids that the ones before it brought: contacts their pictures', memberships all of them.
  const Applying applying = {incremental, changes_, procedure_.id_map()};
  if (const Result done = ApplyPictures(); IsFailure(done)) return done | kPicturesApplied;
  if (const Result done = ApplyTable(groups_, applying); IsFailure(done)) return done | kGroupsApplied;
  if (const Result done = ApplyTable(contacts_, applying); IsFailure(done)) return done | kContactsApplied;
  if (const Result done = ApplyMemberships(applying); IsFailure(done)) return done | kMembershipsApplied;
  return Result::kOk;
}

Result ContactsHandler::ApplyPictures() {
  File table = File::OpenExisting(call_.PathOf(kPictureFile));
  if (!table.IsOpen()) return Result::kFileFailed;
  auto* const load = call_.store().Resolve<LoadPictureFunction>(u"DTP_LoadingImage");
  if (load == nullptr) return Result::kEntryPointMissing;
  List<std::uint8_t> exchange;
  List<std::uint8_t> record;
  if (!exchange.Resize(kPictureExchangeSize) || !record.Resize(kPictureStoreSize)) return Result::kNoMemory;

  for (;;) {
    bool more = false;
    const Result read = ReadRecord(table, exchange.data(), kPictureExchangeSize, kPictureExchangeSize, more);
    if (!more) return read;
    if (layout::LoadSlot(kExchangePictureLength, exchange.data()) > kMostPictureBytes) return Result::kFileUnreadable;
    layout::ToStore(kPictureLayout, exchange.data(), record.data());
    std::uint32_t new_id = 0;
    switch (load(record.data(), &new_id)) {
      case 0:
        if (!new_pictures_.Append(kPictureChanges, new_id, layout::LoadSlot(kRecordId, exchange.data()))) {
          return Result::kNoMemory;
        }
        break;
      case kPictureSkipped: break;
      case kNoRoomForPictures: return Result::kOk;
      default: return Result::kInsertFailed;
    }
  }
}

Result ContactsHandler::ApplyTable(const RecordTable& table, const Applying& applying) {
  const std::size_t record_size = table.names().layout->exchange_size;
  File exchange_table = table.OpenExchangeTable();
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  TableWriter writer(table.number(), applying);
  if (const Result opened = writer.Open(call_.store()); IsFailure(opened)) return opened;
  std::size_t room = 0;
  if (const Result counted = writer.CountRoom(room); IsFailure(counted)) return counted;
  List<std::uint8_t> chunk;
  if (!chunk.Resize(kChunk * record_size) || !writer.Reserve()) return Result::kNoMemory;

  for (;;) {
    std::size_t count = 0;
    const Result read = ReadChunk(exchange_table, record_size, chunk, count);
    if (count == 0) return read;
    const std::size_t taken = std::min(count, room);
    room -= taken;
    // Refused groups, too, are told as contacts: desktops look for both there. So the membership of a contact that
    // comes under a refused group's id counts as a refused contact's.
    for (std::size_t i = taken; i < count; ++i) {
      const std::uint32_t id = layout::LoadSlot(kRecordId, chunk.data() + i * record_size);
      if (!applying.id_map.Append(kMainTable, kRefused, id)) return Result::kNoMemory;
    }
    for (std::size_t i = 0; i < taken; ++i) {
      const std::uint8_t* const exchange = chunk.data() + i * record_size;
      const Result done = writer.Take(layout::LoadSlot(kRecordId, exchange), [&](std::uint8_t* record) {
        if (table.number() == kGroupTable) return GroupToStore(exchange, record);
        ContactToStore(exchange, record);
        const std::uint32_t picture = layout::LoadSlot(kStorePicture, record);
        if (picture != kNoPicture) {
          layout::StoreSlot(kStorePicture, record, new_pictures_.Translate(kPictureChanges, picture));
        }
      });
      if (IsFailure(done)) return done;
    }
    if (const Result done = writer.HandOver(); IsFailure(done)) return done;
  }
}

Result ContactsHandler::ApplyMemberships(const Applying& applying) {
  File table = File::OpenExisting(call_.PathOf(kMembershipFile));
  if (!table.IsOpen()) return Result::kFileFailed;
  MembershipWriter added(Result::kInsertFailed);
  MembershipWriter modified(Result::kUpdateFailed);
  if (const Result opened = added.Open(call_.store(), kAddMemberships); IsFailure(opened)) return opened;
  if (applying.incremental) {
    if (const Result opened = modified.Open(call_.store(), kModifyMemberships); IsFailure(opened)) return opened;
  }

  for (;;) {
    std::uint8_t record[kMembershipStoreSize];
    bool more = false;
    if (const Result read = ReadMembership(table, record, more); IsFailure(read)) return read;
    if (!more) break;
    const std::uint32_t incoming = layout::LoadSlot(kRecordId, record);
    const Operation operation = applying.Wanted(kMainTable, incoming);
    TranslateGroups(applying.id_map, record);
    Result done = Result::kOk;
    if (operation == Operation::kNew) {
      const std::uint32_t id = applying.id_map.Translate(kMainTable, incoming);
      layout::StoreSlot(kRecordId, record, id);
      // Only an incremental recover minds that the contact was refused.
      if (!applying.incremental || id != kRefused) done = added.Add(record);
    } else if (operation == Operation::kModified) {
      done = modified.Add(record);
    }
    if (IsFailure(done)) return done;
  }
  if (const Result done = added.HandOver(); IsFailure(done)) return done;
  return modified.HandOver();
}

}  // namespace qv::contacts
