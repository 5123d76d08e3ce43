// The desktop's two transfers: what they read of a request, what they answer, and in which order.
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;

class TransferTest : public AgentTest {
 protected:
  ScriptedScheduleStore store_;
};

const std::vector<std::uint32_t> kDataChanged = {0x7ED, 0x7F1, 0x7F0, 0x7E9, 0x7EA, 0x7F2, 0x7EC, 0x7EB, 0x7EE};

void ExpectDataChangedPosted() {
  std::vector<std::uint32_t> messages;
  for (const handset::PostedMessage& posted : handset::PostedMessages()) {
    EXPECT_EQ(posted.window, reinterpret_cast<coredll::HWND>(0xFFFF));
    EXPECT_EQ(posted.wparam, 0u);
    EXPECT_EQ(posted.lparam, 0);
    messages.push_back(posted.message);
  }
  EXPECT_EQ(messages, kDataChanged);
}

TEST_F(TransferTest, ExportAnswersOneRecordAndThenReleasesTheStream) {
  const Answer answer = Export(2, 1);
  EXPECT_THAT(answer.stream_calls, ElementsAre("Write 48", "Release"));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 1u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_EQ(answer.returned, 0u);
  EXPECT_THAT(handset::PostedMessages(), testing::IsEmpty());
}

TEST_F(TransferTest, RecoverAnswersOneRecordAndThenReleasesTheStream) {
  WriteFile(u"\\sync\\schedule.tbl", {});
  WriteFile(u"\\sync\\schedulegroup.tbl", {});
  const Answer answer = Recover(2, 1);
  EXPECT_THAT(answer.stream_calls, ElementsAre("Write 48", "Release"));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 1u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_EQ(answer.returned, 0u);
  ExpectDataChangedPosted();
}

TEST_F(TransferTest, UnknownModulesSucceedWithTheRequestsModeAndAnchor) {
  for (const std::int32_t id : {0, 17, -1, -2147483647 - 1, 2147483647}) {
    SCOPED_TRACE(id);
    const Answer answer = Export(id, 3, u"20061211");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, 3u);
    EXPECT_EQ(answer.anchor, u"20061211");
    EXPECT_EQ(answer.returned, 0u);
    EXPECT_THAT(answer.stream_calls, ElementsAre("Write 48", "Release"));
  }
  EXPECT_THAT(handset::PostedMessages(), testing::IsEmpty());
  EXPECT_THAT(store_.calls, testing::IsEmpty());
}

TEST_F(TransferTest, RecoverOfAnUnknownModuleStillTellsEveryWindow) {
  for (const std::int32_t id : {0, 17, -5}) {
    handset::Start(handset::HostPath(u"\\"));
    const Answer answer = Recover(id, 7, u"9");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, 7u);
    EXPECT_EQ(answer.anchor, u"9");
    EXPECT_EQ(answer.returned, 0u);
    ExpectDataChangedPosted();
  }
}

TEST_F(TransferTest, WindowsAreToldAfterTheRecoverAndBeforeItsAnswer) {
  WriteFile(u"\\sync\\schedule.tbl", {});
  WriteFile(u"\\sync\\schedulegroup.tbl", {});
  RecordingStream stream;
  EXPECT_EQ(Call("fnQV_RecovTabs", Request(2, 1, u"", kSync), &stream), 0u);
  EXPECT_EQ(store_.messages_at_last_call, 0u);
  EXPECT_EQ(stream.messages_at_write, 9u);
}

TEST_F(TransferTest, NothingIsAnsweredBehindTheAnchorsNul) {
  Bytes request = Request(2, 1, u"", kSync);
  PutText(request, 8, u"1234567890123456789");
  Bytes expected(48);
  Put32(expected, 4, 1);
  PutText(expected, 8, kNowAnchor);
  for (const char* name : {"fnQV_ExportTabs", "fnQV_RecovTabs"}) {
    RecordingStream stream;
    EXPECT_EQ(Call(name, request, &stream), 0u);
    EXPECT_EQ(stream.written, expected) << name;
  }
  PutText(request, 8, std::u16string_view(u"5\0left over", 11));
  Put32(request, 0, 17);
  RecordingStream stream;
  EXPECT_EQ(Call("fnQV_RecovTabs", request, &stream), 0u);
  expected.assign(48, 0);
  Put32(expected, 4, 1);
  PutText(expected, 8, u"5");
  EXPECT_EQ(stream.written, expected);
}

TEST_F(TransferTest, FailedRecoverStillTellsEveryWindow) {
  EXPECT_EQ(Recover(2, 1).code, 0x20000000u | 0x4000000u | 256u);
  ExpectDataChangedPosted();
}

TEST_F(TransferTest, TheReturnValueLacksTheDirectionsFlag) {
  store_.statuses["GetAllSyncInfo"] = 1;
  store_.Add(0, 1, 1);
  const Answer exported = Export(2, 1);
  EXPECT_EQ(exported.code, 0x11000005u);
  EXPECT_EQ(exported.returned, 0x01000005u);
  const Answer recovered = Recover(2, 1, u"", u"\\nowhere");
  EXPECT_EQ(recovered.code, 0x24000100u);
  EXPECT_EQ(recovered.returned, 0x04000100u);
}

TEST_F(TransferTest, AFailedExportStillAnswersTheAnchorItMoved) {
  store_.statuses["GetAllSyncInfo"] = 1;
  store_.Add(0, 1, 1);
  const Answer answer = Export(2, 1, u"1");
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nSCHEDULE = 200612117210");
}

TEST_F(TransferTest, AnIncrementalExportWithAnotherAnchorComesBackAsFull) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 2006121071010");
  const Answer answer = Export(2, 3, u"2006121071011");
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 1u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
}

TEST_F(TransferTest, APlainCopyAnswersTheRequestsAnchor) {
  for (const std::uint32_t mode : {4u, 5u, 0x7FFFFFFFu}) {
    const Answer answer = Export(2, mode, u"2006121071010");
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, u"2006121071010");
  }
  EXPECT_FALSE(Exists(kAnchorIni));
}

TEST_F(TransferTest, RecoverAnswersTheModeAsReceived) {
  for (const std::uint32_t mode : {1u, 2u, 4u, 5u, 0xFFFFFFFFu}) {
    WriteFile(u"\\sync\\schedule.tbl", {});
    WriteFile(u"\\sync\\schedulegroup.tbl", {});
    const Answer answer = Recover(2, mode);
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
  }
}

TEST_F(TransferTest, ANegativeModeBehavesLikeAFullOne) {
  const Answer answer = Export(2, 0x80000000u);
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 0x80000000u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_TRUE(Exists(u"\\dbdata\\sysconfig\\schedule.log"));
}

TEST_F(TransferTest, WithoutAStreamTheWorkIsDoneAndTheResultReturned) {
  EXPECT_EQ(Call("fnQV_ExportTabs", Request(2, 1, u"", kSync), nullptr), 0u);
  EXPECT_TRUE(Exists(u"\\sync\\schedule.tbl"));
  store_.statuses["DelAll"] = 9;
  EXPECT_EQ(Call("fnQV_RecovTabs", Request(2, 2, u"", kSync), nullptr), 3u);
}

TEST_F(TransferTest, ABrokenStreamChangesNothing) {
  RecordingStream stream;
  stream.fails = true;
  EXPECT_EQ(Call("fnQV_ExportTabs", Request(2, 1, u"", kSync), &stream), 0u);
  EXPECT_THAT(stream.calls, ElementsAre("Write 48", "Release"));
  EXPECT_TRUE(Exists(u"\\sync\\schedule.tbl"));
}

TEST_F(TransferTest, ANullRequestIsAnsweredLikeAnUnknownModule) {
  for (const char* name : {"fnQV_ExportTabs", "fnQV_RecovTabs"}) {
    RecordingStream stream;
    EXPECT_EQ(Call(name, {}, &stream), 0u);
    EXPECT_EQ(stream.written, Bytes(48)) << name;
    EXPECT_THAT(stream.calls, ElementsAre("Write 48", "Release"));
    EXPECT_EQ(Call(name, {}, nullptr), 0u);
  }
}

TEST_F(TransferTest, AnAnchorBeyondItsBufferIsCutToNineteenCharacters) {
  Bytes request = Request(0, 4, u"", kSync);
  PutText(request, 8, u"12345678901234567890");
  RecordingStream stream;
  EXPECT_EQ(Call("fnQV_ExportTabs", request, &stream), 0u);
  Bytes expected(48);
  Put32(expected, 4, 4);
  PutText(expected, 8, u"1234567890123456789");
  EXPECT_EQ(stream.written, expected);
}

TEST_F(TransferTest, ARequestMayLieAtAnOddAddress) {
  Bytes shifted = {0};
  Append(shifted, Request(2, 1, u"", kSync));
  RecordingStream stream;
  EXPECT_EQ(Agent().Export<RapiFunction>("fnQV_ExportTabs")(0, shifted.data() + 1, nullptr, nullptr, &stream), 0u);
  EXPECT_EQ(Get32(stream.written, 0), 0u);
  EXPECT_TRUE(Exists(u"\\sync\\schedule.tbl"));
}

TEST_F(TransferTest, TheRequestIsNotChanged) {
  Bytes request = Request(2, 3, u"1", kSync);
  const Bytes before = request;
  RecordingStream stream;
  Agent().Export<RapiFunction>("fnQV_ExportTabs")(0, request.data(), nullptr, nullptr, &stream);
  EXPECT_EQ(request, before);
}

TEST_F(TransferTest, WithoutMemoryForTheAnchorNothingIsRun) {
  for (const bool exporting : {true, false}) {
    handset::FailCallOf("realloc", 1);
    const Answer answer = exporting ? Export(2, 3, u"5") : Recover(2, 3, u"5");
    ASSERT_TRUE(handset::FaultHappened());
    EXPECT_EQ(answer.code, (exporting ? 0x10000000u : 0x20000000u) | 16u);
    EXPECT_EQ(answer.mode, 3u);
    EXPECT_EQ(answer.anchor, u"");
    EXPECT_EQ(answer.returned, 16u);
  }
  EXPECT_THAT(store_.calls, testing::IsEmpty());
  ExpectDataChangedPosted();
}

TEST_F(TransferTest, FormerFunctionsAnswerAZeroAndReleaseTheStream) {
  for (const char* name : {"fnQV_ExportTables", "fnQV_Recover"}) {
    RecordingStream stream;
    EXPECT_EQ(Call(name, Request(2, 1, u"", kSync), &stream), 0u);
    EXPECT_EQ(stream.written, Bytes(4));
    EXPECT_THAT(stream.calls, ElementsAre("Write 4", "Release"));
    EXPECT_EQ(Call(name, {}, nullptr), 0u);
  }
  EXPECT_THAT(store_.calls, testing::IsEmpty());
  EXPECT_THAT(handset::PostedMessages(), testing::IsEmpty());
}

TEST_F(TransferTest, ALocalExportTouchesNeitherAnchorNorSnapshots) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 1");
  WriteText(u"\\dbdata\\sysconfig\\schedule.log", "old");
  store_.Add(0, 1, 1);
  std::vector<std::u16string> opened;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW") opened.emplace_back(call.path);
  });
  EXPECT_EQ(LocalExport(2), 0u);
  handset::Observe({});
  EXPECT_THAT(opened, ElementsAre(u"\\sync\\schedule.tbl", u"\\sync\\schedulegroup.tbl", u"\\sync\\schedule.tbl",
                                  u"\\sync\\schedulegroup.tbl"));
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nSCHEDULE = 1");
  EXPECT_EQ(ReadText(u"\\dbdata\\sysconfig\\schedule.log"), "old");
  EXPECT_EQ(ReadFile(u"\\sync\\schedule.tbl").size(), 912u);
  EXPECT_THAT(handset::PostedMessages(), testing::IsEmpty());
}

TEST_F(TransferTest, ALocalRecoverAppliesPlainlyAndTellsEveryWindow) {
  WriteFile(u"\\sync\\schedule.tbl", Bytes(912));
  WriteFile(u"\\sync\\schedulegroup.tbl", {});
  store_.Add(0, 1, 1);
  EXPECT_EQ(LocalRecover(2), 0u);
  EXPECT_EQ(store_.tables[0].size(), 2u);
  EXPECT_THAT(AllFiles(), testing::IsEmpty());
  ExpectDataChangedPosted();
}

TEST_F(TransferTest, ALocalCallReportsFailuresWithTheDirectionsFlag) {
  EXPECT_EQ(LocalExport(2, u"\\nowhere"), 0x10000100u);
  EXPECT_EQ(LocalRecover(2, u"\\nowhere"), 0x24000100u);
  ExpectDataChangedPosted();
}

TEST_F(TransferTest, ALocalCallOfAnUnknownModuleSucceeds) {
  EXPECT_EQ(LocalExport(0), 0u);
  EXPECT_EQ(LocalExport(17), 0u);
  EXPECT_THAT(handset::PostedMessages(), testing::IsEmpty());
  EXPECT_EQ(LocalRecover(0), 0u);
  ExpectDataChangedPosted();
}

TEST_F(TransferTest, ANullDirectoryDoesNotCrash) {
  EXPECT_EQ(LocalExport(2, nullptr), 0u);
  EXPECT_TRUE(Exists(u"\\schedule.tbl"));
  EXPECT_EQ(LocalRecover(2, nullptr), 0u);
}

}  // namespace
}  // namespace qv_test
