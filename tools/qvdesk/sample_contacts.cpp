// The people behind the sample contacts. Nobody says what a phone shows most of its texts as; a person's e-mail
// address, company and notes are put where there is room for such.
#include "tools/qvdesk/sample_contacts.h"

#include <fmt/format.h>

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/stores/contact_database.h"
#include "modules/contacts/contacts_layout.h"
#include "tools/qvdesk/sample_data.h"
#include "tools/qvdesk/sample_picture.h"

namespace qvdesk {
namespace {

/// Part of a name, and how an e-mail address writes it.
struct NamePart {
  std::string_view name;
  std::string_view address;
};

struct Place {
  const char* street;  ///< With a house number at {}.
  std::string_view city, province, country, postal;
  std::string_view landline;
};

/// What people of one language are made of.
struct Culture {
  std::span<const NamePart> given, family;
  bool family_first;
  std::span<const Place> places;
  std::string_view mobile;
  std::span<const std::string_view> number_labels;  ///< By type of number.
  std::span<const std::string_view> nicknames, companies, titles, notes;
};

constexpr NamePart kLatinGiven[] = {{"Anna", "anna"},   {"Jürgen", "juergen"}, {"Marie", "marie"}, {"Tom", "tom"},
                                    {"José", "jose"},   {"Sofía", "sofia"},    {"Paul", "paul"},   {"Zoë", "zoe"},
                                    {"Henry", "henry"}, {"Lucía", "lucia"},    {"Emma", "emma"},   {"Łukasz", "lukasz"},
                                    {"Chloé", "chloe"}, {"Oskar", "oskar"},    {"Ines", "ines"},   {"David", "david"},
                                    {"Greta", "greta"}, {"Matteo", "matteo"},  {"Nora", "nora"},   {"Felix", "felix"}};
constexpr NamePart kLatinFamily[] = {
    {"Müller", "mueller"},    {"García", "garcia"},       {"Smith", "smith"},     {"Lefèvre", "lefevre"},
    {"Rossi", "rossi"},       {"Novák", "novak"},         {"Johnson", "johnson"}, {"Schneider", "schneider"},
    {"O'Brien", "obrien"},    {"Andersson", "andersson"}, {"Weiß", "weiss"},      {"Moreau", "moreau"},
    {"Kowalska", "kowalska"}, {"Taylor", "taylor"},       {"Fischer", "fischer"}, {"Bianchi", "bianchi"},
    {"Silva", "silva"},       {"Jansen", "jansen"},       {"Brown", "brown"},     {"Nielsen", "nielsen"}};
constexpr Place kLatinPlaces[] = {{"Lindenstraße {}", "Berlin", "Berlin", "Germany", "10969", "+49 30"},
                                  {"{} Rue des Lilas", "Lyon", "Rhône", "France", "69003", "+33 4 72"},
                                  {"{} Baker Street", "London", "England", "United Kingdom", "NW1 6XE", "+44 20"},
                                  {"Calle Mayor {}", "Madrid", "Madrid", "Spain", "28013", "+34 91"},
                                  {"Via Garibaldi {}", "Torino", "Piemonte", "Italy", "10122", "+39 011"}};
constexpr std::string_view kLatinLabels[] = {"Mobile", "Home", "Office", "Fax"};
constexpr std::string_view kLatinNicknames[] = {"Sunny", "Doc", "The cook", "Cousin"};
constexpr std::string_view kLatinCompanies[] = {"Nordlicht GmbH", "Café Central", "Blue Harbour Ltd", "Studio Arco",
                                                ""};
constexpr std::string_view kLatinTitles[] = {"Project manager", "Accountant", "Architect", "Teacher", ""};
constexpr std::string_view kLatinNotes[] = {"Met at the fair in spring; send the new catalogue.", "Allergic to nuts!",
                                            "Prefers to be called in the evening.", "", ""};

constexpr NamePart kChineseGiven[] = {
    {"明", "ming"},       {"丽华", "lihua"},   {"伟", "wei"},      {"芳", "fang"},
    {"建国", "jianguo"},  {"秀英", "xiuying"}, {"强", "qiang"},    {"静", "jing"},
    {"晓东", "xiaodong"}, {"雪梅", "xuemei"},  {"磊", "lei"},      {"婷婷", "tingting"},
    {"志强", "zhiqiang"}, {"玉兰", "yulan"},   {"海燕", "haiyan"}, {"文博", "wenbo"}};
constexpr NamePart kChineseFamily[] = {{"王", "wang"}, {"李", "li"},   {"张", "zhang"}, {"刘", "liu"},
                                       {"陈", "chen"}, {"杨", "yang"}, {"赵", "zhao"},  {"黄", "huang"},
                                       {"周", "zhou"}, {"吴", "wu"},   {"徐", "xu"},    {"欧阳", "ouyang"}};
constexpr Place kChinesePlaces[] = {{"中山路 {} 号", "上海", "上海市", "中国", "200001", "+86 21"},
                                    {"长安街 {} 号", "北京", "北京市", "中国", "100005", "+86 10"},
                                    {"人民南路 {} 号", "成都", "四川省", "中国", "610041", "+86 28"},
                                    {"天河北路 {} 号", "广州", "广东省", "中国", "510620", "+86 20"}};
constexpr std::string_view kChineseLabels[] = {"手机", "家", "公司", "传真"};
constexpr std::string_view kChineseNicknames[] = {"老同学", "小胖", "阿姨"};
constexpr std::string_view kChineseCompanies[] = {"东方贸易有限公司", "长江电子", "第三人民医院", ""};
constexpr std::string_view kChineseTitles[] = {"经理", "工程师", "医生", "老师", ""};
constexpr std::string_view kChineseNotes[] = {"喜欢喝龙井茶。", "春节前寄贺卡。", "大学同学,住在三楼。", "", ""};

constexpr Culture kCultures[] = {
    {kLatinGiven, kLatinFamily, false, kLatinPlaces, "+49 170", kLatinLabels, kLatinNicknames, kLatinCompanies,
     kLatinTitles, kLatinNotes},
    {kChineseGiven, kChineseFamily, true, kChinesePlaces, "+86 138", kChineseLabels, kChineseNicknames,
     kChineseCompanies, kChineseTitles, kChineseNotes},
};

constexpr std::string_view kGroups[] = {"Family", "Work", "朋友", "同学", "Neighbours"};

using qv::contacts::kContactKind;
using qv::contacts::kGroupKind;
using qv::contacts::kMark;
using qv::contacts::kReminderOn;

void SetAddress(RecordBuilder& contact, const std::string& prefix, const Place& place, Dice& dice) {
  contact.Set(prefix + "_street", fmt::format(fmt::runtime(place.street), 1 + dice.Roll(180)));
  contact.Set(prefix + "_text_1", place.city);
  contact.Set(prefix + "_text_2", place.province);
  contact.Set(prefix + "_text_3", place.country);
  contact.Set(prefix + "_postal", place.postal);
}

/// A mobile number, and maybe others; one of them is the default.
void SetNumbers(RecordBuilder& contact, const Culture& culture, const Place& place, Dice& dice) {
  const std::uint32_t count = 1 + dice.Roll(culture.number_labels.size());
  const std::uint32_t chosen = dice.Roll(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string_view area = i == 0 ? culture.mobile : place.landline;
    const std::uint32_t type = i + 1;
    contact.Set(fmt::format("number_{}", i + 1), NumberIn(area, dice));
    contact.Set(fmt::format("number_type_{}", i + 1), i == chosen ? kMark + type : type);
    contact.Set(fmt::format("number_text_{}", i + 1), culture.number_labels[i]);
  }
}

/// On any day of the year: those in January and on the first of a month are among what a recover does not bring back.
void SetDays(RecordBuilder& contact, Dice& dice) {
  constexpr std::uint32_t kYear = 365;
  const auto some_day = [&] {
    return kSampleDay - std::chrono::days(static_cast<int>(16 * kYear + dice.Roll(60 * kYear)));
  };
  if (dice.OneIn(4)) return;
  contact.SetDate("first_date", some_day());
  if (dice.OneIn(2)) contact.Set("first_date_reminder", kReminderOn);
  if (!dice.OneIn(4)) return;
  contact.SetDate("second_date", some_day());
  if (dice.OneIn(2)) contact.Set("second_date_reminder", kReminderOn);
}

void SetMail(RecordBuilder& contact, const NamePart& given, const NamePart& family, Dice& dice) {
  if (dice.OneIn(4)) return;
  contact.Set("text_860", fmt::format("{}.{}@example.org", given.address, family.address));
  contact.Set("first_flag", kMark + 1);
  if (dice.OneIn(4)) contact.Set("text_990", fmt::format("{}{}@example.com", given.address, dice.Roll(100)));
}

/// Names that come again are numbered, as a person with two of a name might do.
std::string UniqueName(const std::string& name, std::map<std::string, std::uint32_t>& seen) {
  const std::uint32_t times = ++seen[name];
  return times == 1 ? name : fmt::format("{} {}", name, times);
}

class ContactMaker {
 public:
  ContactMaker(stores::ContactDatabase& database, std::uint32_t seed) : database_(database), dice_(seed) {}

  void MakeGroups() {
    for (std::uint32_t i = 0; i < std::size(kGroups); ++i) {
      RecordBuilder group(stores::kContactKinds[stores::kContactGroups].layout);
      group.Set("kind", kGroupKind);
      group.Set("name", kGroups[i]);
      groups_.push_back(database_.Table(stores::kContactGroups).Insert(group.data(), ModifiedTime(dice_)));
    }
  }

  void MakeContact() {
    const Culture& culture = dice_.Pick(std::span<const Culture>(kCultures));
    RecordBuilder contact(stores::kContactKinds[stores::kContacts].layout);
    contact.Set("kind", kContactKind);
    SetPerson(contact, culture);
    SetTexts(contact, culture);
    SetDays(contact, dice_);
    if (dice_.OneIn(3)) contact.Set("picture_id", database_.InsertPicture(MakeSamplePicture(dice_)));
    JoinGroups(database_.Table(stores::kContacts).Insert(contact.data(), ModifiedTime(dice_)));
  }

 private:
  void SetPerson(RecordBuilder& contact, const Culture& culture) {
    const NamePart& given = dice_.Pick(culture.given);
    const NamePart& family = dice_.Pick(culture.family);
    const std::string name = culture.family_first ? fmt::format("{}{}", family.name, given.name)
                                                  : fmt::format("{} {}", given.name, family.name);
    contact.Set("name", UniqueName(name, seen_));
    const Place& home = dice_.Pick(culture.places);
    SetNumbers(contact, culture, home, dice_);
    SetMail(contact, given, family, dice_);
    if (!dice_.OneIn(4)) SetAddress(contact, "first_address", home, dice_);
    if (dice_.OneIn(4)) SetAddress(contact, "second_address", dice_.Pick(culture.places), dice_);
  }

  void SetTexts(RecordBuilder& contact, const Culture& culture) {
    if (dice_.OneIn(5)) contact.Set("text_66", dice_.Pick(culture.nicknames));
    contact.Set("text_1128", dice_.Pick(culture.companies));
    contact.Set("text_1226", dice_.Pick(culture.titles));
    contact.Set("text_1964", dice_.Pick(culture.notes));
  }

  void JoinGroups(std::uint32_t contact) {
    std::vector<std::uint32_t> joined(dice_.Roll(3));
    for (std::uint32_t& group : joined) group = groups_[dice_.Roll(groups_.size())];
    database_.AddToGroups(contact, joined);
  }

  stores::ContactDatabase& database_;
  Dice dice_;
  std::vector<std::uint32_t> groups_;
  std::map<std::string, std::uint32_t> seen_;
};

}  // namespace

void InsertSampleContacts(stores::Database& database, std::uint32_t contacts, std::uint32_t seed) {
  stores::Transaction transaction(database);
  stores::ContactDatabase contact_database(database);
  ContactMaker maker(contact_database, seed);
  if (contacts != 0) maker.MakeGroups();
  for (std::uint32_t i = 0; i < contacts; ++i) maker.MakeContact();
  transaction.Commit();
}

}  // namespace qvdesk
