// UniMailStore.dll, the unified mail's store library: table 0 holds the mails received, table 1 those sent. A mail's
// items are chains of nodes, and it has a text of any length; both are the store's own until the next call. Folders and
// rules are lists that it gives and takes as a whole.
#include <algorithm>
#include <bit>

#include "host/stores/store_library.h"
#include "host/stores/unified_mail_database.h"
#include "modules/messaging/unified_mail.h"

namespace {

using namespace qv::unified_mail;
using qv::layout::LoadSlot;
using qv::layout::Slot;
using qv::layout::StoreSlot;
using stores::UnifiedMail;
using stores::UnifiedMailDatabase;

// No phone has as many: a chain of more nodes runs in a circle, a longer text or list is a mistake of the caller's.
constexpr std::size_t kMostNodes = 100'000;
constexpr std::uint32_t kMostTextBytes = 1u << 24;
constexpr std::uint32_t kMostFolders = 1000;

stores::LibraryOf<UnifiedMailDatabase> unguarded_library;
UnifiedMail handed_out;

/// For a call: what the last one handed out is gone.
stores::LibraryOf<UnifiedMailDatabase>& Library() {
  handed_out = {};
  return unguarded_library;
}

std::uint8_t* At(std::uint32_t address) {
  return std::bit_cast<std::uint8_t*>(address);
}

void ExpectTable(std::size_t table) {
  if (table >= std::size(stores::kUnifiedMailKinds)) stores::Refuse(stores::kUnknownTable);
}

/// Links the nodes that `takes` in their order, behind the head.
void Link(std::uint8_t* head, std::vector<std::uint8_t>& nodes, std::size_t size, const Slot& next, auto&& takes) {
  std::uint8_t* link = head;
  for (std::size_t i = 0; i < nodes.size(); i += size) {
    if (!takes(&nodes[i])) continue;
    StoreSlot(qv::layout::U32(0), link, std::bit_cast<std::uint32_t>(&nodes[i]));
    link = &nodes[i] + next.offset;
  }
  StoreSlot(qv::layout::U32(0), link, 0);
}

void HandOut(UnifiedMail&& mail, std::uint8_t* record) {
  handed_out = std::move(mail);
  std::ranges::copy(handed_out.record, record);
  for (std::uint32_t kind = 0; kind < kKinds; ++kind) {
    Link(record + kKindChains[kind].offset, handed_out.items_182, stores::kKindItemSize, kNextItem182,
         [kind](const std::uint8_t* item) { return LoadSlot(stores::kKindOfItem, item) == kind; });
  }
  Link(record + kItem308Chain.offset, handed_out.items_308, kItem308NodeSize, kNextItem308,
       [](const std::uint8_t*) { return true; });
  StoreSlot(kStoreText, record, std::bit_cast<std::uint32_t>(handed_out.text.data()));
  StoreSlot(kStoreTextLength, record, handed_out.text.size());
}

void ForEachNode(const Slot& head, const std::uint8_t* record, const Slot& next, auto&& take) {
  std::size_t nodes = 0;
  for (const std::uint8_t* node = At(LoadSlot(head, record)); node != nullptr; node = At(LoadSlot(next, node))) {
    if (++nodes > kMostNodes) stores::Refuse(stores::kOutOfBounds);
    take(node);
  }
}

UnifiedMail Take(const void* from) {
  stores::Expect({from});
  const auto* const record = static_cast<const std::uint8_t*>(from);
  UnifiedMail mail = {.record = {record, record + kMailStoreSize}, .items_182 = {}, .items_308 = {}};
  for (std::uint32_t kind = 0; kind < kKinds; ++kind) {
    ForEachNode(kKindChains[kind], record, kNextItem182, [&](const std::uint8_t* node) {
      std::vector<std::uint8_t>& items = mail.items_182;
      items.insert(items.end(), node, node + kItem182NodeSize);
      items.resize(items.size() + stores::kKindOfItem.size);
      StoreSlot(stores::kKindOfItem, &items[items.size() - stores::kKindItemSize], kind);
    });
  }
  ForEachNode(kItem308Chain, record, kNextItem308, [&](const std::uint8_t* node) {
    mail.items_308.insert(mail.items_308.end(), node, node + kItem308NodeSize);
  });
  const std::uint8_t* const text = At(LoadSlot(kStoreText, record));
  const std::uint32_t length = LoadSlot(kStoreTextLength, record);
  if (length > kMostTextBytes) stores::Refuse(stores::kOutOfBounds);
  stores::ExpectList(length, {text});
  mail.text.assign(text, text + length);
  return mail;
}

/// Copies as many rules as a list has room for; of those that were added by hand there may be more.
std::uint32_t GetRules(std::size_t list, std::uint32_t* count, std::uint8_t* rules) {
  return Library().Call([&](UnifiedMailDatabase& mails) {
    stores::Expect({count, rules});
    const std::vector<std::uint8_t> all = mails.List(list).ReadAll();
    *count = std::min<std::uint32_t>(all.size() / kRuleSize, kMostRules);
    std::copy_n(all.data(), *count * kRuleSize, rules);
  });
}

std::uint32_t ReplaceList(std::size_t list, std::uint32_t count, std::uint32_t most, const std::uint8_t* entries) {
  return Library().Call([&](UnifiedMailDatabase& mails) {
    stores::RecordStore& store = mails.List(list);
    if (count > most) stores::Refuse(stores::kOutOfBounds);
    stores::ExpectList(count, {entries});
    store.ReplaceAll({entries, std::size_t{count} * store.Kind().layout.store_size});
  });
}

}  // namespace

STORE_ENTRY_POINT std::uint32_t UMAIL_GetAllRecNum(std::uint8_t table) {
  return Library().Count(table);
}

STORE_ENTRY_POINT std::uint32_t UMAIL_GetAllidTime(std::uint8_t table, std::uint32_t* count, void* entries) {
  return Library().List(table, count, entries);
}

STORE_ENTRY_POINT std::uint32_t UMAIL_GetRec(std::uint8_t table, std::uint32_t id, std::uint8_t* record) {
  return Library().Call([&](const UnifiedMailDatabase& mails) {
    ExpectTable(table);
    stores::Expect({record});
    HandOut(mails.Read(table, id), record);
  });
}

STORE_ENTRY_POINT std::uint32_t UMAIL_AddOneRec(const void* record, std::uint32_t* new_id, std::uint8_t table) {
  return Library().Call([&](UnifiedMailDatabase& mails) {
    ExpectTable(table);
    stores::Expect({new_id});
    unguarded_library.RefuseIfSet(stores::kUnifiedMailAddRefusal);
    *new_id = mails.Insert(table, Take(record));
  });
}

STORE_ENTRY_POINT std::uint32_t UMAIL_UpdateRec(const void* record, std::uint32_t id, std::uint8_t table) {
  return Library().Call([&](UnifiedMailDatabase& mails) {
    ExpectTable(table);
    mails.Update(table, id, Take(record));
  });
}

STORE_ENTRY_POINT std::uint32_t UMAIL_DelRec(std::uint32_t id, std::uint8_t table) {
  return Library().Delete(table, 1, &id);
}

STORE_ENTRY_POINT std::uint32_t tag_UMAIL_DelRec(const std::uint32_t* ids, std::uint32_t count, std::uint8_t table) {
  return Library().Delete(table, count, ids);
}

STORE_ENTRY_POINT std::uint32_t UMAIL_GetSubFolderList(std::uint32_t* count, std::uint8_t** folders) {
  return Library().Call([&](UnifiedMailDatabase& mails) {
    stores::Expect({count, folders});
    const std::vector<std::uint8_t> all = mails.List(stores::kUnifiedMailFolders).ReadAll();
    *folders = static_cast<std::uint8_t*>(stores::HandOut(all.data(), all.size()));
    *count = all.size() / kFolderSize;
  });
}

STORE_ENTRY_POINT std::uint32_t UMAIL_WriteFolderList(std::uint32_t count, const std::uint8_t* folders) {
  return ReplaceList(stores::kUnifiedMailFolders, count, kMostFolders, folders);
}

STORE_ENTRY_POINT std::uint32_t UMAIL_GetAllSubFolderFilterRecs(std::uint32_t* count, std::uint8_t* rules) {
  return GetRules(stores::kUnifiedMailFolderRules, count, rules);
}

STORE_ENTRY_POINT std::uint32_t UMAIL_WriteAllSubFolderFilterRecs(std::uint32_t count, const std::uint8_t* rules) {
  return ReplaceList(stores::kUnifiedMailFolderRules, count, kMostRules, rules);
}

STORE_ENTRY_POINT std::uint32_t UMAIL_GetAllSenderAppointRecs(std::uint32_t* count, std::uint8_t* rules) {
  return GetRules(stores::kUnifiedMailSenderRules, count, rules);
}

STORE_ENTRY_POINT std::uint32_t UMAIL_WriteAllSenderAppointRecs(std::uint32_t count, const std::uint8_t* rules) {
  return ReplaceList(stores::kUnifiedMailSenderRules, count, kMostRules, rules);
}
