// The people behind the sample cards, and what the memos are about. Nobody says what a phone shows their texts as; what
// a card or a memo tells is put where there is room for such.
#include "tools/qvdesk/sample_organizer.h"

#include <fmt/format.h>

#include <iterator>
#include <string>
#include <string_view>

#include "host/stores/organizer_kinds.h"
#include "tools/qvdesk/sample_data.h"

namespace qvdesk {
namespace {

struct Card {
  std::string_view name, title, company, position, mail, site, city, street, postal, area;
};

constexpr Card kCards[] = {
    {"Anna Müller", "Dr.", "Nordlicht GmbH", "Project manager", "anna.mueller@example.org", "www.nordlicht.example",
     "Berlin", "Lindenstraße 17", "10969", "+49 30"},
    {"王建国", "先生", "东方贸易有限公司", "经理", "wang.jianguo@example.org", "www.dongfang.example", "上海",
     "中山路 88 号", "200001", "+86 21"},
    {"José García", "", "Studio Arco", "Architect", "jose.garcia@example.org", "www.arco.example", "Madrid",
     "Calle Mayor 5", "28013", "+34 91"},
    {"李雪梅", "女士", "长江电子", "工程师", "li.xuemei@example.org", "www.changjiang.example", "成都",
     "人民南路 120 号", "610041", "+86 28"},
    {"Tom Smith", "Mr", "Blue Harbour Ltd", "Accountant", "tom.smith@example.org", "www.blueharbour.example", "London",
     "12 Baker Street", "NW1 6XE", "+44 20"},
    {"陈文博", "医生", "第三人民医院", "主任医师", "chen.wenbo@example.org", "", "广州", "天河北路 233 号", "510620",
     "+86 20"},
    {"Chloé Lefèvre", "Mme", "Café Central", "Owner", "chloe.lefevre@example.org", "www.cafe-central.example", "Lyon",
     "4 Rue des Lilas", "69003", "+33 4 72"},
    {"欧阳静", "", "北京饭店", "销售经理", "ouyang.jing@example.org", "www.bjfd.example", "北京", "长安街 33 号",
     "100005", "+86 10"},
    {"Matteo Bianchi", "Ing.", "Officina Bianchi", "Managing director", "matteo.bianchi@example.org", "", "Torino",
     "Via Garibaldi 41", "10122", "+39 011"},
    {"赵海燕", "老师", "春风小学", "老师", "zhao.haiyan@example.org", "", "上海", "南京西路 501 号", "200041",
     "+86 21"},
};

struct Memo {
  std::string_view title, place, note;
};

constexpr Memo kMemos[] = {
    {"Way to the lake", "Lake, south bank", "Turn left behind the mill; the gate is green."},
    {"厨房平面图", "家", "冰箱移到窗边,桌子靠墙。"},
    {"Seating for Saturday", "Café Central", "Anna beside Tom, and the children near the door."},
    {"孩子画的小猫", "", ""},
    {"Shelf, 180 by 90", "Garage", "Five boards, brackets every 45 cm."},
    {"会议草图", "项目会议室", "先问预算,再谈时间表。"},
};

/// People who come round again are numbered.
RecordBuilder MakeCard(std::uint32_t i, Dice& dice) {
  const Card& from = kCards[i % std::size(kCards)];
  RecordBuilder card(stores::kCardKinds[0].layout);
  card.Set("text_1", NameByTurns(from.name, std::size(kCards), i));
  card.Set("text_2", from.title);
  card.Set("text_3", from.company);
  card.Set("text_4", from.position);
  card.Set("text_5", NumberIn(from.area, dice));
  card.Set("text_6", dice.OneIn(3) ? "" : NumberIn(from.area, dice));
  card.Set("text_7", NumberIn(from.area.starts_with("+86") ? "+86 138" : "+49 170", dice));
  card.Set("text_8", from.mail);
  card.Set("text_9", from.city);
  card.Set("text_10", from.site);
  card.Set("text_11", from.postal);
  card.Set("text_12", from.street);
  return card;
}

/// Drawn at one time and changed at another; the drawing itself is a file of the phone.
RecordBuilder MakeMemo(std::uint32_t i, stores::FileTime modified, Dice& dice) {
  constexpr std::uint32_t kWeek = 7 * 86400;
  constexpr std::uint32_t kColours = 8;
  const Memo& from = kMemos[i % std::size(kMemos)];
  RecordBuilder memo(stores::kMemoKinds[0].layout);
  memo.Set("byte_4", dice.Roll(kColours));
  memo.SetFileTime("time_1", modified - dice.Roll(kWeek) * stores::kSecond);
  memo.SetFileTime("time_2", modified);
  memo.Set("text_1", from.title);
  memo.Set("text_2", from.place);
  memo.Set("text_3", fmt::format("\\My Documents\\Sketch{:04}.bmp", i + 1));
  memo.Set("text_5", from.note);
  return memo;
}

}  // namespace

void InsertSampleOrganizer(stores::Database& database, const SampleOrganizer& count, std::uint32_t seed) {
  stores::Transaction transaction(database);
  Dice dice(seed);
  stores::RecordStore cards(database, stores::kCardKinds[0]);
  for (std::uint32_t i = 0; i < count.cards; ++i) cards.Insert(MakeCard(i, dice).data(), ModifiedTime(dice));
  stores::RecordStore memos(database, stores::kMemoKinds[0]);
  for (std::uint32_t i = 0; i < count.memos; ++i) {
    const stores::FileTime modified = ModifiedTime(dice);
    memos.Insert(MakeMemo(i, modified, dice).data(), modified);
  }
  transaction.Commit();
}

}  // namespace qvdesk
