// The conversations behind the sample messages. Nobody says what a phone shows most of its texts as; a number, a name
// and what was written are put where there is room for such.
#include "tools/qvdesk/sample_messages.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/stores/message_kinds.h"
#include "host/stores/mms_database.h"
#include "host/stores/sms_database.h"
#include "tools/qvdesk/sample_data.h"
#include "tools/qvdesk/sample_picture.h"

namespace qvdesk {
namespace {

/// Someone to talk with, and what is said: by turns from them and to them.
struct Correspondent {
  std::string_view name, number;
  std::span<const std::string_view> lines;
  std::uint32_t folder;  ///< Where messages from them lie.
};

constexpr std::string_view kLunch[] = {"Lunch at one? The new place by the river.", "Yes! Shall I book a table?",
                                       "Please do, for three. Marie comes along.", "Done. See you there.",
                                       "Ten minutes late, order me a coffee."};
constexpr std::string_view kTrain[] = {"Train is late again, platform 7 now.",
                                       "No hurry, I wait at the exit with the car.", "Arrived. Where are you?",
                                       "Under the big clock!"};
constexpr std::string_view kDinner[] = {"今晚一起吃饭吗?", "好啊,六点半老地方见。", "我带了你要的书。", "太好了,谢谢!"};
constexpr std::string_view kMother[] = {"天冷了,多穿点衣服。", "知道了妈,你也注意身体。", "周末回家吗?",
                                        "回,星期六下午到。"};
constexpr std::string_view kParcel[] = {"Your parcel is ready at counter 4. Code: 7316.",
                                        "Your parcel will be returned tomorrow."};

constexpr std::string_view kFolders[] = {"Inbox", "Outbox", "Drafts", "家人", "Kept"};
constexpr std::uint32_t kInbox = 0;
constexpr std::uint32_t kOutbox = 1;
constexpr std::uint32_t kDrafts = 2;
constexpr std::uint32_t kFamily = 3;
constexpr std::uint32_t kKept = 4;

constexpr Correspondent kCorrespondents[] = {{"Anna Müller", "+49 170 5550101", kLunch, kInbox},
                                             {"李明", "+86 138 5550102", kDinner, kInbox},
                                             {"Tom Smith", "+44 7700 900103", kTrain, kInbox},
                                             {"妈妈", "+86 138 5550104", kMother, kFamily},
                                             {"", "72000", kParcel, kInbox}};

constexpr std::string_view kTemplates[] = {"I am in a meeting.", "Please call me back.", "我马上到。"};
constexpr std::string_view kCaptions[] = {"Look what I found!", "Greetings from the lake", "生日快乐!",
                                          "The new logo, what do you think?"};
constexpr std::string_view kMmsConfig = "centre=http://mms.example/;proxy=10.0.0.172:9201";

constexpr std::uint32_t kFirstCallType = 46000;
constexpr std::uint32_t kCallTypes = 3;

const qv::layout::RecordLayout& SectionLayout(std::size_t section) {
  return stores::kSmsSectionKinds[section].layout;
}

/// The folders get the ids 1, 2, 3, … in their order.
void SetSmsConfig(stores::SmsDatabase& sms) {
  constexpr std::size_t kTemplateSection = 0;
  std::vector<std::uint8_t> folders, templates;
  for (const std::string_view name : kFolders) {
    RecordBuilder folder(SectionLayout(qv::sms::kFolders));
    folder.Set("name", name);
    Append(folder, folders);
  }
  for (std::uint32_t i = 0; i < std::size(kTemplates); ++i) {
    RecordBuilder entry(SectionLayout(kTemplateSection));
    entry.Set("value_0", i + 1);
    entry.Set("text_4", kTemplates[i]);
    Append(entry, templates);
  }
  sms.ReplaceSection(qv::sms::kFolders, folders);
  sms.ReplaceSection(kTemplateSection, templates);
}

/// Talks go on line by line, each with its time. Some of what came is kept, some of what was to go is not sent.
void InsertShortMessages(stores::SmsDatabase& sms, std::uint32_t count, Dice& dice) {
  constexpr stores::FileTime kMinute = 60 * stores::kSecond;
  for (std::uint32_t made = 0; made < count;) {
    const Correspondent& with = dice.Pick(std::span<const Correspondent>(kCorrespondents));
    stores::FileTime time = ModifiedTime(dice);
    for (std::size_t line = 0; line < with.lines.size() && made < count; ++line, ++made) {
      const bool is_mine = line % 2 == 1 && !with.name.empty();
      const bool is_special = dice.OneIn(5);
      const std::uint32_t folder = is_mine ? (is_special ? kDrafts : kOutbox) : (is_special ? kKept : with.folder);
      RecordBuilder message(stores::kSmsKind.layout);
      message.Set("folder_id", folder + 1);
      message.Set("time_1", TimeText(time));
      message.Set("time_2", TimeText(time + stores::kSecond));
      message.Set("text_84", with.number);
      message.Set("text_152", with.name);
      message.Set("body", with.lines[line]);
      sms.Messages().Insert(message.data(), time);
      time += (1 + dice.Roll(9)) * kMinute;
    }
  }
}

void InsertMultimediaMessages(stores::MmsDatabase& mms, std::uint32_t count, Dice& dice) {
  mms.SetConfig({reinterpret_cast<const std::uint8_t*>(kMmsConfig.data()), kMmsConfig.size()});
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string_view caption = dice.Pick(std::span<const std::string_view>(kCaptions));
    mms.Insert({.value = dice.Roll(2), .text = std::string(caption), .data = MakeSamplePicture(dice)},
               ModifiedTime(dice));
  }
}

void InsertCalls(stores::RecordStore& calls, std::uint32_t count, Dice& dice) {
  for (std::uint32_t i = 0; i < count; ++i) {
    const Correspondent& with = dice.Pick(std::span<const Correspondent>(kCorrespondents));
    const stores::FileTime time = ModifiedTime(dice);
    RecordBuilder call(calls.Kind().layout);
    call.Set("time", TimeText(time));
    call.Set("number", with.number);
    call.Set("name", with.name);
    call.Set("type", kFirstCallType + dice.Roll(kCallTypes));
    call.Set("value_36", dice.Roll(600));
    calls.Insert(call.data(), time);
  }
}

}  // namespace

void InsertSampleMessages(stores::Database& database, const SampleMessages& count, std::uint32_t seed) {
  stores::Transaction transaction(database);
  Dice dice(seed);
  stores::SmsDatabase sms(database);
  SetSmsConfig(sms);
  InsertShortMessages(sms, count.short_messages, dice);
  stores::MmsDatabase mms(database);
  InsertMultimediaMessages(mms, count.multimedia_messages, dice);
  stores::RecordStore calls(database, stores::kCallKinds[0]);
  InsertCalls(calls, count.calls, dice);
  transaction.Commit();
}

}  // namespace qvdesk
