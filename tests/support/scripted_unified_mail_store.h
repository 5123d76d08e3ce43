// UniMailStore.dll as a scripted store: mails of two tables, whose items are chains of nodes that it keeps until its
// next call, folders, and rules.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_UNIFIED_MAIL_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_UNIFIED_MAIL_STORE_H

#include <memory>

#include "tests/support/scripted_record_store.h"
#include "tests/support/unified_mail_records.h"

namespace qv_test {

class ScriptedUnifiedMailStore final : public ScriptedRecordStore {
 public:
  static constexpr std::size_t kMostRules = 30;

  explicit ScriptedUnifiedMailStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedUnifiedMailStore() override;

  /// Adds a mail as if it had come in; without one, a mail of nothing.
  void Add(std::uint32_t table, std::uint32_t id, std::optional<ListTime> time = std::nullopt);
  void Add(std::uint32_t table, std::uint32_t id, std::optional<ListTime> time, UnMail mail);
  /// What is handed out of a mail, or what was handed in.
  UnMail& MailOf(std::uint32_t table, std::uint32_t id) { return mails_[{table, At(table, id).id}]; }
  /// All of a table.
  std::vector<UnMail> MailsOf(std::uint32_t table);
  /// Mails that were handed in for tables that there are not, which it takes without a word, and their tables.
  std::vector<std::pair<std::uint32_t, UnMail>> astray;

  /// What it holds besides, and what it is told to.
  Bytes folders;
  Bytes folder_rules;
  Bytes sender_rules;

  // Calls are told without "UMAIL_": "GetRec 0 id 5", "AddOneRec 0", "UpdateRec 0 id 5", "DelRec 0 id 5",
  // "tag_DelRec 0 [5 6]", "GetSubFolderList", "WriteFolderList 2".

  // How it departs from the truth.

  /// What it says the number of folders or rules is: claimed_numbers["GetSubFolderList"].
  std::map<std::string, std::uint32_t> claimed_numbers;
  bool has_no_folder_block = false;
  /// What it says each mail's text has for a length.
  std::optional<std::uint32_t> claimed_text_length;

 private:
  friend struct UnifiedMailEntryPoints;

  void HandOut(const Record& record, std::uint32_t table, std::uint8_t* place) override;
  std::uint32_t KeepChain(const std::vector<Bytes>& nodes);
  std::uint32_t Keep(const void* bytes, std::size_t size);
  void TakeBack();

  /// By table and id; those of mails that are gone may stay.
  std::map<std::pair<std::uint32_t, std::uint32_t>, UnMail> mails_;
  /// What was handed out last.
  std::vector<std::pair<std::unique_ptr<std::uint8_t[]>, std::size_t>> handed_out_;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_UNIFIED_MAIL_STORE_H
