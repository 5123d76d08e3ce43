// The steps of a contacts recover.
#include <algorithm>

#include "modules/contacts/contacts.h"
#include "sync/entry_file.h"

namespace qv::contacts {
namespace {

/// Records read from a table at once, and handed to the store in one call.
constexpr std::size_t kChunk = 200;

/// How many records the handset may hold, by table number.
constexpr std::int32_t kMostRecords[] = {3000, 100};

/// The handset id, in the map, of a record that was not taken.
constexpr std::uint32_t kRefused = 0xFFFFFFFF;

// What the store answers when it refuses; its reasons are its own.
constexpr std::int32_t kStoreRefused502 = -502;
constexpr std::int32_t kStoreRefused503 = -503;
constexpr std::int32_t kPictureSkipped = -503;
constexpr std::int32_t kNoRoomForPictures = -504;

Result ResultOfAdding(std::int32_t status) {
  switch (status) {
    case 0: return Result::kOk;
    case kStoreRefused502: return Result::kRefused502;
    case kStoreRefused503: return Result::kRefused503;
    default: return Result::kInsertFailed;
  }
}

/// Store records on their way to one call of the store, with the ids that they came under.
class Batch {
 public:
  /// Room for `capacity` records of this size. False without memory.
  [[nodiscard]] bool Reserve(std::size_t capacity, std::size_t record_size) {
    record_size_ = record_size;
    return records_.Resize(capacity * record_size) && ids_.Resize(capacity);
  }

  /// Where the next record goes; it counts once its id is added.
  std::uint8_t* Next() { return records_.data() + size_ * record_size_; }
  void Add(std::uint32_t id) { ids_[size_++] = id; }
  void Clear() { size_ = 0; }

  bool IsEmpty() const { return size_ == 0; }
  std::int32_t count() const { return static_cast<std::int32_t>(size_); }
  const std::uint8_t* records() const { return records_.data(); }
  std::span<const std::uint32_t> ids() const { return {ids_.data(), size_}; }

 private:
  List<std::uint8_t> records_;
  List<std::uint32_t> ids_;
  std::size_t record_size_ = 0;
  std::size_t size_ = 0;
};

/// Puts contacts or groups into the store, the records of a chunk in one call for the new ones and one for the
/// modified.
class TableWriter {
 public:
  TableWriter(const Library& store, std::uint32_t number, ApplyForm form, const ChangeList& changes, IdMap& id_map)
      : number_(number), form_(form), changes_(changes), id_map_(id_map) {
    const TableEntryPoints& names = kEntryPoints[number];
    count_ = store.Resolve<CountFunction>(names.count);
    add_ = store.Resolve<AddFunction>(names.add);
    is_complete_ = count_ != nullptr && add_ != nullptr;
    if (form == ApplyForm::kInsertOnly) return;
    update_ = store.Resolve<UpdateFunction>(names.update);
    find_by_name_ = store.Resolve<FindFunction>(names.find_by_name);
    is_complete_ = is_complete_ && update_ != nullptr && find_by_name_ != nullptr;
  }

  bool IsComplete() const { return is_complete_; }

  /// How many more records the handset takes. kCountFailed.
  Result CountRoom(std::size_t& room) const {
    std::int32_t present = 0;
    if (count_(&present) != 0) return Result::kCountFailed;
    room = static_cast<std::size_t>(kMostRecords[number_] - std::clamp(present, 0, kMostRecords[number_]));
    return Result::kOk;
  }

  [[nodiscard]] bool Reserve() {
    return added_.Reserve(kChunk, kStoreSize) && new_ids_.Resize(kChunk) &&
           (form_ == ApplyForm::kInsertOnly || modified_.Reserve(kChunk, kStoreSize));
  }

  /// Puts the record that came as `id` on its way, or passes over it; `convert` fills the store record. kReadFailed,
  /// kNoMemory.
  template <typename Convert>
  Result Take(std::uint32_t id, Convert convert) {
    switch (WantedOperation(form_, changes_, number_, id)) {
      case Operation::kNew: convert(added_.Next()); return TakeNew(id);
      case Operation::kModified:
        convert(modified_.Next());
        modified_.Add(id);
        return Result::kOk;
      default: return Result::kOk;
    }
  }

  /// Hands over what was taken. kInsertFailed, kRefused502, kRefused503, kUpdateFailed, kNoMemory.
  Result HandOver() {
    if (const Result added = HandOverNew(); IsFailure(added)) return added;
    const bool updated =
        modified_.IsEmpty() || update_(modified_.ids().data(), modified_.count(), modified_.records()) == 0;
    modified_.Clear();
    return updated ? Result::kOk : Result::kUpdateFailed;
  }

 private:
  Result TakeNew(std::uint32_t id) {
    if (form_ == ApplyForm::kInsertOrUpdate) {
      // A record of the same name stands for the new one.
      const auto* const name = reinterpret_cast<const char16_t*>(added_.Next() + kStoreName.offset);
      std::int32_t found = 0;
      std::uint32_t found_id = 0;
      if (find_by_name_(name, &found, &found_id) != 0) return Result::kReadFailed;
      // Desktops know groups that were merged by the contacts' table.
      if (found != 0) return id_map_.Append(kMainTable, found_id, id) ? Result::kOk : Result::kNoMemory;
    }
    added_.Add(id);
    return Result::kOk;
  }

  Result HandOverNew() {
    if (added_.IsEmpty()) return Result::kOk;
    std::fill(new_ids_.begin(), new_ids_.end(), 0);
    const Result added = ResultOfAdding(add_(added_.records(), added_.count(), new_ids_.data()));
    if (IsFailure(added)) return added;
    const std::uint32_t* new_id = new_ids_.data();
    for (const std::uint32_t id : added_.ids()) {
      if (!id_map_.Append(number_, *new_id++, id)) return Result::kNoMemory;
    }
    added_.Clear();
    return Result::kOk;
  }

  std::uint32_t number_;
  ApplyForm form_;
  const ChangeList& changes_;
  IdMap& id_map_;
  CountFunction* count_;
  AddFunction* add_;
  UpdateFunction* update_ = nullptr;
  FindFunction* find_by_name_ = nullptr;
  bool is_complete_ = false;
  Batch added_;
  Batch modified_;
  List<std::uint32_t> new_ids_;
};

/// Memberships on their way to one entry point, in calls of at most kChunk.
class MembershipWriter {
 public:
  /// `failure` is what a failing call is answered with.
  explicit MembershipWriter(Result failure) : failure_(failure) {}

  /// kEntryPointMissing, kNoMemory.
  Result Open(const Library& store, const char16_t* entry_point) {
    apply_ = store.Resolve<ApplyMembershipsFunction>(entry_point);
    if (apply_ == nullptr) return Result::kEntryPointMissing;
    return batch_.Reserve(kChunk, kMembershipStoreSize) ? Result::kOk : Result::kNoMemory;
  }

  Result Add(const std::uint8_t* record) {
    std::copy_n(record, kMembershipStoreSize, batch_.Next());
    batch_.Add(layout::LoadSlot(kRecordId, record));
    return batch_.ids().size() < kChunk ? Result::kOk : HandOver();
  }

  Result HandOver() {
    const bool applied = batch_.IsEmpty() || apply_(batch_.count(), batch_.records()) == 0;
    batch_.Clear();
    return applied ? Result::kOk : failure_;
  }

 private:
  ApplyMembershipsFunction* apply_ = nullptr;
  Result failure_;
  Batch batch_;
};

/// Reads the next membership with its groups into a store record. `more` is false at the end, and after a failure:
/// kFileUnreadable.
Result ReadMembership(File& table, std::uint8_t* record, bool& more) {
  std::uint8_t head[kMembershipExchangeSize];
  const Result read = ReadRecord(table, head, sizeof(head), sizeof(head), more);
  if (!more) return read;
  layout::ToStore(kMembershipLayout, head, record);
  const Result items = ReadItems(table, kMembershipLayout, head, record);
  more = !IsFailure(items);
  return items;
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
  ContactTable groups(store_, kGroupTable, kTables[kGroupTable]);
  ContactTable contacts(store_, kMainTable, kTables[kMainTable]);
  // Both are prepared before either is emptied: a store that cannot be emptied whole must not lose half of its records.
  if (const Result prepared = groups.PrepareEmptying(); IsFailure(prepared)) return prepared;
  if (const Result prepared = contacts.PrepareEmptying(); IsFailure(prepared)) return prepared;
  if (const Result emptied = groups.Empty(); IsFailure(emptied)) return emptied;
  return contacts.Empty();
}

Result ContactsHandler::ApplyTables(ApplyForm form) {
  // Each step needs the ids that the ones before it brought: contacts their pictures', memberships all of them.
  if (const Result done = ApplyPictures(); IsFailure(done)) return done | kPicturesApplied;
  if (const Result done = ApplyTable(kGroupTable, form); IsFailure(done)) return done | kGroupsApplied;
  if (const Result done = ApplyTable(kMainTable, form); IsFailure(done)) return done | kContactsApplied;
  if (const Result done = ApplyMemberships(form); IsFailure(done)) return done | kMembershipsApplied;
  return Result::kOk;
}

Result ContactsHandler::ApplyChangeList() {
  auto* const delete_groups = store_.Resolve<DeleteFunction>(kEntryPoints[kGroupTable].erase);
  auto* const delete_contacts = store_.Resolve<DeleteFunction>(kEntryPoints[kMainTable].erase);
  auto* const delete_picture = store_.Resolve<DeletePictureFunction>(u"DTP_DeleteImage");
  auto* const read_contacts = store_.Resolve<ReadFunction>(kEntryPoints[kMainTable].read);
  if (delete_groups == nullptr || delete_contacts == nullptr || delete_picture == nullptr || read_contacts == nullptr) {
    return Result::kEntryPointMissing;
  }
  List<std::uint8_t> contact;
  if (!contact.Resize(kStoreSize)) return Result::kNoMemory;
  const auto delete_picture_of = [&](std::uint32_t id) {
    std::fill(contact.begin(), contact.end(), std::uint8_t{0});
    if (read_contacts(&id, 1, contact.data()) != 0) return Result::kReadFailed;
    const std::uint32_t picture = layout::LoadSlot(kStorePicture, contact.data());
    return picture == kNoPicture || delete_picture(picture) == 0 ? Result::kOk : Result::kDeleteFailed;
  };

  Deletions deletions;
  const Result read = ForEachChange(directory_ / kNames.change_list, [&](const ChangeRecord& change) {
    switch (change.operation) {
      case Operation::kNew:
      case Operation::kModified:
        if (!changes_.Append(change)) return Result::kNoMemory;
        return change.table == kPictureChanges ? delete_picture_of(change.id) : Result::kOk;
      case Operation::kDeleted:
        if (change.table >= std::size(deletions)) return Result::kOk;
        if (!deletions[change.table].Append(change.id)) return Result::kNoMemory;
        return change.table == kMainTable ? delete_picture_of(change.id) : Result::kOk;
      default: return Result::kOk;
    }
  });
  if (IsFailure(read)) return read;
  const auto apply = [&](DeleteFunction* erase, const List<std::uint32_t>& ids) {
    return ids.empty() || erase(ids.data(), static_cast<std::int32_t>(ids.size())) == 0;
  };
  const bool applied = apply(delete_contacts, deletions[kMainTable]) && apply(delete_groups, deletions[kGroupTable]);
  return applied ? Result::kOk : Result::kDeleteFailed;
}

Result ContactsHandler::ApplyPictures() {
  File table = File::OpenExisting(directory_ / kPictureFile);
  if (!table.IsOpen()) return Result::kFileFailed;
  auto* const load = store_.Resolve<LoadPictureFunction>(u"DTP_LoadingImage");
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

Result ContactsHandler::ApplyTable(std::uint32_t number, ApplyForm form) {
  const TableNames& names = kTables[number];
  const std::size_t record_size = names.layout->exchange_size;
  File table = File::OpenExisting(directory_ / names.exchange_file);
  if (!table.IsOpen()) return Result::kFileFailed;
  TableWriter writer(store_, number, form, changes_, id_map_);
  if (!writer.IsComplete()) return Result::kEntryPointMissing;
  std::size_t room = 0;
  if (const Result counted = writer.CountRoom(room); IsFailure(counted)) return counted;
  List<std::uint8_t> chunk;
  if (!chunk.Resize(kChunk * record_size) || !writer.Reserve()) return Result::kNoMemory;

  for (;;) {
    std::size_t count = 0;
    const Result read = ReadChunk(table, record_size, chunk, count);
    if (count == 0) return read;
    const std::size_t taken = std::min(count, room);
    room -= taken;
    // Refused groups, too, are told as contacts: desktops look for both there. So the membership of a contact that
    // comes under a refused group's id counts as a refused contact's.
    for (std::size_t i = taken; i < count; ++i) {
      const std::uint32_t id = layout::LoadSlot(kRecordId, chunk.data() + i * record_size);
      if (!id_map_.Append(kMainTable, kRefused, id)) return Result::kNoMemory;
    }
    for (std::size_t i = 0; i < taken; ++i) {
      const std::uint8_t* const exchange = chunk.data() + i * record_size;
      const Result done = writer.Take(layout::LoadSlot(kRecordId, exchange), [&](std::uint8_t* record) {
        if (number == kGroupTable) return GroupToStore(exchange, record);
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

Result ContactsHandler::ApplyMemberships(ApplyForm form) {
  File table = File::OpenExisting(directory_ / kMembershipFile);
  if (!table.IsOpen()) return Result::kFileFailed;
  const bool incremental = form == ApplyForm::kInsertOrUpdate;
  MembershipWriter added(Result::kInsertFailed);
  MembershipWriter modified(Result::kUpdateFailed);
  if (const Result opened = added.Open(store_, u"DTP_PIMPhoneAddToGroups"); IsFailure(opened)) return opened;
  if (incremental) {
    if (const Result opened = modified.Open(store_, u"DTP_PIMModifyManToGroup"); IsFailure(opened)) return opened;
  }

  for (;;) {
    std::uint8_t record[kMembershipStoreSize];
    bool more = false;
    if (const Result read = ReadMembership(table, record, more); IsFailure(read)) return read;
    if (!more) break;
    const std::uint32_t incoming = layout::LoadSlot(kRecordId, record);
    const Operation operation = WantedOperation(form, changes_, kMainTable, incoming);
    TranslateGroups(id_map_, record);
    Result done = Result::kOk;
    if (operation == Operation::kNew) {
      const std::uint32_t id = id_map_.Translate(kMainTable, incoming);
      layout::StoreSlot(kRecordId, record, id);
      // Only an incremental recover minds that the contact was refused.
      if (!incremental || id != kRefused) done = added.Add(record);
    } else if (operation == Operation::kModified) {
      done = modified.Add(record);
    }
    if (IsFailure(done)) return done;
  }
  if (const Result done = added.HandOver(); IsFailure(done)) return done;
  return modified.HandOver();
}

}  // namespace qv::contacts
