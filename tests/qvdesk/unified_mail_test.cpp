// The unified mail at the desktop's end: two tables in one file, items with fields, texts of any length, and the sample
// phone's mailbox shown, edited, and carried there and back.
#include "tests/qvdesk/two_phones.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

const desk::Module kUnifiedMail = {
    "unified-mail", {"UnMailinfo.tbl", "UnMailFolder.tbl", "UnMailFolderFilt.tbl", "UnMailSendFilt.tbl"}};

class UnifiedMailFiles : public desk::TwoPhones {
 protected:
  static std::size_t NumberAt(const std::string& bytes, std::size_t offset) {
    return static_cast<std::uint8_t>(bytes[offset]);
  }
};

constexpr char kMail[] = R"([{"mail_id":7,"table":1,"time_1_year":2006,"text_3":"Subject",
    "item_182":[{"text_1":"Anna","text_2":"anna@example.org","kind":2}],
    "item_308":[{"value_0":3,"text":"a.txt"}],"text":"你好\r\n"}])";

TEST_F(UnifiedMailFiles, AMailIsItsFixedPartItsItemsAndItsText) {
  const std::string bytes = Encoded("UnMailinfo.tbl", kMail);
  ASSERT_EQ(bytes.size(), 880u + 182 + 308 + 2 * 4);
  EXPECT_EQ(NumberAt(bytes, 0), 7u);
  EXPECT_EQ(NumberAt(bytes, 8), 1u);
  EXPECT_EQ(NumberAt(bytes, 612), 1u);
  EXPECT_EQ(NumberAt(bytes, 628), 4u);
  EXPECT_EQ(NumberAt(bytes, 836), 1u);
  EXPECT_EQ(bytes.substr(880, 4), std::string("A\0n\0", 4));
  EXPECT_EQ(NumberAt(bytes, 880 + 180), 2u);
  EXPECT_EQ(NumberAt(bytes, 1062), 3u);
  EXPECT_EQ(bytes.substr(1370), std::string("\x60\x4F\x7D\x59\r\0\n\0", 8));
}

TEST_F(UnifiedMailFiles, MailsAreShownWithTheirItemsAndTexts) {
  const std::string bytes = Encoded("UnMailinfo.tbl", kMail);
  const std::string shown = ShowJson(At("UnMailinfo.tbl"));
  const json mail = json::parse(shown)["records"][0];
  EXPECT_EQ(mail["text"], "你好\r\n");
  EXPECT_EQ(mail["item_182"], json::parse(R"([{"text_1":"Anna","text_2":"anna@example.org","kind":2}])"));
  EXPECT_EQ(mail["item_308"], json::parse(R"([{"value_0":3,"value_4":0,"text":"a.txt"}])"));
  EXPECT_THAT(Done({"show", At("UnMailinfo.tbl").string()}),
              AllOf(HasSubstr("sent"), HasSubstr("Subject"), HasSubstr("你好\\u000d\\u000a")));
  EXPECT_THAT(Done({"show", At("UnMailinfo.tbl").string(), "--all-fields"}),
              AllOf(HasSubstr("  item_182[0].text_1   Anna\n"), HasSubstr("  item_308[0].text     a.txt\n")));
  EXPECT_TRUE(Encoded("UnMailinfo.tbl", shown) == bytes);
}

TEST_F(UnifiedMailFiles, ATextThatIsNoneIsHexAndOneOfNoLengthIsEmpty) {
  const std::string bytes = Encoded("UnMailinfo.tbl", R"([{"text":{"hex":"00d84100"}},{}])");
  EXPECT_EQ(NumberAt(bytes, 628), 2u);
  const std::string shown = ShowJson(At("UnMailinfo.tbl"));
  EXPECT_EQ(json::parse(shown)["records"][0]["text"], json({{"hex", "00d84100"}}));
  EXPECT_EQ(json::parse(shown)["records"][1]["text"], "");
  EXPECT_TRUE(Encoded("UnMailinfo.tbl", shown) == bytes);
  EXPECT_THAT(EncodingError("UnMailinfo.tbl", R"([{"text":{"hex":"00d841"}}])"),
              HasSubstr("\"text\" takes whole characters of 2 bytes, not 3 bytes"));
  EXPECT_THAT(EncodingError("UnMailinfo.tbl", R"([{"text":7}])"), HasSubstr("\"text\" takes a string"));
  EXPECT_THAT(EncodingError("UnMailinfo.tbl", R"([{"text":"abc","text_length":2}])"),
              HasSubstr("\"text_length\" is 2, but \"text\" has 3 characters"));
}

TEST_F(UnifiedMailFiles, ACountBelowZeroIsKept) {
  const std::string bytes = Encoded("UnMailinfo.tbl", R"([{"text_length":4294967295,"item_182_count":4294967290}])");
  EXPECT_EQ(bytes.size(), 880u);
  EXPECT_EQ(bytes.substr(628, 4), "\xFF\xFF\xFF\xFF");
  EXPECT_TRUE(Encoded("UnMailinfo.tbl", ShowJson(At("UnMailinfo.tbl"))) == bytes);
}

TEST_F(UnifiedMailFiles, DamageIsSaidWhere) {
  const std::string bytes = Encoded("UnMailinfo.tbl", kMail);
  EXPECT_THAT(Damage("UnMailinfo.tbl", bytes.substr(0, 100)), HasSubstr("100 of 880 bytes are there"));
  EXPECT_THAT(Damage("UnMailinfo.tbl", bytes.substr(0, 881)), HasSubstr("items \"item_182\": 1 of its 182 bytes"));
  EXPECT_THAT(Damage("UnMailinfo.tbl", bytes.substr(0, 1369)), HasSubstr("items \"item_308\": 307 of its 308 bytes"));
  EXPECT_THAT(Damage("UnMailinfo.tbl", bytes.substr(0, 1373)),
              HasSubstr("inside \"text\": 3 of its 8 bytes are there"));
  std::string many = bytes;
  many.replace(628, 4, "\xFF\xFF\xFF\x7F");
  EXPECT_THAT(Damage("UnMailinfo.tbl", many), HasSubstr("inside \"text\": 8 of its 4294967294 bytes are there"));
  many.replace(836, 4, "\xFF\xFF\xFF\x7F");
  EXPECT_THAT(Damage("UnMailinfo.tbl", many), HasSubstr("item 2 of 2147483647 items \"item_308\""));
  EXPECT_THAT(Damage("UnMailFolder.tbl", std::string(273, 'x')), HasSubstr("1 of 272 bytes are there"));
  EXPECT_THAT(Damage("UnMailSendFilt.tbl", std::string(93, 'x')), HasSubstr("93 of 94 bytes are there"));
}

TEST_F(UnifiedMailFiles, ItemsAndTextAreDescribed) {
  EXPECT_THAT(Done({"describe", "formats"}),
              AllOf(HasSubstr("| item_182 | fields, below | 182 | 612 | 4, signed: below 0 is as good as 0 |"),
                    HasSubstr("| text | one block of characters, UTF-16LE | 2 | 628 |"),
                    HasSubstr("An item item_308, of 308 bytes, in the store 164:\n")));
  EXPECT_THAT(Done({"describe", "layouts"}), HasSubstr("any number of \"unified mail item of 182 bytes\""));
}

/// A phone with a sample mailbox.
class UnifiedMail : public UnifiedMailFiles {
 protected:
  UnifiedMail() { CreatePhone("0"); }

  /// Of what a phone gets it keeps the first four bytes: as many letters, or two Chinese characters, whose UTF-8 has
  /// six.
  static void ExpectBeginnings(const json& cut, const json& whole) {
    ASSERT_EQ(cut.size(), whole.size());
    for (std::size_t i = 0; i < cut.size(); ++i) {
      const std::string text = whole[i]["text"];
      const bool is_chinese = static_cast<std::uint8_t>(text.at(0)) >= 0x80;
      EXPECT_EQ(cut[i]["text"], text.substr(0, is_chinese ? 6 : 4));
    }
  }
  static json Comparable(const json& mails) { return Without(mails, {"mail_id", "text", "text_length"}); }
};

TEST_F(UnifiedMail, SampleMailsWereReceivedAndSent) {
  EXPECT_THAT(Done({"create", At("other").string(), "--unified-mails", "5"}), HasSubstr("5 unified mails,"));
  ExportOf(kUnifiedMail);
  EXPECT_THAT(ShowText("UnMailinfo.tbl"),
              AllOf(HasSubstr("received"), HasSubstr("sent"), HasSubstr("李明"), HasSubstr("Photos"),
                    HasSubstr("周末聚会"), HasSubstr("12 records of")));
  for (const char* const file : {"UnMailFolder.tbl", "UnMailFolderFilt.tbl", "UnMailSendFilt.tbl"}) {
    EXPECT_THAT(ShowText(file), HasSubstr("3 records of")) << file;
  }
  std::string texts;
  for (const json& mail : Records("UnMailinfo.tbl")) {
    EXPECT_GE(mail["item_182"].size(), 1u);
    EXPECT_EQ(mail["kind_0_count"], 1);
    texts += mail["text"];
  }
  EXPECT_THAT(texts, AllOf(HasSubstr("The ferry leaves at 9:40"), HasSubstr("大家好!\r\n")));
}

TEST_F(UnifiedMail, EveryFileOfAnExportComesBackByteForByte) {
  ExportOf(kUnifiedMail);
  ExpectRoundTrips(kUnifiedMail);
}

TEST_F(UnifiedMail, AllComesBackButForTheEndsOfTexts) {
  ExportOf(kUnifiedMail);
  const json mails = Records("UnMailinfo.tbl"), folders = Records("UnMailFolder.tbl");
  ASSERT_EQ(Recover({"--mode", "replace"}).status, 0);
  EXPECT_EQ(Records("taskmap.tbl").size(), 12u);
  ExportOf(kUnifiedMail);
  EXPECT_EQ(Comparable(Records("UnMailinfo.tbl")), Comparable(mails));
  ExpectBeginnings(Records("UnMailinfo.tbl"), mails);
  EXPECT_EQ(Records("UnMailFolder.tbl"), folders);
}

TEST_F(UnifiedMail, ASecondPhoneGetsMailsFoldersAndRules) {
  CreateSecond({"--unified-mails", "0"});
  ExportOf(kUnifiedMail);
  CarryToSecondPhone(kUnifiedMail);
  EXPECT_EQ(Comparable(Records(Second("UnMailinfo.tbl"))), Comparable(Records("UnMailinfo.tbl")));
  ExpectBeginnings(Records(Second("UnMailinfo.tbl")), Records("UnMailinfo.tbl"));
  for (const char* const file : {"UnMailFolder.tbl", "UnMailFolderFilt.tbl", "UnMailSendFilt.tbl"}) {
    EXPECT_TRUE(desk::Contents(Second(file)) == desk::Contents(Sync(file))) << file;
  }
}

TEST_F(UnifiedMail, EditsInTheShellAreInTheNextIncrementalExport) {
  ExportOf(kUnifiedMail);
  Edit(
      "UPDATE unified_mails_received SET text = 'Edited' WHERE id = 2; DELETE FROM unified_mails_sent WHERE id = 1; "
      "INSERT INTO unified_mails_sent_items_182 (mail_id, number, kind, text_1) VALUES (2, 9, 2, 'Blind')");
  ExportOf(kUnifiedMail, {"--mode", "incremental"});
  EXPECT_EQ(Without(Records("UnMailcmd.tbl"), {"reads"}),
            json::parse(R"([{"table":0,"id":2,"operation":2},{"table":1,"id":2,"operation":2},
                            {"table":1,"id":1,"operation":3}])"));
  const json mails = Records("UnMailinfo.tbl");
  ASSERT_EQ(mails.size(), 2u);
  EXPECT_EQ(mails[0]["text"], "Edited");
  EXPECT_EQ(mails[1]["item_182"].back()["text_1"], "Blind");
}

TEST_F(UnifiedMail, ChangesFromTheDesktopAreApplied) {
  ExportOf(kUnifiedMail);
  EncodeTo("UnMailcmd.tbl", R"([{"table":1,"id":9001,"operation":"new"},{"table":0,"id":3,"operation":"modified"},
                                {"table":0,"id":1,"operation":"deleted"}])",
           Sync("UnMailcmd.tbl"));
  EncodeTo("UnMailinfo.tbl", R"([{"mail_id":9001,"table":1,"text_3":"New","item_182":[{"text_1":"A"}]},
                                 {"mail_id":3,"table":0,"text_3":"Changed","text":"Hi"}])",
           Sync("UnMailinfo.tbl"));
  ASSERT_EQ(Recover({"--mode", "incremental"}).status, 0);
  EXPECT_EQ(Records("taskmap.tbl"), json::parse(R"([{"table":1,"new_id":5,"incoming_id":9001}])"));
  ExportOf(kUnifiedMail);
  const json mails = Records("UnMailinfo.tbl");
  ASSERT_EQ(mails.size(), 12u);
  EXPECT_EQ(mails[1]["text_3"], "Changed");
  EXPECT_EQ(mails[1]["text"], "Hi");
  EXPECT_EQ(mails[11]["text_3"], "New");
}

}  // namespace
