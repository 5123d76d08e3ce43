// What the unified mail's store is, and how it walks the chains that mails are made of.
#include "tests/support/scripted_unified_mail_store.h"

#include <cstring>

namespace qv_test {
namespace {

using enum Argument;

const ScriptedStoreFacts kFacts = {
    .library = u"UniMailStore.dll",
    .tables = {{.record_size = kStoreUnMailSize, .id_offset = 0}, {.record_size = kStoreUnMailSize, .id_offset = 0}},
    .list = kFileTimeIn16Bytes,
    .entry_points =
        {
            {u"UMAIL_GetAllRecNum", "GetAllRecNum", StoreRole::kCount, {kTable}},
            {u"UMAIL_GetAllidTime", "GetAllidTime", StoreRole::kList, {kTable, kCountPlace, kListEntries}},
            {u"UMAIL_GetRec", "GetRec", StoreRole::kRead, {kTable, kId, kRecords}},
            {u"UMAIL_DelRec", "DelRec", StoreRole::kDelete, {kId, kTable}},
            {u"tag_UMAIL_DelRec", "tag_DelRec", StoreRole::kDelete, {kIds, kCount, kTable}},
        },
};

constexpr int kRubbish = 0xEE;

ScriptedUnifiedMailStore* g_store = nullptr;

std::uint32_t NumberAt(const std::uint8_t* place) {
  std::uint32_t number = 0;
  std::memcpy(&number, place, sizeof(number));
  return number;
}

void PutNumber(std::uint8_t* place, std::uint32_t number) {
  std::memcpy(place, &number, sizeof(number));
}

const std::uint8_t* Address(std::uint32_t number) {
  return reinterpret_cast<const std::uint8_t*>(std::uintptr_t{number});
}

std::vector<Bytes> ChainFrom(std::uint32_t head, std::size_t node_size) {
  std::vector<Bytes> nodes;
  while (head != 0) {
    const std::uint8_t* const node = Address(head);
    ExpectAligned("a node", node);
    nodes.emplace_back(node, node + node_size);
    head = Get32(nodes.back(), node_size - 4);
    Put32(nodes.back(), node_size - 4, 0);
  }
  return nodes;
}

/// A mail that was handed in. Its text's block must be just as long as the mail says.
UnMail MailAt(const std::uint8_t* record) {
  ExpectAligned("a mail", record);
  UnMail mail;
  mail.record.assign(record, record + kStoreUnMailSize);
  for (std::size_t i = 0; i < kUnMailChains; ++i) {
    mail.chains[i] = ChainFrom(NumberAt(record + kChainHeads[i]), kNodeSizes[i]);
    Put32(mail.record, kChainHeads[i], 0);
  }
  const std::uint8_t* const text = Address(NumberAt(record + kUnMailTextAt));
  Put32(mail.record, kUnMailTextAt, 0);
  if (text != nullptr) mail.text.emplace(reinterpret_cast<const char*>(text), handset::BlockSize(text));
  return mail;
}

}  // namespace

struct UnifiedMailEntryPoints {
  static std::uint32_t AddOneRec(const std::uint8_t* record, std::uint32_t* new_id, std::uint8_t table) noexcept {
    ExpectAligned("the new id's place", new_id);
    EXPECT_EQ(*new_id, 0u) << "what a new id is preset to";
    if (const auto refusal = g_store->Begin("AddOneRec", " " + std::to_string(table))) return *refusal;
    const std::uint32_t id = g_store->next_id++;
    if (!g_store->fills_nothing.contains("AddOneRec")) *new_id = id;
    const UnMail mail = MailAt(record);
    if (table > 1) {
      g_store->astray.emplace_back(table, mail);
    } else {
      g_store->Add(table, id, kFacts.list.new_time, mail);
    }
    return 0;
  }

  static std::uint32_t UpdateRec(const std::uint8_t* record, std::uint32_t id, std::uint8_t table) noexcept {
    const std::string told = " " + std::to_string(table) + " id " + std::to_string(id);
    if (const auto refusal = g_store->Begin("UpdateRec", told)) return *refusal;
    const UnMail mail = MailAt(record);
    if (table > 1) {
      g_store->astray.emplace_back(table, mail);
    } else {
      g_store->At(table, id).time = kFacts.list.new_time;
      g_store->MailOf(table, id) = mail;
    }
    return 0;
  }

  static std::uint32_t GetFolders(std::uint32_t* count, std::uint8_t** folders) noexcept {
    ExpectAligned("the number's place", count);
    ExpectAligned("the folders' place", folders);
    if (const auto refusal = g_store->Begin("GetSubFolderList")) {
      std::memset(count, kRubbish, sizeof(*count));
      std::memset(folders, kRubbish, sizeof(*folders));
      return *refusal;
    }
    if (g_store->fills_nothing.contains("GetSubFolderList")) return 0;
    const Bytes& bytes = g_store->folders;
    *count = NumberOf("GetSubFolderList", bytes.size() / kFolderSize);
    *folders = g_store->has_no_folder_block ? nullptr : NewBlock(bytes.data(), bytes.size());
    return 0;
  }

  static std::uint32_t GetRules(const char* name, const Bytes& bytes, std::uint32_t* count, std::uint8_t* rules) {
    ExpectAligned("the number's place", count);
    ExpectAligned("the rules' place", rules);
    if (const auto refusal = g_store->Begin(name)) {
      std::memset(count, kRubbish, sizeof(*count));
      std::memset(rules, kRubbish, ScriptedUnifiedMailStore::kMostRules * kRuleSize);
      return *refusal;
    }
    if (g_store->fills_nothing.contains(name)) return 0;
    *count = NumberOf(name, bytes.size() / kRuleSize);
    std::copy(bytes.begin(), bytes.end(), rules);
    return 0;
  }
  static std::uint32_t GetFolderRules(std::uint32_t* count, std::uint8_t* rules) noexcept {
    return GetRules("GetAllSubFolderFilterRecs", g_store->folder_rules, count, rules);
  }
  static std::uint32_t GetSenderRules(std::uint32_t* count, std::uint8_t* rules) noexcept {
    return GetRules("GetAllSenderAppointRecs", g_store->sender_rules, count, rules);
  }

  static std::uint32_t Write(const char* name, Bytes& bytes, std::size_t size, std::uint32_t count,
                             const std::uint8_t* all) {
    if (const auto refusal = g_store->Begin(name, " " + std::to_string(count))) return *refusal;
    if (count != 0) ExpectAligned(name, all);
    bytes.assign(all, all + count * size);
    return 0;
  }
  static std::uint32_t WriteFolders(std::uint32_t count, const std::uint8_t* folders) noexcept {
    return Write("WriteFolderList", g_store->folders, kFolderSize, count, folders);
  }
  static std::uint32_t WriteFolderRules(std::uint32_t count, const std::uint8_t* rules) noexcept {
    return Write("WriteAllSubFolderFilterRecs", g_store->folder_rules, kRuleSize, count, rules);
  }
  static std::uint32_t WriteSenderRules(std::uint32_t count, const std::uint8_t* rules) noexcept {
    return Write("WriteAllSenderAppointRecs", g_store->sender_rules, kRuleSize, count, rules);
  }

 private:
  static std::uint32_t NumberOf(const char* name, std::size_t truth) {
    const auto claim = g_store->claimed_numbers.find(name);
    return claim != g_store->claimed_numbers.end() ? claim->second : static_cast<std::uint32_t>(truth);
  }
};

ScriptedUnifiedMailStore::ScriptedUnifiedMailStore(const std::set<std::u16string>& missing,
                                                   std::uintptr_t missing_address)
    : ScriptedRecordStore(
          kFacts, missing, missing_address,
          {{u"UMAIL_AddOneRec", AddressOf(&UnifiedMailEntryPoints::AddOneRec)},
           {u"UMAIL_UpdateRec", AddressOf(&UnifiedMailEntryPoints::UpdateRec)},
           {u"UMAIL_GetSubFolderList", AddressOf(&UnifiedMailEntryPoints::GetFolders)},
           {u"UMAIL_WriteFolderList", AddressOf(&UnifiedMailEntryPoints::WriteFolders)},
           {u"UMAIL_GetAllSubFolderFilterRecs", AddressOf(&UnifiedMailEntryPoints::GetFolderRules)},
           {u"UMAIL_WriteAllSubFolderFilterRecs", AddressOf(&UnifiedMailEntryPoints::WriteFolderRules)},
           {u"UMAIL_GetAllSenderAppointRecs", AddressOf(&UnifiedMailEntryPoints::GetSenderRules)},
           {u"UMAIL_WriteAllSenderAppointRecs", AddressOf(&UnifiedMailEntryPoints::WriteSenderRules)}}) {
  g_store = this;
}

ScriptedUnifiedMailStore::~ScriptedUnifiedMailStore() {
  g_store = nullptr;
}

void ScriptedUnifiedMailStore::Add(std::uint32_t table, std::uint32_t id, std::optional<ListTime> time) {
  Add(table, id, time, PlainStoreUnMail(id));
}

void ScriptedUnifiedMailStore::Add(std::uint32_t table, std::uint32_t id, std::optional<ListTime> time, UnMail mail) {
  ScriptedRecordStore::Add(table, id, time);
  mails_[{table, id}] = std::move(mail);
}

std::vector<UnMail> ScriptedUnifiedMailStore::MailsOf(std::uint32_t table) {
  std::vector<UnMail> mails;
  for (const std::uint32_t id : Ids(table)) mails.push_back(MailOf(table, id));
  return mails;
}

void ScriptedUnifiedMailStore::HandOut(const Record& record, std::uint32_t table, std::uint8_t* place) {
  TakeBack();
  const UnMail& mail = mails_[{table, record.id}];
  std::copy(mail.record.begin(), mail.record.end(), place);
  for (std::size_t i = 0; i < kUnMailChains; ++i) PutNumber(place + kChainHeads[i], KeepChain(mail.chains[i]));
  PutNumber(place + kUnMailTextAt, mail.text ? Keep(mail.text->data(), mail.text->size()) : 0);
  if (claimed_text_length) PutNumber(place + kUnMailTextLength, *claimed_text_length);
}

/// From the last node to the first, which is what it answers.
std::uint32_t ScriptedUnifiedMailStore::KeepChain(const std::vector<Bytes>& nodes) {
  std::uint32_t next = 0;
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
    Bytes linked = *node;
    Put32(linked, linked.size() - 4, next);
    next = Keep(linked.data(), linked.size());
  }
  return next;
}

/// At an odd address, where a store's own blocks may lie.
std::uint32_t ScriptedUnifiedMailStore::Keep(const void* bytes, std::size_t size) {
  handed_out_.emplace_back(std::make_unique<std::uint8_t[]>(size + 1), size + 1);
  std::uint8_t* const kept = handed_out_.back().first.get() + 1;
  if (size != 0) std::memcpy(kept, bytes, size);
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(kept));
}

/// Who still looks at it finds rubbish there.
void ScriptedUnifiedMailStore::TakeBack() {
  for (const auto& [bytes, size] : handed_out_) std::memset(bytes.get(), kRubbish, size);
  handed_out_.clear();
}

}  // namespace qv_test
