// What a recover does to ContactStore.dll: records put in and taken out, many in one call.
#ifndef QV_MODULES_CONTACTS_CONTACT_WRITERS_H
#define QV_MODULES_CONTACTS_CONTACT_WRITERS_H

#include <cstdint>
#include <span>

#include "modules/contacts/contacts_layout.h"
#include "platform/library.h"
#include "platform/memory.h"
#include "sync/record_table.h"
#include "sync/store_function.h"

namespace qv::contacts {

/// Records that are handed to the store in one call.
inline constexpr std::size_t kChunk = 200;

/// Store records on their way to one call of the store, with the ids that they came under.
class Batch {
 public:
  /// Room for a chunk of records of this size. False without memory.
  [[nodiscard]] bool Reserve(std::size_t record_size) {
    record_size_ = record_size;
    return records_.Resize(kChunk * record_size) && ids_.Resize(kChunk);
  }

  /// Where the next record goes; it counts once its id is added.
  std::uint8_t* Next() { return records_.data() + size_ * record_size_; }
  void Add(std::uint32_t id) { ids_[size_++] = id; }
  void Clear() { size_ = 0; }

  bool IsEmpty() const { return size_ == 0; }
  bool IsFull() const { return size_ == kChunk; }
  std::uint32_t count() const { return static_cast<std::uint32_t>(size_); }
  const std::uint8_t* records() const { return records_.data(); }
  std::span<const std::uint32_t> ids() const { return {ids_.data(), size_}; }

 private:
  List<std::uint8_t> records_;
  List<std::uint32_t> ids_;
  std::size_t record_size_ = 0;
  std::size_t size_ = 0;
};

/// Takes all records out of one table.
class TableEraser {
 public:
  TableEraser(const Library& store, std::uint32_t table) : store_(store), table_(table) {}

  /// Looks up what Erase needs and makes room for the list. kEntryPointMissing, kNoMemory.
  Result Prepare();
  /// Deletes all records in one call, which is not made for none. kSyncInfoFailed, kWipeFailed.
  Result Erase();

 private:
  const Library& store_;
  const std::uint32_t table_;
  StoreFunction list_;
  StoreFunction erase_;
  SyncInfoList records_;
};

/// Takes the deletions of a change list out of both tables, and the pictures of contacts that go or change.
class ChangeEraser {
 public:
  /// kEntryPointMissing, kNoMemory.
  Result Open(const Library& store);
  /// Deletes the contact's picture, if it has one. kReadFailed, kDeleteFailed.
  Result ErasePictureOf(std::uint32_t contact);
  /// Notes a deletion, of a contact with its picture. kNoMemory, or as ErasePictureOf.
  Result Erase(std::uint32_t table, std::uint32_t id);
  /// Deletes what was noted, contacts first. kDeleteFailed.
  Result HandOver();

 private:
  StoreFunction read_contacts_;
  StoreFunction erase_picture_;
  StoreFunction erase_[2];
  List<std::uint32_t> to_erase_[2];
  List<std::uint8_t> contact_;
};

/// Puts contacts or groups into the store, the records of a chunk in one call for the new ones and one for the
/// modified.
class TableWriter {
 public:
  TableWriter(std::uint32_t table, const Applying& applying) : table_(table), applying_(applying) {}

  /// Looks up what the form needs. kEntryPointMissing.
  Result Open(const Library& store);
  /// How many more records the handset takes. kCountFailed.
  Result CountRoom(std::size_t& room) const;
  /// Makes room for a chunk. False without memory.
  [[nodiscard]] bool Reserve();

  /// Puts the record that came as `id` on its way, or passes over it; `convert` fills the store record. kReadFailed,
  /// kNoMemory.
  template <typename Convert>
  Result Take(std::uint32_t id, Convert convert) {
    switch (applying_.Wanted(table_, id)) {
      case Operation::kNew: convert(added_.Next()); return TakeNew(id);
      case Operation::kModified:
        convert(modified_.Next());
        modified_.Add(id);
        return Result::kOk;
      default: return Result::kOk;
    }
  }

  /// Hands over what was taken. kInsertFailed, kRefused502, kRefused503, kUpdateFailed, kNoMemory.
  Result HandOver();

 private:
  /// What the store finds by a name; `found` counts it.
  using FindFunction = std::int32_t(const char16_t* name, std::int32_t* found, std::uint32_t* id);

  Result TakeNew(std::uint32_t id);
  Result HandOverNew();

  const std::uint32_t table_;
  const Applying& applying_;
  StoreFunction count_;
  StoreFunction add_;
  StoreFunction update_;
  FindFunction* find_by_name_ = nullptr;
  Batch added_;
  Batch modified_;
  List<std::uint32_t> new_ids_;
};

/// Memberships on their way to one entry point, a chunk in one call.
class MembershipWriter {
 public:
  /// `failure` is what a failing call is answered with.
  explicit MembershipWriter(Result failure) : failure_(failure) {}

  /// kEntryPointMissing, kNoMemory.
  Result Open(const Library& store, const EntryPoint& entry_point);
  Result Add(const std::uint8_t* record);
  Result HandOver();

 private:
  StoreFunction apply_;
  Result failure_;
  Batch batch_;
};

}  // namespace qv::contacts

#endif  // QV_MODULES_CONTACTS_CONTACT_WRITERS_H
