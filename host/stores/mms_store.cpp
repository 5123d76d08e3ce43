// MmsStore.dll, the multimedia messages' store library: messages of any length, and a configuration that is one block.
// What it hands out is the caller's to free. Every call is one transaction of the database.
#include <algorithm>
#include <cstring>
#include <span>

#include "host/handset/handset.h"
#include "host/stores/mms_database.h"
#include "host/stores/store_library.h"

namespace {

using stores::MmsDatabase;
using stores::MmsMessage;

/// A message as callers have it.
struct Entry {
  char* text;  ///< Ends with a NUL in what is handed out; in what comes, with its block.
  std::uint32_t id;
  std::uint32_t value;
  std::uint8_t* data;
  std::int32_t data_length;
};
static_assert(sizeof(Entry) == 20);

stores::LibraryOf<MmsDatabase> library;

/// A copy of the bytes in a block of the caller's to be; null without memory.
template <typename Byte>
Byte* NewBlock(const Byte* bytes, std::size_t size) {
  auto* const block = static_cast<Byte*>(coredll::malloc(size));
  if (block != nullptr) std::memcpy(block, bytes, size);
  return block;
}

/// False without memory.
bool HandOut(std::uint32_t id, const MmsMessage& message, Entry& entry) {
  entry.id = id;
  entry.value = message.value;
  entry.text = NewBlock(message.text.c_str(), message.text.size() + 1);
  if (entry.text == nullptr) return false;
  if (message.data.empty()) return true;
  entry.data = NewBlock(message.data.data(), message.data.size());
  entry.data_length = static_cast<std::int32_t>(message.data.size());
  return entry.data != nullptr;
}

void TakeBack(std::span<Entry> entries) {
  for (Entry& entry : entries) {
    coredll::free(entry.text);
    coredll::free(entry.data);
    entry = {};
  }
}

bool IsSound(const Entry& entry) {
  return entry.data_length <= 0 || entry.data != nullptr;
}

MmsMessage MessageOf(const Entry& entry) {
  MmsMessage message = {.value = entry.value};
  if (entry.text != nullptr) {
    const std::size_t size = handset::BlockSize(entry.text);
    message.text.assign(entry.text, std::find(entry.text, entry.text + size, '\0'));
  }
  if (entry.data_length > 0) message.data.assign(entry.data, entry.data + entry.data_length);
  return message;
}

}  // namespace

STORE_ENTRY_POINT std::uint32_t mms_Sync_GetAllRecvNum() {
  std::uint32_t count = 0;
  library.Call([&](MmsDatabase& mms) {
    count = mms.Messages().Count();
    return stores::kDone;
  });
  return count;
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_getAllidTime(std::uint32_t* count, qv::SyncInfoEntry* entries) {
  return library.Call([&](MmsDatabase& mms) {
    if (count == nullptr || (entries == nullptr && *count != 0)) return stores::kNullPointer;
    *count = mms.Messages().SyncInfo({entries, *count});
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_Read(std::uint32_t count, const std::uint32_t* ids, Entry* entries) {
  if (count != 0 && (ids == nullptr || entries == nullptr)) return stores::kNullPointer;
  std::fill_n(entries, count, Entry{});
  const stores::Status status = library.Call([&](const MmsDatabase& mms) {
    for (std::uint32_t i = 0; i < count; ++i) {
      if (!HandOut(ids[i], mms.Read(ids[i]), entries[i])) return stores::kNoMemory;
    }
    return stores::kDone;
  });
  if (status != stores::kDone) TakeBack({entries, count});
  return status;
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_Insert(const Entry* entry, std::uint32_t* new_id) {
  return library.Call([&](MmsDatabase& mms) {
    if (entry == nullptr || new_id == nullptr || !IsSound(*entry)) return stores::kNullPointer;
    *new_id = mms.Insert(MessageOf(*entry));
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_Update(std::uint32_t id, const Entry* entry) {
  return library.Call([&](MmsDatabase& mms) {
    if (entry == nullptr || !IsSound(*entry)) return stores::kNullPointer;
    mms.Update(id, MessageOf(*entry));
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t mms_SC_Sync_Del(std::uint32_t count, const std::uint32_t* ids) {
  return library.Call([&](MmsDatabase& mms) {
    if (count != 0 && ids == nullptr) return stores::kNullPointer;
    mms.Messages().Delete({ids, count});
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_DelAll() {
  return library.Call([&](MmsDatabase& mms) {
    mms.Messages().DeleteAll();
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_GetConfig(std::uint8_t** block, std::uint32_t* size) {
  return library.Call([&](const MmsDatabase& mms) {
    if (block == nullptr || size == nullptr) return stores::kNullPointer;
    const std::vector<std::uint8_t> config = mms.Config();
    *block = config.empty() ? nullptr : NewBlock(config.data(), config.size());
    *size = config.size();
    return *block != nullptr || config.empty() ? stores::kDone : stores::kNoMemory;
  });
}

STORE_ENTRY_POINT std::uint32_t mms_Sync_SetConfig(const std::uint8_t* block, std::uint32_t size) {
  return library.Call([&](MmsDatabase& mms) {
    if (block == nullptr && size != 0) return stores::kNullPointer;
    mms.SetConfig({block, size});
    return stores::kDone;
  });
}
