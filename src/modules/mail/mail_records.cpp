// Reads a table and chains the records of each owner, so that going through an account's messages costs nothing for the
// others'.
#include "modules/mail/mail_records.h"

#include <algorithm>

#include "platform/file.h"

namespace qv::mail {
namespace {

/// The records that cannot be found share an owner, so that no table can be made of owners that are slow to tell apart.
constexpr Owner kNobody = {kLargestId + 1};

}  // namespace

bool MailRecords::Load(const char16_t* path, LastRecord last_record) {
  File file = File::OpenExisting(path);
  std::uint32_t file_size = 0;
  if (!file.IsOpen() || !file.Size(file_size)) return false;
  const std::uint32_t size = form_.exchange_size;
  const std::size_t room = file_size / size + 1;  // One more than are whole: a cut one, or the end.
  if (!bytes_.Resize(room, size)) return false;
  bytes_.Zero();
  for (std::size_t position = 0; position < room; ++position) {
    std::uint8_t* const bytes = bytes_.data() + position * size;
    std::size_t got = 0;
    if (!file.Read(bytes, size, got)) return false;
    if (got == 0 || (got < size && last_record == LastRecord::kMustBeWhole)) return true;
    if (!Append(bytes)) return false;
  }
  return true;
}

bool MailRecords::Append(const std::uint8_t* bytes) {
  const bool has_folder = owner_.folder.form != layout::Form::kNone;
  Owner owner = {layout::LoadSlot(owner_.id, bytes), has_folder ? layout::LoadSlot(owner_.folder, bytes) : 0};
  if (owner.id > kLargestId || owner.folder > kLargestId) owner = kNobody;
  const auto position = static_cast<std::uint32_t>(records_.size());
  const std::size_t first = records_.Find(owner);
  if (!records_.Append({owner, kNone, position, position})) return false;
  if (first != records_.kAbsent) {
    At(At(first).last).next = position;
    At(first).last = position;
  }
  return true;
}

const std::uint8_t* MailRecords::Take(Owner owner) {
  const std::size_t first = records_.Find(owner);
  if (first == records_.kAbsent || At(first).next_to_take == kNone) return nullptr;
  const std::uint32_t position = At(first).next_to_take;
  At(first).next_to_take = At(position).next;
  ++taken_;
  return BytesOf(position);
}

const std::uint8_t* MailRecords::First(Owner owner) const {
  const std::size_t first = records_.Find(owner);
  return first == records_.kAbsent ? nullptr : BytesOf(first);
}

const std::uint8_t* MailRecords::Next(const std::uint8_t* record) const {
  const std::uint32_t next = records_[static_cast<std::size_t>(record - bytes_.data()) / form_.exchange_size].next;
  return next == kNone ? nullptr : BytesOf(next);
}

}  // namespace qv::mail
