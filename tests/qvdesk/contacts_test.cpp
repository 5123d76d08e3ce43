// The contacts at the desktop's end: their tables shown and encoded, their pictures, and a way there and back.
#include <nlohmann/json.hpp>
#include <set>

#include "tests/qvdesk/desk.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr std::size_t kPictureRecord = 8236;
constexpr std::size_t kPictureRoom = 8192;

/// Files made of JSON by "encode", as a desktop without a handset has them.
class ContactFiles : public desk::DeskTest {
 protected:
  void Encode(const std::string& form, const std::string& json) const {
    desk::Write(At("in.json"), json);
    Done({"encode", form, At("in.json").string(), At(form).string()});
  }
  std::string Show(const std::string& form) const { return Done({"show", At(form).string()}); }
  std::string EncodingError(const std::string& form, const std::string& json) const {
    desk::Write(At("in.json"), json);
    const desk::Outcome outcome = Run({"encode", form, At("in.json").string(), At("out").string()});
    EXPECT_EQ(outcome.status, 1);
    return outcome.err;
  }
  /// A record of the image table that says a length, which need not be that of the data.
  static std::string PictureRecord(char id, std::size_t length, std::string data) {
    data.resize(kPictureRoom);
    const char head[] = {id, 0, 0, 0, static_cast<char>(length), static_cast<char>(length >> 8), 0, 0};
    return std::string(head, sizeof(head)) + data + std::string(kPictureRecord - kPictureRoom - sizeof(head), '\0');
  }
  desk::Outcome Extract(const std::string& id) const {
    return Run({"picture", At("image.tbl").string(), id, At("out").string()});
  }
};

TEST_F(ContactFiles, TableShowsTheDefaultNumberOrElseTheFirstThereIs) {
  Encode("linkman.tbl", R"([{"contact_id":1,"name":"Anna","number_1":"111","number_2":"222","default_number":2},
                            {"contact_id":2,"name":"李明","number_3":"333","number_4":"444"},
                            {"contact_id":3,"name":"Tom","number_1":"555","default_number":9}])");
  const std::string table = Show("linkman.tbl");
  EXPECT_THAT(table, AllOf(HasSubstr("default number"), HasSubstr("Anna"), HasSubstr("222"), HasSubstr("李明"),
                           HasSubstr("333"), HasSubstr("3 records of the form \"linkman.tbl\"")));
  for (const char* const absent : {"111", "444", "555"}) EXPECT_THAT(table, Not(HasSubstr(absent)));
}

TEST_F(ContactFiles, TableShowsBirthdaysAsDaysAndLeavesEmptyColumnsOut) {
  Encode("linkman.tbl", R"([{"contact_id":1,"name":"Anna","first_date_year":1975,"first_date_month":4,
                             "first_date_day":2,"first_address_street":"Baker Street"}])");
  EXPECT_THAT(Show("linkman.tbl"),
              AllOf(HasSubstr("1975-04-02\n"), HasSubstr("Baker Street"), Not(HasSubstr("default number"))));
}

TEST_F(ContactFiles, PictureSizesComeFromTheImageTableBesideTheContacts) {
  Encode("linkman.tbl", R"([{"contact_id":1,"name":"Anna","picture_id":5},{"contact_id":2,"picture_id":6},
                            {"contact_id":3}])");
  EXPECT_THAT(Show("linkman.tbl"), Not(HasSubstr("byte")));
  desk::Write(At("image.tbl"), PictureRecord(5, 300, "BM"));
  EXPECT_THAT(Show("linkman.tbl"), AllOf(HasSubstr("300 bytes"), HasSubstr("not there")));
}

TEST_F(ContactFiles, MembershipsReadAsNumbersAndComeBackByteForByte) {
  Encode("groupattach.tbl", R"([{"contact_id":7,"group_id":[3,100000]},{"contact_id":8,"group_id":[4294967295]}])");
  const std::string bytes = desk::Contents(At("groupattach.tbl"));
  EXPECT_EQ(bytes.size(), 2u * 8 + 3 * 4);
  EXPECT_EQ(bytes[4], 2);
  EXPECT_THAT(Show("groupattach.tbl"), AllOf(HasSubstr("3, 100000"), HasSubstr("4294967295")));
  EXPECT_THAT(Done({"show", At("groupattach.tbl").string(), "--all-fields"}), HasSubstr("group_id[1]          100000"));
  const std::string json = Done({"show", At("groupattach.tbl").string(), "--format", "json"});
  EXPECT_EQ(nlohmann::json::parse(json)["records"][0]["group_id"], nlohmann::json::array({3, 100000}));
  Encode("groupattach.tbl", json);
  EXPECT_TRUE(bytes == desk::Contents(At("groupattach.tbl")));
}

TEST_F(ContactFiles, EncodingRefusesWhatNoMembershipHolds) {
  EXPECT_THAT(EncodingError("groupattach.tbl", R"([{"contact_id":7,"group_id":["03000000"]}])"),
              HasSubstr("an item of \"group_id\" takes a number from 0 to 4294967295"));
  EXPECT_THAT(EncodingError("groupattach.tbl", R"([{"contact_id":7,"group_id":[1],"group_count":2}])"),
              HasSubstr("\"group_count\" is 2, but \"group_id\" has 1 items"));
  std::string ids = "1";
  for (int i = 1; i < 101; ++i) ids += ",1";
  EXPECT_THAT(EncodingError("groupattach.tbl", R"([{"contact_id":7,"group_id":[)" + ids + "]}]"),
              HasSubstr("takes an array of at most 100 items"));
}

TEST_F(ContactFiles, TornMembershipsAreNamed) {
  desk::Write(At("groupattach.tbl"), std::string("\7\0\0\0\2\0\0\0\3\0\0\0\4\0", 14));
  EXPECT_THAT(Run({"show", At("groupattach.tbl").string()}).err,
              HasSubstr("ends inside item 2 of 2 items \"group_id\""));
  desk::Write(At("groupattach.tbl"), std::string("\7\0\0\0\0\1\0\0", 8));
  EXPECT_THAT(Run({"show", At("groupattach.tbl").string()}).err,
              HasSubstr("claims 256 items \"group_id\", but at most 100 can be"));
}

TEST_F(ContactFiles, RemindersShareANumberAndAreEncodedApart) {
  Encode("linkman.tbl", R"([{"first_date_reminder":1},{"second_date_reminder":1}])");
  const std::string bytes = desk::Contents(At("linkman.tbl"));
  EXPECT_EQ(bytes[3592], 2);
  EXPECT_EQ(bytes[3596 + 3592], 1);
  EXPECT_THAT(Done({"show", At("linkman.tbl").string(), "--all-fields"}), HasSubstr("  first_date_reminder  1\n"));
  EXPECT_THAT(EncodingError("linkman.tbl", R"([{"kind":1}])"), HasSubstr("a contact has no field \"kind\""));
}

TEST_F(ContactFiles, PictureDataIsCountedForPeopleAndWholeForPrograms) {
  desk::Write(At("image.tbl"), PictureRecord(5, 2, "BM"));
  for (const std::vector<std::string>& view : {std::vector<std::string>{}, {"--all-fields"}}) {
    std::vector<std::string> arguments = {"show", At("image.tbl").string()};
    arguments.insert(arguments.end(), view.begin(), view.end());
    EXPECT_THAT(Done(arguments), AllOf(HasSubstr("8192 bytes"), Not(HasSubstr("424d"))));
  }
  const std::string json = Done({"show", At("image.tbl").string(), "--format", "json"});
  EXPECT_EQ(std::string(nlohmann::json::parse(json)["records"][0]["data"]).size(), 2 * kPictureRoom);
  Encode("image.tbl", json);
  EXPECT_TRUE(desk::Contents(At("image.tbl")) == PictureRecord(5, 2, "BM"));
}

TEST_F(ContactFiles, PicturesAreListedWithTheTypeThatTheirBytesTell) {
  desk::Write(At("image.tbl"), PictureRecord(1, 200, "BM") + PictureRecord(2, 300, "\x89PNG\r\n\x1a\n") +
                                   PictureRecord(3, 400, "\xff\xd8\xff\xe0") + PictureRecord(4, 500, "GIF89a") +
                                   PictureRecord(5, 1, "BM"));
  EXPECT_THAT(Done({"picture", At("image.tbl").string()}),
              testing::MatchesRegex("picture_id +bytes +type\n[- ]+\n1 +200 +BMP\n2 +300 +PNG\n3 +400 +JPEG\n"
                                    "4 +500 +GIF\n5 +1 +unknown\n5 pictures\n"));
}

TEST_F(ContactFiles, PictureIsExtractedWithExactlyItsBytes) {
  desk::Write(At("image.tbl"), PictureRecord(1, 3, "one") + PictureRecord(2, 300, "two" + std::string(500, 'x')));
  desk::Write(At("out"), "what was there before");
  EXPECT_THAT(Extract("2").out, HasSubstr("out: 300 bytes, unknown"));
  EXPECT_EQ(desk::Contents(At("out")), "two" + std::string(297, 'x'));
}

TEST_F(ContactFiles, PictureLongerThanItsRoomIsCutWithANote) {
  desk::Write(At("image.tbl"), PictureRecord(1, 9000, "BM"));
  const desk::Outcome outcome = Extract("1");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(desk::fs::file_size(At("out")), kPictureRoom);
  EXPECT_THAT(outcome.err, HasSubstr("note: the record claims 9000 bytes, more than its room of 8192"));
}

TEST_F(ContactFiles, PictureThatCannotBeHadIsAFailureAndLeavesNoFile) {
  EXPECT_THAT(Extract("1").err, HasSubstr("image.tbl: it cannot be opened: No such file"));
  desk::Write(At("image.tbl"), PictureRecord(1, 2, "BM"));
  EXPECT_THAT(Extract("2").err, HasSubstr("it holds no picture of the id 2"));
  desk::Write(At("image.tbl"), PictureRecord(1, 2, "BM") + PictureRecord(2, 2, "BM").substr(0, 100));
  const desk::Outcome outcome = Extract("2");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("offset 8236, record 2: the file ends inside the record: 100 of 8236 bytes"));
  EXPECT_FALSE(desk::fs::exists(At("out")));
}

TEST_F(ContactFiles, TornImageTableGivesWhatIsWholeAndSaysWhereItEnds) {
  desk::Write(At("image.tbl"), PictureRecord(1, 2, "BM") + PictureRecord(2, 2, "BM").substr(0, 100));
  const desk::Outcome list = Run({"picture", At("image.tbl").string()});
  EXPECT_EQ(list.status, 1);
  EXPECT_THAT(list.out, HasSubstr("1 picture\n"));
  EXPECT_THAT(list.err, HasSubstr("record 2: the file ends inside the record"));
  EXPECT_EQ(Extract("1").status, 0);
}

/// A handset with contacts on it.
class Contacts : public ContactFiles {
 protected:
  Contacts() {
    CreatePhone("0", "40");
    module_ = "contacts";
  }

  nlohmann::json Records(const std::string& file) const {
    return nlohmann::json::parse(Done({"show", Sync(file).string(), "--format", "json"}))["records"];
  }
  void EncodeForPhone(const std::string& form, const std::string& json) const {
    Encode(form, json);
    desk::fs::rename(At(form), Sync(form));
  }
};

TEST_F(Contacts, SampleHoldsWhatAPersonsAddressBookHolds) {
  ASSERT_EQ(Export().status, 0);
  const nlohmann::json contacts = Records("linkman.tbl");
  ASSERT_EQ(contacts.size(), 40u);
  std::set<std::string> names;
  bool dropped_birthday = false;
  for (const auto& contact : contacts) {
    names.insert(contact["name"]);
    EXPECT_NE(contact["number_1"], "") << contact;
    EXPECT_THAT(int{contact["default_number"]}, testing::AllOf(testing::Ge(1), testing::Le(4))) << contact;
    dropped_birthday = dropped_birthday || contact["first_date_month"] == 1 || contact["first_date_day"] == 1;
  }
  EXPECT_EQ(names.size(), 40u);
  EXPECT_TRUE(dropped_birthday);
  for (const char* const field :
       {"number_3", "text_860", "text_1128", "text_1964", "first_address_street", "second_address_street"}) {
    EXPECT_TRUE(std::any_of(contacts.begin(), contacts.end(), [&](const auto& contact) {
      return contact[field] != "";
    })) << field;
  }
  EXPECT_THAT(Done({"show", Sync("groupmgr.tbl").string()}), AllOf(HasSubstr("Family"), HasSubstr("朋友")));
  EXPECT_FALSE(Records("groupattach.tbl").empty());
}

TEST_F(Contacts, SamplePicturesAreBitmapsThatAViewerOpens) {
  ASSERT_EQ(Export().status, 0);
  const nlohmann::json pictures = Records("image.tbl");
  ASSERT_FALSE(pictures.empty());
  for (const auto& picture : pictures) {
    Done({"picture", Sync("image.tbl").string(), std::to_string(int{picture["picture_id"]}), At("out").string()});
    const std::string file = desk::Contents(At("out"));
    const auto word = [&](std::size_t offset) {
      return static_cast<unsigned char>(file[offset]) + 256u * static_cast<unsigned char>(file[offset + 1]);
    };
    EXPECT_EQ(file.substr(0, 2), "BM");
    EXPECT_EQ(word(2), file.size());
    EXPECT_EQ(picture["length"], file.size());
    const std::size_t line = (word(18) + 31) / 32 * 4;  // one bit a pixel, lines of whole words
    EXPECT_EQ(word(28), 1u);
    EXPECT_EQ(word(10) + line * word(22), file.size());
  }
}

TEST_F(Contacts, EveryTableOfAnExportComesBackByteForByte) {
  ASSERT_EQ(Export().status, 0);
  for (const char* const table : {"linkman.tbl", "groupmgr.tbl", "groupattach.tbl", "image.tbl"}) {
    Encode(table, Done({"show", Sync(table).string(), "--format", "json"}));
    EXPECT_GT(desk::fs::file_size(At(table)), 0u) << table;
    EXPECT_TRUE(desk::Contents(At(table)) == desk::Contents(Sync(table))) << table;
  }
}

TEST_F(Contacts, EditsOfRecordsAndMembershipsMadeInTheShellAreInTheNextIncrementalExport) {
  ASSERT_EQ(Export().status, 0);
  Edit(
      "UPDATE contacts SET name = 'Renamed' WHERE id = 3; DELETE FROM memberships WHERE contact_id = 5;"
      "INSERT INTO memberships VALUES (5, 2); DELETE FROM contacts WHERE id = 7;");
  const desk::Outcome outcome = Export({"--mode", "incremental"});
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(Done({"show", Sync("linkman.tbl").string()}), AllOf(HasSubstr("Renamed"), HasSubstr("2 records of")));
  EXPECT_THAT(Done({"show", Sync("groupattach.tbl").string()}), testing::ContainsRegex("\n5 +1 +2\n"));
  const std::string changes = Done({"show", Sync("lkmcmd.tbl").string()});
  EXPECT_THAT(changes, AllOf(testing::ContainsRegex("0 +7 +3 +deleted"), HasSubstr("3 records of")));
}

TEST_F(Contacts, WholeAddressBookComesBackAsItWasButForTheDatesThatARecoverDrops) {
  ASSERT_EQ(Export().status, 0);
  const auto without_ids = [](nlohmann::json contacts) {
    for (auto& contact : contacts) {
      contact.erase("contact_id");
      contact["picture_id"] = contact["picture_id"] != 0;
    }
    return contacts;
  };
  nlohmann::json before = without_ids(Records("linkman.tbl"));
  for (auto& contact : before) {
    if (contact["first_date_month"] != 1 && contact["first_date_day"] != 1) continue;
    for (const char* const date : {"first_date", "second_date"}) {
      for (const char* const part : {"_year", "_month", "_day"}) contact[std::string(date) + part] = 0;
    }
  }
  const std::size_t memberships = Records("groupattach.tbl").size();
  const std::size_t pictures = Records("image.tbl").size();
  const desk::Outcome outcome = Recover({"--mode", "replace"});
  ASSERT_EQ(outcome.status, 0) << outcome.out;
  EXPECT_THAT(outcome.out, HasSubstr("lkmmap.tbl"));
  ASSERT_EQ(Export().status, 0);
  EXPECT_EQ(without_ids(Records("linkman.tbl")), before);
  EXPECT_EQ(Records("groupattach.tbl").size(), memberships);
  EXPECT_EQ(Records("image.tbl").size(), pictures);
}

TEST_F(Contacts, IncrementalRecoverBringsANewContactWithItsPictureIntoItsNewGroup) {
  ASSERT_EQ(Export().status, 0);
  nlohmann::json picture = Records("image.tbl")[0];
  picture["picture_id"] = 7001;
  EncodeForPhone("lkmcmd.tbl", R"([{"table":1,"id":8001,"operation":"new"},{"table":0,"id":9001,"operation":"new"}])");
  EncodeForPhone("groupmgr.tbl", R"([{"group_id":8001,"name":"Choir"}])");
  EncodeForPhone("linkman.tbl", R"([{"contact_id":9001,"name":"Clara Neu","number_1":"42","picture_id":7001}])");
  EncodeForPhone("groupattach.tbl", R"([{"contact_id":9001,"group_id":[8001]}])");
  EncodeForPhone("image.tbl", "[" + picture.dump() + "]");
  const desk::Outcome outcome = Recover({"--mode", "incremental"});
  ASSERT_EQ(outcome.status, 0) << outcome.out;
  const nlohmann::json map = Records("lkmmap.tbl");
  ASSERT_EQ(map.size(), 2u);
  EXPECT_EQ(map[0]["incoming_id"], 8001);
  EXPECT_EQ(map[1]["incoming_id"], 9001);
  ASSERT_EQ(Export().status, 0);
  const nlohmann::json contact = Records("linkman.tbl").back();
  EXPECT_EQ(contact["name"], "Clara Neu");
  EXPECT_EQ(contact["contact_id"], map[1]["new_id"]);
  const nlohmann::json membership = Records("groupattach.tbl").back();
  EXPECT_EQ(membership["contact_id"], map[1]["new_id"]);
  EXPECT_EQ(membership["group_id"], nlohmann::json::array({map[0]["new_id"]}));
  const nlohmann::json arrived = Records("image.tbl").back();
  EXPECT_EQ(arrived["picture_id"], contact["picture_id"]);
  EXPECT_EQ(arrived["data"], picture["data"]);
}

}  // namespace
