// Letters for two accounts. Nobody says what a phone shows most of its texts as; a name, an address and a subject are
// put where there is room for such.
#include "tools/qvdesk/sample_mail.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/handset/handset.h"
#include "host/stores/mail_database.h"
#include "tools/qvdesk/sample_data.h"

namespace qvdesk {
namespace {

struct Person {
  std::string_view name, address;
};

constexpr Person kAnna = {"Anna Müller", "anna.mueller@example.com"};
constexpr Person kTom = {"Tom Smith", "tom@example.org"};
constexpr Person kLi = {"李明", "liming@example.cn"};
constexpr Person kShop = {"The Book Shop", "orders@bookshop.example"};
constexpr Person kList = {"Choir", "choir-list@example.net"};

struct Account {
  std::string_view name;
  Person owner;
  std::string_view incoming, outgoing;
};

constexpr Account kAccounts[] = {
    {"Work", {"Kim Berg", "kim.berg@work.example"}, "pop.work.example", "smtp.work.example"},
    {"Home", {"Kim", "kim@home.example"}, "mail.home.example", "mail.home.example"}};

/// By kind; the last is one that the owner made.
constexpr std::string_view kFolders[] = {"Inbox", "Outbox", "Sent", "Drafts", "Trash", "Projects"};
constexpr std::uint32_t kInbox = 0;
constexpr std::uint32_t kSent = 2;
constexpr std::uint32_t kDrafts = 3;
constexpr std::uint32_t kProjects = 5;

constexpr std::string_view kAgenda[] = {"Hello Kim,",
                                        "",
                                        "here is what we should talk about on Thursday:",
                                        "  1. the figures of the last quarter",
                                        "  2. who writes the report",
                                        "Anything missing?",
                                        "",
                                        "Anna"};
constexpr std::string_view kAnswer[] = {
    "Hello Anna,", "", "that is all, thank you. I bring the figures.", "", "Kim", "", "> Anything missing?"};
constexpr std::string_view kHoliday[] = {"Hi,",
                                         "",
                                         "we found a house by the lake for the second week of August.",
                                         "Shall I book it? Four rooms, and a boat!",
                                         "",
                                         "Tom"};
constexpr std::string_view kDinner[] = {"你好,", "", "周六晚上来我家吃饭吧,七点开始。", "", "李明"};
constexpr std::string_view kOrder[] = {"Thank you for your order.",
                                       "",
                                       "1 x A Field Guide to Clouds        18.90",
                                       "1 x Lighthouses of the North       24.50",
                                       "",
                                       "Your parcel leaves our house tomorrow."};
constexpr std::string_view kChoir[] = {"Dear all,",
                                       "",
                                       "rehearsal is at half past six this week, in the small hall.",
                                       "Please bring the red folder.",
                                       "",
                                       "-- ",
                                       "Choir list"};
constexpr std::string_view kDraft[] = {"Dear Tom,", "", "I have been meaning to write"};

struct Letter {
  Person with;  ///< Who sent it, or whom it goes to.
  std::string_view subject;
  std::span<const std::string_view> lines;
  std::uint32_t account, folder;

  bool IsMine() const { return folder == kSent || folder == kDrafts; }
};

constexpr Letter kLetters[] = {
    {kAnna, "Thursday's meeting", kAgenda, 0, kInbox}, {kTom, "A house by the lake", kHoliday, 1, kInbox},
    {kShop, "Your order 30771", kOrder, 1, kInbox},    {kAnna, "Re: Thursday's meeting", kAnswer, 0, kSent},
    {kLi, "周六的晚饭", kDinner, 1, kInbox},           {kList, "Rehearsal", kChoir, 1, kProjects},
    {kTom, "Long time no see", kDraft, 1, kDrafts},
};

// Numbers of messages, from 0.
constexpr std::uint32_t kOnCard = 1;
constexpr std::uint32_t kWithoutFile = 2;

const qv::layout::RecordLayout& FormOf(std::size_t table) {
  return stores::kMailKinds[table].layout;
}

/// Each record's own id is given to the one that is to be found under it.
class SampleMail {
 public:
  SampleMail(stores::Database& database, std::uint32_t seed) : mail_(database), dice_(seed) {}

  void AddAccounts() {
    for (std::uint32_t i = 0; i < std::size(kAccounts); ++i) AddAccount(i);
  }
  void AddMessages(std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) AddMessage(i);
  }

 private:
  void AddAccount(std::uint32_t i) {
    const Account& account = kAccounts[i];
    RecordBuilder user(FormOf(stores::kMailAccounts));
    user.Set("account_id", i + 1);
    user.Set("text_1", account.name);
    user.Set("text_2", account.owner.address);
    user.Set("text_3", account.incoming);
    user.Set("text_4", account.outgoing);
    user.Set("text_5", account.owner.name);
    RecordBuilder config(FormOf(stores::kMailConfigs));
    config.Set("account_id", i + 1);
    config.Set("setting_1", 30);
    config.Set("text_1", fmt::format("Sent from my phone, {}", account.owner.name));
    const std::uint32_t id = mail_.PutAccount(user.data(), config.data());
    for (std::uint32_t kind = 0; kind < std::size(kFolders); ++kind) folders_[i][kind] = AddFolder(id, kind);
    AddFilter(id, 0, "Advertising", "lottery", {});
    AddFilter(id, folders_[i][kInbox], "Friends", "", {{kTom, kLi}});
    AddFilter(id, folders_[i][kProjects], "Choir", "rehearsal", {});
  }

  std::uint32_t AddFolder(std::uint32_t account, std::uint32_t kind) {
    RecordBuilder folder(FormOf(stores::kMailFolders));
    folder.Set("name", kFolders[kind]);
    folder.Set("kind", kind);
    if (kind == kProjects) folder.Set("text_1", "项目 (projects)");
    return mail_.PutFolder(account, folder.data());
  }

  void AddFilter(std::uint32_t account, std::uint32_t folder, std::string_view name, std::string_view word,
                 std::span<const Person> people) {
    RecordBuilder filter(FormOf(stores::kMailFilters));
    filter.Set("folder_id", folder);
    filter.Set("text_1", name);
    filter.Set("text_5", word);
    filter.Set("has_contacts", people.empty() ? 0 : 1);
    std::vector<RecordBuilder> contacts;
    for (const Person& person : people) contacts.push_back(RecordOf(person, stores::kMailFilterContacts));
    mail_.PutFilter(account, filter.data(), Pointers(contacts));
  }

  static RecordBuilder RecordOf(const Person& person, std::size_t table) {
    RecordBuilder record(FormOf(table));
    record.Set("text_1", person.name);
    record.Set("text_2", person.address);
    return record;
  }

  static std::vector<const std::uint8_t*> Pointers(const std::vector<RecordBuilder>& records) {
    std::vector<const std::uint8_t*> pointers;
    for (const RecordBuilder& record : records) pointers.push_back(record.data());
    return pointers;
  }

  void AddMessage(std::uint32_t i) {
    const Letter& letter = kLetters[i % std::size(kLetters)];
    const Person& owner = kAccounts[letter.account].owner;
    const Person& from = letter.IsMine() ? owner : letter.with;
    const Person& to = letter.IsMine() ? letter.with : owner;
    const stores::FileTime time = ModifiedTime(dice_);
    const std::string subject = NameByTurns(letter.subject, std::size(kLetters), i);
    const std::string uidl = fmt::format("{:08x}.{}", dice_.Roll(1u << 31), i + 1);

    RecordBuilder header(FormOf(stores::kMailMessages));
    header.Set("message_id", i + 1);
    header.Set("folder_id", folders_[letter.account][letter.folder]);
    header.Set("flag_3", dice_.Roll(2));
    header.Set("text_1", uidl);
    header.Set("text_3", from.name);
    header.Set("text_4", from.address);
    header.Set("text_5", subject);
    header.SetSystemTime("date_1", time);
    header.SetSystemTime("date_2", time + 40 * stores::kSecond);
    header.Set("on_card", i == kOnCard ? 1 : 0);
    const std::string file = Compose(letter, from, to, subject, uidl, time);
    header.Set("value_1", static_cast<std::uint32_t>(file.size()));
    const std::vector<RecordBuilder> addresses = {RecordOf(from, stores::kMailAddresses),
                                                  RecordOf(to, stores::kMailAddresses)};
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(file.data()), file.size());
    mail_.AddMessage(header.data(), Pointers(addresses), i == kWithoutFile ? std::nullopt : std::optional(bytes));
    if (!letter.IsMine()) AddUidl(letter.account + 1, uidl);
  }

  void AddUidl(std::uint32_t account, const std::string& text) {
    RecordBuilder uidl(FormOf(stores::kMailUidls));
    uidl.Set("uidl", text);
    const std::uint8_t* const record = uidl.data();
    mail_.AddUidls(account, {&record, 1});
  }

  /// The list has more than one reader, so its header is folded.
  static std::string Compose(const Letter& letter, const Person& from, const Person& to, const std::string& subject,
                             const std::string& id, stores::FileTime time) {
    const std::string more = letter.with.address == kList.address ? fmt::format(",\r\n {} <{}>,\r\n {} <{}>", kTom.name,
                                                                                kTom.address, kLi.name, kLi.address)
                                                                  : "";
    std::string file = fmt::format(
        "From: {} <{}>\r\nTo: {} <{}>{}\r\nSubject: {}\r\nDate: {}\r\nMessage-ID: <{}@example.com>\r\n"
        "MIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n\r\n",
        from.name, from.address, to.name, to.address, more, subject, MailDate(time), id);
    for (const std::string_view line : letter.lines) file += fmt::format("{}\r\n", line);
    return file;
  }

  /// "Mon, 05 Jan 2026 09:03:07 +0000".
  static std::string MailDate(stores::FileTime time) {
    constexpr std::string_view kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const coredll::SYSTEMTIME t = handset::SystemTimeOf(time);
    return fmt::format("{}, {:02} {} {} {:02}:{:02}:{:02} +0000", kDays[t.wDayOfWeek], t.wDay, kMonths[t.wMonth - 1],
                       t.wYear, t.wHour, t.wMinute, t.wSecond);
  }

  stores::MailDatabase mail_;
  Dice dice_;
  /// The ids, by account and kind.
  std::array<std::array<std::uint32_t, std::size(kFolders)>, std::size(kAccounts)> folders_{};
};

}  // namespace

void InsertSampleMail(stores::Database& database, std::uint32_t messages, std::uint32_t seed) {
  stores::Transaction transaction(database);
  SampleMail sample(database, seed);
  sample.AddAccounts();
  sample.AddMessages(messages);
  transaction.Commit();
}

}  // namespace qvdesk
