// MmsStore.dll, the multimedia messages' store library: messages of any length, and a configuration that is one block.
// The blocks that it hands out are the caller's to free.
#include <algorithm>
#include <span>

#include "host/handset/handset.h"
#include "host/stores/mms_database.h"
#include "host/stores/store_library.h"
#include "modules/messaging/mms_layout.h"
#include "platform/coredll.h"

namespace {

using qv::mms::StoreMessage;
using stores::kOnlyTable;
using stores::MmsDatabase;
using stores::MmsMessage;

stores::LibraryOf<MmsDatabase> library;

void HandOut(std::uint32_t id, const MmsMessage& from, StoreMessage& to) {
  to.id = id;
  to.value = from.value;
  to.text = static_cast<char*>(stores::HandOut(from.text.c_str(), from.text.size() + 1));
  to.data = static_cast<std::uint8_t*>(stores::HandOut(from.data.data(), from.data.size()));
  to.data_length = static_cast<std::int32_t>(from.data.size());
}

void TakeBack(std::span<StoreMessage> messages) {
  for (StoreMessage& message : messages) {
    coredll::free(message.text);
    coredll::free(message.data);
    message = {};
  }
}

/// What comes has a text that ends with its NUL or its block.
MmsMessage Take(const StoreMessage* from) {
  stores::Expect({from});
  const auto length = static_cast<std::uint32_t>(std::max(from->data_length, 0));
  stores::ExpectList(length, {from->data});
  MmsMessage message = {.value = from->value, .data = {from->data, from->data + length}};
  if (from->text != nullptr) {
    const std::size_t size = handset::BlockSize(from->text);
    message.text.assign(from->text, std::find(from->text, from->text + size, '\0'));
  }
  return message;
}

}  // namespace

STORE_ENTRY_POINT std::uint32_t mms_Sync_GetAllRecvNum() {
  return library.Count(kOnlyTable);
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_getAllidTime(std::uint32_t* count, void* entries) {
  return library.List(kOnlyTable, count, entries);
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_Read(std::uint32_t count, const std::uint32_t* ids, StoreMessage* messages) {
  std::span<StoreMessage> handed_out;
  const stores::Status status = library.Call([&](const MmsDatabase& mms) {
    stores::ExpectList(count, {ids, messages});
    handed_out = {messages, count};
    std::ranges::fill(handed_out, StoreMessage{});
    for (std::uint32_t i = 0; i < count; ++i) HandOut(ids[i], mms.Read(ids[i]), messages[i]);
  });
  if (status != stores::kDone) TakeBack(handed_out);
  return status;
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_Insert(const StoreMessage* message, std::uint32_t* new_id) {
  return library.Call([&](MmsDatabase& mms) {
    stores::Expect({new_id});
    *new_id = mms.Insert(Take(message));
  });
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_Update(std::uint32_t id, const StoreMessage* message) {
  return library.Call([&](MmsDatabase& mms) { mms.Update(id, Take(message)); });
}

STORE_ENTRY_POINT std::uint32_t mms_SC_Sync_Del(std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(kOnlyTable, count, ids);
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_DelAll() {
  return library.DeleteAll();
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_GetConfig(std::uint8_t** block, std::uint32_t* size) {
  return library.Call([&](const MmsDatabase& mms) {
    stores::Expect({block, size});
    const std::vector<std::uint8_t> config = mms.Config();
    *block = static_cast<std::uint8_t*>(stores::HandOut(config.data(), config.size()));
    *size = config.size();
  });
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_SetConfig(const std::uint8_t* block, std::uint32_t size) {
  return library.Call([&](MmsDatabase& mms) {
    stores::ExpectList(size, {block});
    mms.SetConfig({block, size});
  });
}
