// The calls behind the writers, and what the store's answers mean.
#include "modules/contacts/contact_writers.h"

#include <algorithm>

#include "modules/contacts/contacts.h"

namespace qv::contacts {
namespace {

using enum Argument;

constexpr EntryPoint kErase[] = {{u"DTP_PIMDeleteMan", {kIds, kCount}}, {u"DTP_PIMDeleteGroup", {kIds, kCount}}};
constexpr EntryPoint kErasePicture = {u"DTP_DeleteImage", {kId}};
constexpr const char16_t* kFindByName[] = {u"DTP_PIMFindmanSyncidByName", u"DTP_PIMFindgroupSyncidByName"};

/// A count as the store says it: below 0 it is none.
std::uint32_t Counted(std::uint32_t count) {
  return static_cast<std::uint32_t>(std::max(static_cast<std::int32_t>(count), 0));
}

Result ResultOfAdding(std::uint32_t answer) {
  switch (static_cast<std::int32_t>(answer)) {
    case 0: return Result::kOk;
    case kStoreRefused502: return Result::kRefused502;
    case kStoreRefused503: return Result::kRefused503;
    default: return Result::kInsertFailed;
  }
}

}  // namespace

Result TableEraser::Prepare() {
  const TableCalls& calls = kTableFacts[table_].calls;
  if (!list_.LookUp(store_, calls.list) || !erase_.LookUp(store_, kErase[table_])) return Result::kEntryPointMissing;
  // A store that does not count has the room that the list always had.
  StoreFunction count;
  std::uint32_t counted = 0;
  if (count.LookUp(store_, calls.count) && !count({.count_place = &counted})) counted = 0;
  const std::uint32_t room = std::max(Counted(counted), kMostRecords[table_]);
  return records_.Resize(room, kTableFacts[table_].sync_info) ? Result::kOk : Result::kNoMemory;
}

Result TableEraser::Erase() {
  auto count = static_cast<std::uint32_t>(records_.entries().size());
  if (!list_({.count_place = &count, .entries = records_.data()})) return Result::kSyncInfoFailed;
  records_.Take(Counted(count));
  records_.QueueAll();
  const std::span<const std::uint32_t> ids = records_.QueuedIds();
  if (ids.empty()) return Result::kOk;
  const bool erased = erase_({.count = static_cast<std::uint32_t>(ids.size()), .ids = ids.data()});
  return erased ? Result::kOk : Result::kWipeFailed;
}

Result ChangeEraser::Open(const Library& store) {
  const bool found =
      erase_[kGroupTable].LookUp(store, kErase[kGroupTable]) && erase_[kMainTable].LookUp(store, kErase[kMainTable]) &&
      erase_picture_.LookUp(store, kErasePicture) && read_contacts_.LookUp(store, kTableFacts[kMainTable].calls.read);
  if (!found) return Result::kEntryPointMissing;
  return contact_.Resize(kStoreSize) ? Result::kOk : Result::kNoMemory;
}

Result ChangeEraser::ErasePictureOf(std::uint32_t contact) {
  contact_.Zero();
  if (!read_contacts_({.count = 1, .ids = &contact, .records = contact_.data()})) return Result::kReadFailed;
  const std::uint32_t picture = layout::LoadSlot(kStorePicture, contact_.data());
  return picture == kNoPicture || erase_picture_({.id = picture}) ? Result::kOk : Result::kDeleteFailed;
}

Result ChangeEraser::Erase(std::uint32_t table, std::uint32_t id) {
  if (table >= std::size(to_erase_)) return Result::kOk;
  if (!to_erase_[table].Append(id)) return Result::kNoMemory;
  return table == kMainTable ? ErasePictureOf(id) : Result::kOk;
}

Result ChangeEraser::HandOver() {
  for (const std::uint32_t table : {kMainTable, kGroupTable}) {
    const List<std::uint32_t>& ids = to_erase_[table];
    const auto count = static_cast<std::uint32_t>(ids.size());
    if (count != 0 && !erase_[table]({.count = count, .ids = ids.data()})) return Result::kDeleteFailed;
  }
  return Result::kOk;
}

Result TableWriter::Open(const Library& store) {
  const TableCalls& calls = kTableFacts[table_].calls;
  if (!count_.LookUp(store, calls.count) || !add_.LookUp(store, calls.insert)) return Result::kEntryPointMissing;
  if (!applying_.incremental) return Result::kOk;
  if (!update_.LookUp(store, calls.update)) return Result::kEntryPointMissing;
  find_by_name_ = store.Resolve<FindFunction>(kFindByName[table_]);
  return find_by_name_ != nullptr ? Result::kOk : Result::kEntryPointMissing;
}

Result TableWriter::CountRoom(std::size_t& room) const {
  std::uint32_t present = 0;
  if (!count_({.count_place = &present})) return Result::kCountFailed;
  const std::uint32_t most = kMostRecords[table_];
  room = most - std::min(Counted(present), most);
  return Result::kOk;
}

bool TableWriter::Reserve() {
  return added_.Reserve(kStoreSize) && new_ids_.Resize(kChunk) &&
         (!applying_.incremental || modified_.Reserve(kStoreSize));
}

Result TableWriter::TakeNew(std::uint32_t id) {
  if (applying_.incremental) {
    // A record of the same name stands for the new one.
    const auto* const name = reinterpret_cast<const char16_t*>(added_.Next() + kStoreName.offset);
    std::int32_t found = 0;
    std::uint32_t found_id = 0;
    if (find_by_name_(name, &found, &found_id) != 0) return Result::kReadFailed;
    // Desktops know groups that were merged by the contacts' table.
    if (found != 0) return applying_.id_map.Append(kMainTable, found_id, id) ? Result::kOk : Result::kNoMemory;
  }
  added_.Add(id);
  return Result::kOk;
}

Result TableWriter::HandOver() {
  if (const Result added = HandOverNew(); IsFailure(added)) return added;
  const bool updated =
      modified_.IsEmpty() ||
      update_({.count = modified_.count(), .ids = modified_.ids().data(), .records = modified_.records()});
  modified_.Clear();
  return updated ? Result::kOk : Result::kUpdateFailed;
}

Result TableWriter::HandOverNew() {
  if (added_.IsEmpty()) return Result::kOk;
  new_ids_.Zero();
  const std::uint32_t answer =
      add_.Answer({.count = added_.count(), .records = added_.records(), .new_id = new_ids_.data()});
  if (const Result added = ResultOfAdding(answer); IsFailure(added)) return added;
  const std::uint32_t* new_id = new_ids_.data();
  for (const std::uint32_t id : added_.ids()) {
    if (!applying_.id_map.Append(table_, *new_id++, id)) return Result::kNoMemory;
  }
  added_.Clear();
  return Result::kOk;
}

Result MembershipWriter::Open(const Library& store, const EntryPoint& entry_point) {
  if (!apply_.LookUp(store, entry_point)) return Result::kEntryPointMissing;
  return batch_.Reserve(kMembershipStoreSize) ? Result::kOk : Result::kNoMemory;
}

Result MembershipWriter::Add(const std::uint8_t* record) {
  std::copy_n(record, kMembershipStoreSize, batch_.Next());
  batch_.Add(layout::LoadSlot(kRecordId, record));
  return batch_.IsFull() ? HandOver() : Result::kOk;
}

Result MembershipWriter::HandOver() {
  const bool applied = batch_.IsEmpty() || apply_({.count = batch_.count(), .records = batch_.records()});
  batch_.Clear();
  return applied ? Result::kOk : failure_;
}

}  // namespace qv::contacts
