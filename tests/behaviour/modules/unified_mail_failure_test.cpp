// Each failure in a run of the unified mail, of the platform and of the store. Nobody is told of any, so what is looked
// at is what the run left behind: the step that failed, and those that build on it, may leave less; every other step
// must leave what it leaves when nothing fails.
#include <functional>

#include "tests/support/fault_sweep.h"
#include "tests/support/scripted_unified_mail_store.h"

namespace qv_test {
namespace {

/// What a run does one after the other, none of which may hold up the next.
enum class Step : std::uint8_t {
  kBegin,
  kFolders,
  kFolderRules,
  kSenderRules,
  kAnchor,
  kEmpty,
  kChanges,
  kReceived,  ///< Mails exported; and the file of both tables.
  kSent,
  kApplied,
  kDeletions,  ///< Files that go at the end; their failure leaves the file.
  kReceivedLog,
  kSentLog,
  kIdMap,
};

/// A call by which a step is known to have begun.
struct Begin {
  PlatformCall call;
  Step step;
};

/// One kind of run.
struct Run {
  const char* name;
  bool exporting;
  std::uint32_t mode;
  /// What is seen of it, in order: each begins once the one before it has.
  std::vector<Begin> begins;
};

void PrintTo(const Run& run, std::ostream* out) {
  *out << run.name;
}

/// What a run leaves behind, by the step that leaves it.
struct Left {
  std::map<Step, Bytes> bytes;
  std::vector<std::string> files;
};

std::u16string NameOf(std::u16string_view path) {
  return std::u16string(path.substr(path.rfind(u'\\') + 1));
}

std::vector<Run> Runs() {
  const Begin kAnchorMoves = {Opens(kAnchorIni), Step::kAnchor};
  const std::vector<Begin> kListsOut = {{LooksUp(u"UMAIL_GetSubFolderList"), Step::kFolders},
                                        {LooksUp(u"UMAIL_GetAllSubFolderFilterRecs"), Step::kFolderRules},
                                        {LooksUp(u"UMAIL_GetAllSenderAppointRecs"), Step::kSenderRules}};
  const std::vector<Begin> kListsIn = {{Opens(kUnMailFolders), Step::kFolders},
                                       {Opens(kUnMailFolderRules), Step::kFolderRules},
                                       {Opens(kUnMailSenderRules), Step::kSenderRules},
                                       {Deletes(kUnMailFolders), Step::kDeletions}};
  const std::vector<Begin> kLogs = {{Opens(kReceivedLog), Step::kReceivedLog}, {Opens(kSentLog), Step::kSentLog}};
  const std::vector<Begin> kLogsThatWereRead = {{Opens(kReceivedLog, 2), Step::kReceivedLog},
                                                {Opens(kSentLog, 2), Step::kSentLog}};
  const Begin kMailsOut = {Opens(kUnMailTable), Step::kReceived};
  const Begin kMailsIn = {Opens(kUnMailTable), Step::kApplied};
  const Begin kMailsGo = {Deletes(kUnMailTable), Step::kDeletions};
  const Begin kMap = {Opens(kUnMailIdMap), Step::kIdMap};
  const auto join = [](std::initializer_list<std::vector<Begin>> parts) {
    std::vector<Begin> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  };
  const Begin kSentOut = {LooksUp(u"UMAIL_GetAllRecNum", 2), Step::kSent};
  const Begin kEmptying = {LooksUp(u"UMAIL_DelRec"), Step::kEmpty};
  const Begin kChangesIn = {Opens(kUnMailChanges), Step::kChanges};
  const Begin kChangesGo = {Deletes(kUnMailChanges), Step::kDeletions};
  return {
      {"FullExport", true, 1, join({kListsOut, {kAnchorMoves, kMailsOut, kSentOut}, kLogs})},
      {"IncrementalExport", true, 3, join({kListsOut, {kAnchorMoves, kMailsOut, kSentOut}, kLogsThatWereRead})},
      {"PlainExport", true, 4, join({kListsOut, {kMailsOut, kSentOut}})},
      {"FullRecover", false, 1, join({{kAnchorMoves}, kListsIn, {kMailsIn, kMailsGo}, kLogs, {kMap}})},
      {"ReplaceRecover", false, 2, join({{kAnchorMoves}, kListsIn, {kEmptying, kMailsIn, kMailsGo}, kLogs, {kMap}})},
      {"IncrementalRecover", false, 3,
       join({{kAnchorMoves}, kListsIn, {kChangesIn, kMailsIn, kChangesGo, kMailsGo}, kLogs, {kMap}})},
      {"PlainRecover", false, 4, join({kListsIn, {kMailsIn, kMailsGo}})},
  };
}

/// Follows a run by its calls to know the step that a failure falls in.
class StepWatcher {
 public:
  explicit StepWatcher(const Run& run) : run_(run) {}

  void See(const handset::Call& call) {
    call_ = std::string(call.function);
    const std::u16string name = NameOf(call.path);
    if (call_ == "realloc") ++allocations_;
    const unsigned time = ++times_[{call_, name}];
    if (next_ == run_.begins.size()) return;
    const auto& [begin, step] = run_.begins[next_];
    if (begin.function != call_ || begin.name != name || begin.time != time) return;
    step_ = step;
    ++next_;
  }

  const std::string& call() const { return call_; }
  /// What follows on a deletion makes the next step ready.
  Step step() const {
    const bool is_next = step_ == Step::kDeletions && call_ != "DeleteFileW" && next_ != run_.begins.size();
    return is_next ? run_.begins[next_].step : step_;
  }
  /// Without the buffer of the anchor nothing is run, and that is told.
  bool IsFirstAllocation() const { return call_ == "realloc" && allocations_ == 1; }

 private:
  const Run& run_;
  std::string call_;
  Step step_ = Step::kBegin;
  std::size_t next_ = 0;
  unsigned allocations_ = 0;
  std::map<std::pair<std::string, std::u16string>, unsigned> times_;
};

class UnifiedMailFailureTest : public AgentTest, public testing::WithParamInterface<Run> {
 protected:
  /// The same each time.
  static std::unique_ptr<ScriptedUnifiedMailStore> Prepare() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(handset::HostPath(u"\\"))) {
      if (entry.is_regular_file()) std::filesystem::remove(entry.path());
    }
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nUNMAIL = 5");
    WriteFile(kReceivedLog, Words({1, 9, 0, 90, 1, 0}));
    WriteFile(kSentLog, Words({91, 1, 0}));
    if (!GetParam().exporting) {
      WriteFile(kUnMailFolders, Folders(2));
      WriteFile(kUnMailFolderRules, Rules(2));
      WriteFile(kUnMailSenderRules, Rules(1));
      Bytes mails = NoisyUnMail(0);
      Append(mails, PlainUnMail(1, 5));
      Append(mails, UnMailRecord({.id = 2, .items_182 = {Item182(1)}, .text = u"long text"}));
      WriteFile(kUnMailTable, mails);
      WriteFile(kUnMailChanges, Words({0, kUnMailId, 1, 1, 5, 1, 0, 2, 2, 0, 3, 3, 1, 4, 3}));
    }
    auto store = std::make_unique<ScriptedUnifiedMailStore>();
    store->Add(0, 1, 1, StoreUnMail());
    for (const std::uint32_t id : {2u, 3u}) store->Add(0, id);
    store->Add(1, 4, 1, StoreUnMailWithText(4, "text"));
    store->Add(1, 5);
    store->folders = Folders(3);
    store->folder_rules = store->sender_rules = Rules(3);
    return store;
  }

  Answer Perform() { return GetParam().exporting ? Export(5, GetParam().mode, u"5") : Recover(5, GetParam().mode); }

  static Bytes BytesOf(std::u16string_view path) { return Exists(path) ? ReadFile(path) : Bytes{0xFF}; }

  /// The mails of one table, in the file of both.
  static Bytes ExportedOf(std::uint32_t table) {
    Bytes mails;
    const Bytes file = BytesOf(kUnMailTable);
    for (std::size_t at = 0; at + kUnMailSize <= file.size();) {
      const std::size_t size =
          kUnMailSize + 182 * Get32(file, at + 612) + 308 * Get32(file, at + 836) + 2 * Get32(file, at + 628);
      const std::size_t end = std::min(at + size, file.size());
      const Bytes mail(file.begin() + static_cast<std::ptrdiff_t>(at), file.begin() + static_cast<std::ptrdiff_t>(end));
      if (Get32(mail, 8) == table) Append(mails, mail);
      at = end;
    }
    return mails;
  }

  static Left WhatIsLeft(ScriptedUnifiedMailStore& store) {
    Left left;
    const bool exporting = GetParam().exporting;
    left.bytes[Step::kAnchor] = BytesOf(kAnchorIni);
    left.bytes[Step::kFolders] = exporting ? BytesOf(kUnMailFolders) : store.folders;
    left.bytes[Step::kFolderRules] = exporting ? BytesOf(kUnMailFolderRules) : store.folder_rules;
    left.bytes[Step::kSenderRules] = exporting ? BytesOf(kUnMailSenderRules) : store.sender_rules;
    left.bytes[Step::kReceivedLog] = BytesOf(kReceivedLog);
    left.bytes[Step::kSentLog] = BytesOf(kSentLog);
    left.bytes[Step::kIdMap] = BytesOf(kUnMailIdMap);
    if (exporting) {
      left.bytes[Step::kReceived] = ExportedOf(0);
      left.bytes[Step::kSent] = ExportedOf(1);
      left.bytes[Step::kChanges] = BytesOf(kUnMailChanges);
    } else {
      for (const auto& records : store.tables) {
        for (const auto& record : records) Append(left.bytes[Step::kApplied], Words({record.id}));
      }
    }
    for (const auto* file : {kUnMailFolders, kUnMailFolderRules, kUnMailSenderRules, kUnMailTable, kUnMailChanges}) {
      if (!exporting && Exists(file)) left.files.push_back(handset::HostPath(file).filename().string());
    }
    return left;
  }

  /// What a failing step takes with it.
  static std::set<Step> Touched(Step failed) {
    switch (failed) {
      case Step::kBegin:
      case Step::kSenderRules:  // The anchor's step begins unseen, behind these.
        return {failed, Step::kAnchor};
      case Step::kReceived:  // A file that is not there, or torn, is none for the other table.
        return {Step::kReceived, Step::kSent, Step::kChanges};
      case Step::kSent: return {Step::kSent, Step::kChanges};
      case Step::kEmpty:
      case Step::kChanges:
      case Step::kApplied:  // What the store does not have, no log tells.
        return {Step::kApplied, Step::kReceivedLog, Step::kSentLog, Step::kIdMap};
      default: return {failed};
    }
  }

  static void ExpectLeft(const Left& left, const Left& clean, Step failed, const std::string& call, bool is_full) {
    std::set<Step> touched = Touched(failed);
    if (is_full) {
      EXPECT_TRUE(touched.contains(Step::kAnchor)) << "only an anchor that cannot be read makes the export a full one";
      touched.insert({Step::kReceived, Step::kSent, Step::kChanges});
    }
    for (const auto& [step, bytes] : clean.bytes) {
      if (touched.contains(step)) continue;
      EXPECT_EQ(left.bytes.at(step), bytes)
          << "of step " << static_cast<int>(step) << ", while " << static_cast<int>(failed) << " failed";
    }
    EXPECT_EQ(left.files.size(), clean.files.size() + (call == "DeleteFileW" ? 1 : 0)) << "all other files go";
  }

  static void ExpectNothingOpen() {
    const handset::Census left = handset::TakeCensus();
    EXPECT_EQ(left.files + left.libraries + left.blocks + left.semaphores, 0u);
  }

  /// `arm` asks for the n-th fault. Answers how many there were.
  unsigned FailEach(const std::function<void(unsigned n)>& arm) {
    const std::unique_ptr<ScriptedUnifiedMailStore> unharmed = Prepare();
    EXPECT_EQ(Perform().code, 0u);
    const Left clean = WhatIsLeft(*unharmed);
    for (unsigned n = 1;; ++n) {
      const auto store = Prepare();
      StepWatcher watcher(GetParam());
      handset::Observe([&](const handset::Call& call) {
        if (!handset::FaultHappened()) watcher.See(call);
      });
      arm(n);
      const Answer answer = Perform();
      handset::Observe({});
      ExpectNothingOpen();
      if (!handset::FaultHappened()) return n - 1;
      SCOPED_TRACE("call " + std::to_string(n) + ", " + watcher.call());
      const std::uint32_t no_memory = GetParam().exporting ? 0x10000010 : 0x20000010;
      EXPECT_EQ(answer.code, watcher.IsFirstAllocation() ? no_memory : 0);
      if (watcher.IsFirstAllocation() || watcher.call() == "LoadLibraryW") continue;
      ExpectLeft(WhatIsLeft(*store), clean, watcher.step(), watcher.call(), answer.mode != GetParam().mode);
    }
  }
};

TEST_P(UnifiedMailFailureTest, EachFailingPlatformCallEndsItsOwnStepOnly) {
  EXPECT_GT(FailEach([](unsigned n) { handset::FailCall(n); }), 40u) << "hardly any call was reached";
}

TEST_P(UnifiedMailFailureTest, EachTransferCutShortEndsItsOwnStepOnly) {
  unsigned transfers = 0;
  for (const char* const function : {"ReadFile", "WriteFile"}) {
    transfers += FailEach([&](unsigned n) { handset::FailCallOf(function, n, handset::Fault::kCutShort); });
  }
  EXPECT_GT(transfers, 5u) << "hardly any was reached";
}

TEST_P(UnifiedMailFailureTest, EachFailingStoreCallEndsItsOwnStepOnly) {
  const std::unique_ptr<ScriptedUnifiedMailStore> unharmed = Prepare();
  EXPECT_EQ(Perform().code, 0u);
  const Left clean = WhatIsLeft(*unharmed);
  unsigned n = 1;
  for (;; ++n) {
    const auto store = Prepare();
    StepWatcher watcher(GetParam());
    handset::Observe([&](const handset::Call& call) {
      if (!store->failed_a_call) watcher.See(call);
    });
    store->fail_call = n;
    EXPECT_EQ(Perform().code, 0u);
    handset::Observe({});
    ExpectNothingOpen();
    if (!store->failed_a_call) break;
    SCOPED_TRACE("store call " + std::to_string(n));
    ExpectLeft(WhatIsLeft(*store), clean, watcher.step(), {}, false);
  }
  EXPECT_GT(n, 5u) << "hardly any call was reached";
}

std::string NameOfRun(const testing::TestParamInfo<Run>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Runs, UnifiedMailFailureTest, testing::ValuesIn(Runs()), NameOfRun);

}  // namespace
}  // namespace qv_test
