// Unified mail that travels to the desktop, back to an emptied store and out again: whatever does not return as it left
// is named in one place.
#include <random>

#include "tests/support/scripted_unified_mail_store.h"

namespace qv_test {
namespace {

/// A character and its bytes in the store.
struct Character {
  char16_t wide;
  std::string_view narrow;
};
constexpr Character kCharacters[] = {{u'a', "a"},
                                     {u'Z', "Z"},
                                     {u'~', "~"},
                                     {u' ', " "},
                                     {u'\u738B', "\xCD\xF5"},
                                     {u'\u90AE', "\xD3\xCA"},
                                     {u'\u4EF6', "\xBC\xFE"}};

class RandomMail {
 public:
  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(engine_()) % bound; }

  UnMail Mail(std::uint32_t id) {
    UnMail mail;
    mail.record = Noise(kStoreUnMailSize);
    Put32(mail.record, 0, id);
    for (const UnMailText& text : kUnMailTexts) PutSomeText(mail.record, text);
    for (std::size_t i = 0; i < kUnMailChains; ++i) mail.chains[i] = Chain(i);
    mail.text = Text(Below(2) == 0 ? Below(8) : Below(3000));
    Put32(mail.record, kUnMailTextLength, static_cast<std::uint32_t>(mail.text->size()));
    return mail;
  }

  Bytes Noise(std::size_t size) {
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(Below(256));
    return bytes;
  }

 private:
  std::vector<Bytes> Chain(std::size_t chain) {
    std::vector<Bytes> nodes(Below(2) == 0 ? 0 : Below(5));
    for (Bytes& node : nodes) {
      node = Noise(kNodeSizes[chain]);
      if (chain == 3) {
        PutSomeText(node, kItem308Text);
      } else {
        for (const UnMailText& text : kItem182Texts) PutSomeText(node, text);
      }
    }
    return nodes;
  }

  /// As many whole characters as `size` bytes hold.
  std::string Text(std::size_t size) {
    std::string text;
    for (;;) {
      const Character& next = kCharacters[Below(std::size(kCharacters))];
      if (text.size() + next.narrow.size() > size) return text;
      text += next.narrow;
    }
  }

  /// Text that fills its field, or ends before.
  void PutSomeText(Bytes& r, const UnMailText& field) {
    const auto most = static_cast<std::uint32_t>(field.store_size);
    const std::string text = Text(Below(3) == 0 ? most : Below(most));
    std::copy(text.begin(), text.end(), r.begin() + static_cast<std::ptrdiff_t>(field.store));
    if (text.size() < field.store_size) Put8(r, field.store + text.size(), 0);
  }

  std::mt19937 engine_{20061211};
};

/// Cuts wide text of `characters` behind what `room` bytes hold of it in the store; answers how many characters stay.
std::size_t CutText(Bytes& r, std::size_t offset, std::size_t characters, std::size_t room) {
  std::size_t used = 0;
  for (std::size_t i = 0; i < characters; ++i) {
    const std::size_t at = offset + 2 * i;
    const bool is_narrow = r[at] < 0x80 && r[at + 1] == 0;
    used += is_narrow ? 1 : 2;
    if (used <= room) continue;
    std::fill(r.begin() + static_cast<std::ptrdiff_t>(at),
              r.begin() + static_cast<std::ptrdiff_t>(offset + 2 * characters), std::uint8_t{0});
    return i;
  }
  return characters;
}

void CutField(Bytes& r, std::size_t begin, const UnMailText& field) {
  CutText(r, begin + field.exchange, field.exchange_size / 2, field.store_size - 1);
}

/// Mails have new ids; the last character of a text may find no room behind which the store can end it; of a long text
/// there are four bytes, or as many as it had characters.
Bytes AfterARoundTrip(Bytes mail, std::uint32_t new_id) {
  Put32(mail, 0, new_id);
  for (const UnMailText& text : kUnMailTexts) CutField(mail, 0, text);
  std::size_t at = kUnMailSize;
  for (std::uint32_t i = 0; i < Get32(mail, 612); ++i, at += 182) {
    for (const UnMailText& text : kItem182Texts) CutField(mail, at, text);
  }
  for (std::uint32_t i = 0; i < Get32(mail, 836); ++i, at += 308) CutField(mail, at, kItem308Text);
  const std::size_t characters = Get32(mail, 628);
  const std::size_t left = CutText(mail, at, characters, std::min<std::size_t>(characters, 4));
  Put32(mail, 628, static_cast<std::uint32_t>(left));
  mail.resize(at + 2 * left);
  return mail;
}

class UnifiedMailRoundTripTest : public AgentTest {
 protected:
  static constexpr std::uint32_t kMails = 40;

  void FillStore() {
    for (auto& records : store_.tables) records.clear();
    for (std::uint32_t i = 0; i < kMails; ++i) {
      const std::uint32_t id = 20 + 7 * i;
      store_.Add(random_.Below(2), id, 1, random_.Mail(id));
    }
    store_.folders = random_.Noise(random_.Below(50) * kFolderSize);
    store_.folder_rules = random_.Noise(random_.Below(31) * kRuleSize);
    store_.sender_rules = random_.Noise(random_.Below(31) * kRuleSize);
  }

  /// A handset's store has a mail's own id in the mail, too.
  void TakeIdsIntoMails() {
    for (const std::uint32_t table : {0u, 1u}) {
      for (const std::uint32_t id : store_.Ids(table)) Put32(store_.MailOf(table, id).record, 0, id);
    }
  }

  std::vector<std::uint32_t> AllIds() const {
    std::vector<std::uint32_t> ids = store_.Ids(0);
    for (const std::uint32_t id : store_.Ids(1)) ids.push_back(id);
    return ids;
  }

  /// The mails of a table, each with its parts.
  static std::vector<Bytes> MailsIn(const Bytes& table) {
    std::vector<Bytes> mails;
    for (std::size_t at = 0; at < table.size();) {
      const std::size_t size =
          kUnMailSize + 182 * Get32(table, at + 612) + 308 * Get32(table, at + 836) + 2 * Get32(table, at + 628);
      mails.emplace_back(table.begin() + static_cast<std::ptrdiff_t>(at),
                         table.begin() + static_cast<std::ptrdiff_t>(at + size));
      at += size;
    }
    return mails;
  }

  RandomMail random_;
  ScriptedUnifiedMailStore store_;
};

TEST_F(UnifiedMailRoundTripTest, WhatWasRecoveredIsExportedAgain) {
  for (std::uint32_t trip = 1; trip <= 10; ++trip) {
    SCOPED_TRACE(trip);
    FillStore();
    ASSERT_EQ(Export(5, 2).code, 0u);
    const std::vector<Bytes> before = MailsIn(ReadFile(kUnMailTable));
    const Bytes lists_before[] = {store_.folders, store_.folder_rules, store_.sender_rules};
    ASSERT_EQ(before.size(), kMails);
    store_.folders = store_.folder_rules = store_.sender_rules = {};

    store_.next_id = 100000 * trip;
    ASSERT_EQ(Recover(5, 2).code, 0u);
    TakeIdsIntoMails();
    ASSERT_EQ(Export(5, 2).code, 0u);

    const std::vector<Bytes> after = MailsIn(ReadFile(kUnMailTable));
    const std::vector<std::uint32_t> ids = AllIds();
    ASSERT_EQ(after.size(), kMails);
    for (std::size_t i = 0; i < kMails; ++i) ASSERT_EQ(after[i], AfterARoundTrip(before[i], ids[i])) << "mail " << i;
    EXPECT_EQ(ReadFile(kUnMailFolders), lists_before[0]);
    EXPECT_EQ(ReadFile(kUnMailFolderRules), lists_before[1]);
    EXPECT_EQ(ReadFile(kUnMailSenderRules), lists_before[2]);
  }
}

TEST_F(UnifiedMailRoundTripTest, ARecoveredStoreHasNoChangesToExport) {
  FillStore();
  ASSERT_EQ(Export(5, 1).code, 0u);
  store_.next_id = 100000;
  const Answer recovered = Recover(5, 1);
  const Answer exported = Export(5, 3, recovered.anchor);
  EXPECT_EQ(exported.mode, 3u);
  for (const auto* file : {kUnMailTable, kUnMailChanges}) EXPECT_TRUE(ReadFile(file).empty());
}

}  // namespace
}  // namespace qv_test
