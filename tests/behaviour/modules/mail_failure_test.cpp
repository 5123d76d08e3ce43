// Fail call 1, 2, 3, ... until nothing fails any more. The e-mail database reports no codes, so that only what is there
// afterwards tells what became of a run: what a failure does not concern is as if there had been none, and no message
// file is gone whose message was not handed over.
#include <algorithm>

#include "tests/behaviour/modules/mail_test.h"

namespace qv_test {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;

using Files = std::map<std::string, Bytes>;
using Calls = std::vector<ScriptedMailStore::HandedOver>;

std::string NameOf(std::u16string_view path) {
  path.remove_prefix(path.rfind(u'\\') + 1);
  return {path.begin(), path.end()};
}

bool IsMessage(const std::string& file) {
  return file.ends_with(".eml");
}

/// The call that failed, and what had happened before.
struct FailedCall {
  std::string function;
  std::string file;
  std::uint32_t size = 0;
  std::string open_file;  ///< The file that was opened last, if it was open.
  bool is_the_stores = false;
  std::size_t handed_over = 0;  ///< Calls that had handed nodes over.
  unsigned times = 0;           ///< Such calls on this file before.
};

class MailFailureTest : public MailTest {
 protected:
  MailFailureTest() {
    MakeDirectory(u"\\dbdata\\mail\\file");
    MakeDirectory(u"\\SD\\mail\\file");
  }

  /// Runs with the n-th call failing, 0 for none, and says which call that was.
  FailedCall RunWithFault(unsigned n, handset::Fault fault, bool exporting) {
    FailedCall failed;
    std::string open_file;
    std::map<std::string, unsigned> times;
    handset::FailCall(n, fault);
    handset::Observe([&](const handset::Call& call) {
      if (handset::FaultHappened()) return;
      const std::string function(call.function), file = NameOf(call.path);
      failed = {function,
                file,
                call.size,
                open_file,
                store_.is_allocating,
                store_.handed_over.size(),
                times[function + file]++};
      if (function == "CreateFileW") open_file = file;
      if (function == "CloseHandle" && open_file == file) open_file.clear();
    });
    answer_ = exporting ? LocalExport(kModule) : LocalRecover(kModule);
    handset::Observe({});
    handset::FailCall(0);
    const handset::Census left = handset::TakeCensus();
    EXPECT_EQ(left.files + left.blocks, 0u) << "left open";
    EXPECT_TRUE(store_.calls.empty() || store_.calls.back() == "Delete 1");
    return failed;
  }

  /// The exchange directory's files by name.
  static Files Exchanged() {
    Files files;
    for (auto& [path, bytes] : AllFiles()) {
      if (path.starts_with("sync/")) files[path.substr(5)] = std::move(bytes);
    }
    return files;
  }
  static void ClearExchange() {
    std::filesystem::remove_all(handset::HostPath(kSync));
    MakeDirectory(kSync);
  }

  std::uint32_t answer_ = 0;
};

// --- Exports ---

class MailExportFailureTest : public MailFailureTest {
 protected:
  MailExportFailureTest() {
    for (std::uint8_t kind = 0; kind < kMailKinds; ++kind) {
      store_.lists[kind].assign(2, ExportedNode(MailKind{kind}));
    }
    Put32(store_.lists[kHeader][1], 4, 18);
    Put8(store_.lists[kHeader][1], 848, 1);
    WriteText(u"\\dbdata\\mail\\file\\17.eml", "in the memory");
    WriteText(u"\\SD\\mail\\file\\18.eml", "on the card");
    LocalExport(kModule);
    whole_ = Exchanged();
  }

  /// What is there after this call failed. A text whose conversion fails is converted as far as possible.
  Files Expected(const FailedCall& failed, handset::Fault fault) const {
    Files files = whole_;
    if ((failed.function == "malloc" && !failed.is_the_stores) || failed.function == "realloc") return {};
    if (failed.function == "CreateFileW" || failed.function == "CopyFileW") files.erase(failed.file);
    if (failed.function == "CreateFileW" && failed.file == "mailhead.tbl") EraseMessagesFrom(files, 0);
    if (failed.function == "WriteFile") {
      files[failed.file].resize(failed.times * failed.size +
                                (fault == handset::Fault::kCutShort ? failed.size / 2 : 0));
      if (failed.file == "mailhead.tbl") EraseMessagesFrom(files, failed.times);
    }
    return files;
  }

  Files whole_;

 private:
  static void EraseMessagesFrom(Files& files, unsigned first) {
    if (first == 0) files.erase("17.eml");
    files.erase("18.eml");
  }
};

TEST_F(MailExportFailureTest, EachFailingCallCostsWhatItConcerns) {
  for (const handset::Fault fault : {handset::Fault::kFail, handset::Fault::kCutShort}) {
    std::set<std::string> failed_functions;
    unsigned n = 1;
    for (;; ++n) {
      ASSERT_LT(n, 1000u) << "the run never gets through";
      ClearExchange();
      const FailedCall failed = RunWithFault(n, fault, /*exporting=*/true);
      EXPECT_EQ(answer_, 0u);
      if (!handset::FaultHappened()) break;
      SCOPED_TRACE(failed.function + " " + failed.file + ", call " + std::to_string(n));
      failed_functions.insert(failed.function);
      ASSERT_TRUE(Exchanged() == Expected(failed, fault));
    }
    EXPECT_THAT(failed_functions, testing::UnorderedElementsAre("malloc", "realloc", "CreateFileW", "WriteFile",
                                                                "CopyFileW", "mbstowcs"));
    EXPECT_TRUE(Exchanged() == whole_);
  }
}

TEST_F(MailExportFailureTest, AFullDiskCutsTablesAndLeavesNoHalfMessage) {
  std::size_t all = 0;
  for (const auto& [name, bytes] : whole_) all += bytes.size();
  for (std::size_t room = 0; room < all + 300; room += 293) {
    SCOPED_TRACE(room);
    ClearExchange();
    handset::SetFreeSpace(room);
    EXPECT_EQ(LocalExport(kModule), 0u);
    handset::SetFreeSpace(std::nullopt);
    const Files files = Exchanged();
    for (const auto& [name, bytes] : files) {
      const Bytes& whole = whole_.at(name);
      ASSERT_LE(bytes.size(), whole.size());
      ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), whole.begin())) << name;
      ASSERT_TRUE(!IsMessage(name) || bytes.size() == whole.size()) << name;
    }
    for (const MailForm& form : kMailForms) EXPECT_TRUE(files.contains(NameOf(form.table)));
  }
}

TEST_F(MailExportFailureTest, EachRefusalOfTheLibraryCostsItsTable) {
  unsigned n = 1;
  for (;; ++n) {
    ClearExchange();
    store_.Forget();
    store_.Refuse(n);
    EXPECT_EQ(LocalExport(kModule), 0u);
    if (!store_.failed_a_call) break;
    Files expected = whole_;
    // The database is opened, and then asked for each kind.
    if (n >= 2 && n < 2 + kMailKinds) expected[NameOf(kMailForms[n - 2].table)].clear();
    if (n == 2 + kHeader) std::erase_if(expected, [](const auto& file) { return IsMessage(file.first); });
    EXPECT_TRUE(Exchanged() == expected) << store_.calls.at(n);
    EXPECT_EQ(store_.calls.back(), "Delete 1");
  }
  EXPECT_EQ(n, 12u);
}

// --- Recovers ---

class MailRecoverFailureTest : public MailFailureTest {
 protected:
  MailRecoverFailureTest() {
    for (const std::uint32_t account : {5u, 6u}) {
      SendAccount(account);
      Append(sent_[kUidl], UidlRecord(account, 1));
      Append(sent_[kUidl], UidlRecord(account, 2));
      Append(sent_[kFilter], FilterRecord(8, account, 0));
      Append(sent_[kFilter], FilterRecord(7, account, kMailFolder, 1));
      Append(sent_[kFolder], FolderRecord(4, account, 1));
    }
    for (const std::uint8_t mark : {std::uint8_t{1}, std::uint8_t{2}}) {
      Append(sent_[kContact], ContactRecord(7, mark));
      Append(sent_[kAddress], AddressRecord(17, mark));
      Append(sent_[kAddress], AddressRecord(21, mark));
    }
    for (const std::size_t at : {0u, 628u}) PutText(sent_[kFolder], at + 80, u"a folder's 8-bit text");
    // 18 has no file, and 19 is there already.
    for (const auto& [id, folder, account] :
         {std::array{17u, 3u, 5u}, {18u, 3u, 5u}, {19u, 3u, 5u}, {20u, 4u, 5u}, {21u, 3u, 6u}}) {
      Bytes header = HeaderRecord(id, folder, account);
      PutText(header, 414, std::u16string(1, static_cast<char16_t>(u'a' + id)));
      PutText(header, 880, u"a header's 8-bit text");
      Append(sent_[kHeader], header);
    }
    Bytes there = HeaderNode(1);
    PutText(there, 384, std::u16string(1, u'a' + 19));
    store_.present_headers[5] = {HeaderNode(2), there};
    Place();
    whole_answer_ = LocalRecover(kModule);
    whole_ = std::exchange(store_.handed_over, {});
  }

  /// Everything as it was before the first run.
  void Place() {
    ClearExchange();
    PlaceTables();
    for (const std::int32_t id : {17, 19, 20, 21}) PlaceMessage(id, "text of " + std::to_string(id));
    store_.Forget();
  }

  /// What is to be seen after a run.
  struct Outcome {
    std::uint32_t answer;
    Calls calls;
    std::set<std::string> files;
  };

  Outcome Expected(const FailedCall& failed, handset::Fault fault) const;
  static std::set<std::string> FileNames() {
    std::set<std::string> names;
    for (const auto& [name, bytes] : Exchanged()) names.insert(name);
    return names;
  }

  Calls whole_;
  std::uint32_t whole_answer_ = 0;

 private:
  static bool StartsAccount(const ScriptedMailStore::HandedOver& handed) { return handed.call.starts_with("SetUser "); }
  static bool IsMessageCall(const ScriptedMailStore::HandedOver& handed) { return handed.call.starts_with("SetMail "); }

  /// As without a failure, but for calls `first` to `end`.
  Outcome Without(std::size_t first, std::size_t end, std::set<std::string> files = {}) const {
    Outcome outcome = {0, whole_, std::move(files)};
    for (std::size_t i = first; i < end; ++i) {
      if (whole_[i].body) outcome.files.insert(whole_[i].call.substr(8, 2) + ".eml");
    }
    outcome.calls.erase(outcome.calls.begin() + static_cast<std::ptrdiff_t>(first),
                        outcome.calls.begin() + static_cast<std::ptrdiff_t>(end));
    outcome.answer = static_cast<std::uint32_t>(std::ranges::count_if(outcome.calls, IsMessageCall));
    return outcome;
  }
  std::size_t EndOf(std::size_t first, bool (*is_inside)(const ScriptedMailStore::HandedOver&), bool wanted) const {
    while (first < whole_.size() && is_inside(whole_[first]) == wanted) ++first;
    return first;
  }

  /// Nothing was handed over; the tables from this one in the order of loading on are still there.
  Outcome NotLoaded(std::size_t first_table) const;
  Outcome WithoutNode(const FailedCall& failed) const;
};

MailRecoverFailureTest::Outcome MailRecoverFailureTest::NotLoaded(std::size_t first_table) const {
  Outcome outcome = {0, {}, {"mailuser.tbl", "17.eml", "19.eml", "20.eml", "21.eml"}};
  for (std::size_t i = first_table; i < std::size(kLoadOrder); ++i) {
    outcome.files.insert(NameOf(kMailForms[kLoadOrder[i]].table));
  }
  return outcome;
}

/// Without memory for a node: how much goes with it depends on what it is.
MailRecoverFailureTest::Outcome MailRecoverFailureTest::WithoutNode(const FailedCall& failed) const {
  const std::size_t at = failed.handed_over;
  const bool is_of_first_account = EndOf(at + 1, StartsAccount, false) < whole_.size();
  const std::set<std::string> duplicate =
      is_of_first_account ? std::set<std::string>{"19.eml"} : std::set<std::string>{};
  switch (failed.size) {
    case kMailNodeSizes[kUser]:
    case kMailNodeSizes[kConfig]: return Without(at, EndOf(at + 1, StartsAccount, false), duplicate);
    case kMailNodeSizes[kFolder]: return Without(at, EndOf(at, StartsAccount, false), duplicate);
    case kMailNodeSizes[kHeader]: {
      const bool has_duplicate = whole_[at].call.starts_with("SetMail 17 ");
      return Without(at, EndOf(at, IsMessageCall, true), has_duplicate ? duplicate : std::set<std::string>{});
    }
    default: return Without(at, at + 1);  // A list of its own: the call that it was for.
  }
}

MailRecoverFailureTest::Outcome MailRecoverFailureTest::Expected(const FailedCall& failed, handset::Fault fault) const {
  const bool is_cut_read = failed.function == "ReadFile" && fault == handset::Fault::kCutShort;
  const std::set<std::string> harmless = {"PostMessageW", "wcstombs"};
  if (is_cut_read || harmless.contains(failed.function) || failed.is_the_stores) return Without(0, 0);
  if (failed.function == "DeleteFileW" && failed.file != "18.eml") return Without(0, 0, {failed.file});

  const std::string& file = failed.file.empty() ? failed.open_file : failed.file;
  if (IsMessage(file)) {
    const bool is_deleted = failed.function == "DeleteFileW";
    return is_deleted ? Without(0, 0) : Without(failed.handed_over, failed.handed_over + 1);
  }
  for (std::size_t i = 0; i < std::size(kLoadOrder); ++i) {
    if (file == NameOf(kMailForms[kLoadOrder[i]].table)) return NotLoaded(i);
  }
  if (file == "mailuser.tbl" && failed.function == "ReadFile") {
    Outcome outcome = Without(failed.handed_over, whole_.size(), {"mailuser.tbl"});
    if (failed.handed_over == 0) outcome.files.insert("19.eml");
    outcome.answer = 0;
    return outcome;
  }
  const bool has_begun = failed.function == "malloc" && failed.size > 8;
  if (has_begun) return WithoutNode(failed);
  const bool is_index = failed.function == "realloc" && failed.handed_over > 0;
  return is_index ? Without(0, 0) : NotLoaded(0);
}

void ExpectSameCalls(const Calls& calls, const Calls& expected) {
  std::vector<std::string> names, expected_names;
  for (const auto& handed : calls) names.push_back(handed.call);
  for (const auto& handed : expected) expected_names.push_back(handed.call);
  ASSERT_THAT(names, ElementsAreArray(expected_names));
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_EQ(calls[i].first, expected[i].first) << names[i];
    EXPECT_EQ(calls[i].second, expected[i].second) << names[i];
    EXPECT_EQ(calls[i].body, expected[i].body) << names[i];
  }
}

TEST_F(MailRecoverFailureTest, TheRunIsWhatTheSweepTakesItFor) {
  EXPECT_EQ(whole_answer_, 4u);
  std::vector<std::string> calls;
  for (const auto& handed : whole_) calls.push_back(handed.call);
  EXPECT_THAT(calls,
              testing::ElementsAre("SetUser 5 as 0", "SetUIDL [5 5] of 5", "SetFilter 8 of 5", "SetFolder 3 of 5 as 0",
                                   "SetFilter 7 with [7 7] of 5", "SetMail 17 with [17 17] of 10 bytes",
                                   "SetMail 18 with [] without file", "SetFolder 4 of 5 as 0",
                                   "SetMail 20 with [] of 10 bytes", "SetUser 6 as 0", "SetUIDL [6 6] of 6",
                                   "SetFilter 8 of 6", "SetFolder 3 of 6 as 0", "SetFilter 7 with [7 7] of 6",
                                   "SetMail 21 with [21 21] of 10 bytes", "SetFolder 4 of 6 as 0"));
}

TEST_F(MailRecoverFailureTest, EachFailingCallCostsWhatItConcernsAndNoMessage) {
  for (const handset::Fault fault : {handset::Fault::kFail, handset::Fault::kCutShort}) {
    std::set<std::string> failed_functions;
    unsigned n = 1;
    for (;; ++n) {
      ASSERT_LT(n, 1000u) << "the run never gets through";
      Place();
      const FailedCall failed = RunWithFault(n, fault, /*exporting=*/false);
      if (!handset::FaultHappened()) break;
      SCOPED_TRACE(failed.function + " " + failed.file + " " + std::to_string(failed.size) + ", call " +
                   std::to_string(n));
      failed_functions.insert(failed.function);
      const Outcome expected = Expected(failed, fault);
      EXPECT_EQ(answer_, expected.answer);
      EXPECT_EQ(FileNames(), expected.files);
      ExpectSameCalls(store_.handed_over, expected.calls);
      if (HasFailure()) return;
    }
    EXPECT_THAT(failed_functions, testing::UnorderedElementsAre("malloc", "realloc", "CreateFileW", "GetFileSize",
                                                                "ReadFile", "DeleteFileW", "wcstombs", "PostMessageW"));
    EXPECT_THAT(Exchanged(), IsEmpty());
    EXPECT_EQ(answer_, whole_answer_);
  }
}

TEST_F(MailRecoverFailureTest, EachRefusalOfTheLibraryIsTracedAndTheRestGoesOn) {
  const std::map<std::string, std::string> kTraces = {
      {"SetUIDL [5 5] of 5", "UIDL"},
      {"SetFilter 8 of 5", "Filter"},
      {"SetFilter 7 with [7 7] of 5", "Sync_SetFilterInfo"},
      {"SetFolder 3 of 5 as 0", "Folder"},
      {"SetMail 17 with [17 17] of 10 bytes", "\xCC\xED\xBC\xD3MAILInfo"}};
  // Of the accounts' three messages and one; the message that is there already is another one when nobody says so.
  const std::map<std::string, std::uint32_t> kMessages = {
      {"SetUser 5 as 0", 1}, {"SetUser 6 as 0", 3}, {"QueryHeaderByUserId 5", 5}};
  std::set<std::string> refused_members;
  for (unsigned n = 1;; ++n) {
    Place();
    const std::size_t printed = handset::PrintedText().size();
    store_.Refuse(n);
    const std::uint32_t answer = LocalRecover(kModule);
    if (!store_.failed_a_call) break;
    const std::string& call = store_.calls.at(n);
    const std::string refused = call.substr(0, call.find(' '));
    SCOPED_TRACE(call);
    refused_members.insert(refused);
    EXPECT_EQ(answer, store_.MessagesSet().size());
    EXPECT_EQ(answer, kMessages.contains(call) ? kMessages.at(call) : 4u);
    const std::string trace = handset::PrintedText().substr(printed);
    if (kTraces.contains(call)) {
      EXPECT_EQ(trace, kTraces.at(call) + "\xB3\xF6\xB4\xED\xC1\xCB\xA3\xAC\x35");  // 5.
    }
    EXPECT_EQ(trace.empty(), !refused.starts_with("Set") || refused == "SetUser");
    for (const auto& [file, bytes] : Exchanged()) EXPECT_EQ(refused, "SetUser") << file << " is left";
  }
  EXPECT_THAT(refused_members,
              testing::UnorderedElementsAre("InitCEDB", "SetUser", "SetUIDL", "SetFilter", "QueryHeaderByUserId",
                                            "SetFolder", "SetMail", "CloseCEDB", "DisConnectDB"));
}

}  // namespace
}  // namespace qv_test
