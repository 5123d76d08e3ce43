// What ContactStore.dll does its own way: a session, six numbers for a time, no count of groups before an export.
#include "modules/contacts/contact_store.h"

#include <algorithm>

namespace qv::contacts {
namespace {

/// What lists of records have room for at least: of groups an export carries no more than these.
constexpr std::uint32_t kListRoom[] = {3000, 100};

constexpr SyncInfoForm kSyncInfoForm = {16, 4, SyncInfoForm::Time::kSixWords};

}  // namespace

Store::Store(const char16_t* name) : Library(name) {
  if (auto* const initialize = Resolve<InitializeFunction>(u"DTP_Initialize")) (void)initialize(0);
}

Store::~Store() {
  if (auto* const uninitialize = Resolve<UnInitializeFunction>(u"DTP_UnInitialize")) (void)uninitialize();
}

ContactTable::ContactTable(const Library& store, std::uint32_t number, const TableNames& names)
    : StoreTable(number, names, kSyncInfoForm), store_(store), entry_points_(kEntryPoints[number]) {}

bool ContactTable::LookUp(Use use) {
  // The groups are not counted: their list has a room of its own.
  if (number() == kMainTable && (count_ = store_.Resolve<CountFunction>(entry_points_.count)) == nullptr) return false;
  list_ = store_.Resolve<ListFunction>(entry_points_.list);
  if (list_ == nullptr || use == Use::kList) return list_ != nullptr;
  read_ = store_.Resolve<ReadFunction>(entry_points_.read);
  return read_ != nullptr;
}

Result ContactTable::Count(std::uint32_t* count) {
  *count = kListRoom[number()];
  if (number() == kGroupTable) return Result::kOk;
  std::int32_t counted = 0;
  if (count_(&counted) != 0) return Result::kCountFailed;
  *count = static_cast<std::uint32_t>(std::max(counted, 0));
  return Result::kOk;
}

Result ContactTable::GetSyncInfo(std::uint32_t* count, void* entries) {
  std::int32_t listed = static_cast<std::int32_t>(*count);
  if (list_(&listed, entries) != 0) return Result::kSyncInfoFailed;
  *count = static_cast<std::uint32_t>(std::max(listed, 0));
  return *count == 0 ? EmptyResult() : Result::kOk;
}

bool ContactTable::Read(std::span<const std::uint32_t> ids, void* records) {
  return read_(ids.data(), static_cast<std::int32_t>(ids.size()), records) == 0;
}

Result ContactTable::PrepareEmptying() {
  list_ = store_.Resolve<ListFunction>(entry_points_.list);
  erase_ = store_.Resolve<DeleteFunction>(entry_points_.erase);
  if (list_ == nullptr || erase_ == nullptr) return Result::kEntryPointMissing;
  // A store that does not count has the room that the list always had.
  auto* const count = store_.Resolve<CountFunction>(entry_points_.count);
  std::int32_t counted = 0;
  if (count != nullptr && count(&counted) != 0) counted = 0;
  const std::uint32_t room = std::max(static_cast<std::uint32_t>(std::max(counted, 0)), kListRoom[number()]);
  return to_erase_.Resize(room, form()) ? Result::kOk : Result::kNoMemory;
}

Result ContactTable::Empty() {
  auto count = static_cast<std::uint32_t>(to_erase_.entries().size());
  if (const Result listed = GetSyncInfo(&count, to_erase_.data()); IsFailure(listed)) return listed;
  to_erase_.Take(count);
  to_erase_.QueueAll();
  const std::span<const std::uint32_t> ids = to_erase_.QueuedIds();
  if (ids.empty()) return Result::kOk;
  return erase_(ids.data(), static_cast<std::int32_t>(ids.size())) == 0 ? Result::kOk : Result::kWipeFailed;
}

}  // namespace qv::contacts
