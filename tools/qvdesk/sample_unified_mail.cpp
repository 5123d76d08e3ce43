// The words behind the sample mails. Nobody says what a phone shows most of its texts as; names, addresses and subjects
// are put where there is room for such.
#include "tools/qvdesk/sample_unified_mail.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/stores/unified_mail_database.h"
#include "modules/messaging/unified_mail_layout.h"
#include "tools/qvdesk/sample_data.h"

namespace qvdesk {
namespace {

namespace unified_mail = qv::unified_mail;

struct Person {
  std::string_view name, address;
};
constexpr Person kPeople[] = {{"Anna Müller", "anna.mueller@example.org"},
                              {"李明", "li.ming@example.cn"},
                              {"Tom Smith", "tom@example.com"},
                              {"王建国", "wang@example.cn"}};

struct Letter {
  std::string_view subject, text;
};
constexpr Letter kLetters[] = {
    {"Minutes of Monday", "Dear all,\r\n\r\nplease find the minutes below. Corrections until Friday, please.\r\n"},
    {"周末聚会", "大家好!\r\n星期六晚上七点,老地方见。\r\n"},
    {"Your booking", "Thank you for your booking. The ferry leaves at 9:40 from pier 2."},
    {"Photos", "The best of them are attached."},
    {"关于合同", "合同已经看过,没有问题。"}};
constexpr std::string_view kFiles[] = {"minutes.txt", "照片.jpg", "ticket.pdf"};
constexpr std::string_view kFolders[] = {"Friends", "工作", "Travel"};

constexpr std::uint32_t kOneOfThreeIsSent = 3;

// Kinds of items of 182 bytes.
constexpr std::uint32_t kReceiver = 0;
constexpr std::uint32_t kCopyReceiver = 1;

const Person& PickPerson(Dice& dice) {
  return dice.Pick(std::span<const Person>(kPeople));
}

void SetTime(RecordBuilder& mail, const std::string& prefix, stores::FileTime time) {
  const stores::CalendarTime t = stores::CalendarTimeOf(time);
  mail.Set(prefix + "_year", t.year);
  mail.Set(prefix + "_month", t.month);
  mail.Set(prefix + "_day", t.day);
  mail.Set(prefix + "_hour", t.hour);
  mail.Set(prefix + "_minute", t.minute);
  mail.Set(prefix + "_second", t.second);
}

RecordBuilder MakeRecord(const Letter& letter, stores::FileTime time, Dice& dice) {
  const Person& from = PickPerson(dice);
  RecordBuilder mail(unified_mail::kMailLayout);
  mail.Set("flag_4", dice.Roll(2));
  mail.Set("value_12", 1 + dice.Roll(3));
  mail.Set("value_20", static_cast<std::uint32_t>(stores::InCodePage(letter.text).size()));
  SetTime(mail, "time_1", time);
  SetTime(mail, "time_2", time + stores::kSecond);
  mail.Set("text_1", from.name);
  mail.Set("text_2", from.address);
  mail.Set("text_3", letter.subject);
  return mail;
}

void AppendPerson(const Person& person, std::uint32_t kind, std::vector<std::uint8_t>& items) {
  RecordBuilder node(unified_mail::kItem182Layout);
  node.Set("text_1", person.name);
  node.Set("text_2", person.address);
  Append(node, items);
  items.resize(items.size() + stores::kKindOfItem.size);
  qv::layout::StoreSlot(stores::kKindOfItem, &items[items.size() - stores::kKindItemSize], kind);
}

stores::UnifiedMail MakeMail(stores::FileTime time, Dice& dice) {
  const Letter& letter = dice.Pick(std::span<const Letter>(kLetters));
  stores::UnifiedMail mail = {.record = MakeRecord(letter, time, dice).bytes(),
                              .items_182 = {},
                              .items_308 = {},
                              .text = stores::InCodePage(letter.text)};
  AppendPerson(PickPerson(dice), kReceiver, mail.items_182);
  if (dice.OneIn(3)) AppendPerson(PickPerson(dice), kCopyReceiver, mail.items_182);
  if (dice.OneIn(4)) {
    RecordBuilder file(unified_mail::kItem308Layout);
    file.Set("value_4", 1000 + dice.Roll(90000));
    file.Set("text", dice.Pick(kFiles));
    Append(file, mail.items_308);
  }
  return mail;
}

/// A name of the folder, and a rule for each: that of the folder goes by a name, that of the sender by an address.
void SetFoldersAndRules(stores::UnifiedMailDatabase& mails) {
  std::vector<std::uint8_t> folders, folder_rules, sender_rules;
  for (std::size_t i = 0; i < std::size(kFolders); ++i) {
    RecordBuilder folder(unified_mail::kFolderLayout), folder_rule(unified_mail::kRuleLayout),
        sender_rule(unified_mail::kRuleLayout);
    folder.SetWideText("bytes_0", 0, kFolders[i]);
    folder_rule.SetWideText("bytes_0", 0, kPeople[i].name);
    sender_rule.SetWideText("bytes_0", 0, kPeople[i].address);
    Append(folder, folders);
    Append(folder_rule, folder_rules);
    Append(sender_rule, sender_rules);
  }
  mails.List(stores::kUnifiedMailFolders).ReplaceAll(folders);
  mails.List(stores::kUnifiedMailFolderRules).ReplaceAll(folder_rules);
  mails.List(stores::kUnifiedMailSenderRules).ReplaceAll(sender_rules);
}

}  // namespace

void InsertSampleUnifiedMail(stores::Database& database, std::uint32_t mails, std::uint32_t seed) {
  Dice dice(seed);
  stores::Transaction transaction(database);
  stores::UnifiedMailDatabase unified(database);
  SetFoldersAndRules(unified);
  for (std::uint32_t i = 1; i <= mails; ++i) {
    const stores::FileTime time = ModifiedTime(dice);
    const bool is_sent = i % kOneOfThreeIsSent == 0;
    unified.Insert(is_sent ? stores::kMailsSent : stores::kMailsReceived, MakeMail(time, dice), time);
  }
  transaction.Commit();
}

}  // namespace qvdesk
