// The store libraries as files: each exports its entry points, and no name that could meet another library's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using testing::UnorderedElementsAre;

std::vector<std::string> ExportsOf(const std::string& file) {
  const std::string command = std::string(QV_NM) + " -D --defined-only --format=just-symbols '" + file + "'";
  FILE* const pipe = popen(command.c_str(), "r");
  std::vector<std::string> names;
  std::array<char, 256> line;
  while (std::fgets(line.data(), line.size(), pipe) != nullptr) {
    names.emplace_back(line.data());
    names.back().pop_back();
  }
  EXPECT_EQ(pclose(pipe), 0);
  return names;
}

TEST(StoreExportsTest, TheScheduleStoreExportsItsSevenEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_SCHED_STORE),
              UnorderedElementsAre("SC_Sync_GetTotalNum", "SC_Sync_GetAllSyncInfo", "SC_Sync_Read", "SC_Sync_Insert",
                                   "SC_Sync_Update", "SC_Sync_Del", "SC_Sync_DelAll"));
}

TEST(StoreExportsTest, TheTaskStoreExportsItsSevenEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_TODO_STORE),
              UnorderedElementsAre("TD_Sync_GetAllRecNum", "TD_Sync_GetAllidTime", "TD_Sync_Read", "Td_Sync_Insert",
                                   "TD_Sync_Update", "TD_Sync_Del", "TD_Sync_DelAll"));
}

TEST(StoreExportsTest, TheAgendaStoreExportsItsSevenEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_AGENDA_STORE),
              UnorderedElementsAre("AGD_Sync_GetAllRecNum", "AGD_Sync_GetAllidTime", "AGD_Sync_Read", "AGD_Sync_Insert",
                                   "AGD_Sync_Update", "AGD_Sync_Del", "AGD_Sync_DelAll"));
}

TEST(StoreExportsTest, TheUnifiedMailStoreExportsItsThirteenEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_UNIFIED_MAIL_STORE),
              UnorderedElementsAre("UMAIL_GetAllRecNum", "UMAIL_GetAllidTime", "UMAIL_GetRec", "UMAIL_AddOneRec",
                                   "UMAIL_UpdateRec", "UMAIL_DelRec", "tag_UMAIL_DelRec", "UMAIL_GetSubFolderList",
                                   "UMAIL_WriteFolderList", "UMAIL_GetAllSubFolderFilterRecs",
                                   "UMAIL_WriteAllSubFolderFilterRecs", "UMAIL_GetAllSenderAppointRecs",
                                   "UMAIL_WriteAllSenderAppointRecs"));
}

TEST(StoreExportsTest, TheContactStoreExportsItsTwentyTwoEntryPointsAndNothingElse) {
  EXPECT_THAT(
      ExportsOf(QV_CONTACT_STORE),
      UnorderedElementsAre("DTP_Initialize", "DTP_UnInitialize", "DTP_PIMGetAllManNum", "DTP_PIMGetAllGroupNum",
                           "DTP_PIMGetAllmanSyncid", "DTP_PIMGetAllgroupSyncid", "DTP_PIMReadman", "DTP_PIMReadgroup",
                           "DTP_PIMDeleteMan", "DTP_PIMDeleteGroup", "DTP_PIMAddManToUnGroup", "DTP_PIMAddGroup",
                           "DTP_PIMUpdateMan", "DTP_PIMUpdateGroup", "DTP_PIMFindmanSyncidByName",
                           "DTP_PIMFindgroupSyncidByName", "DTP_PIMQueryManAttachGroup", "DTP_PIMPhoneAddToGroups",
                           "DTP_PIMModifyManToGroup", "DTP_DownloadingImage", "DTP_LoadingImage", "DTP_DeleteImage"));
}

TEST(StoreExportsTest, TheMailStoreExportsItsClassAndTheMailIdAndNothingElse) {
  EXPECT_THAT(
      ExportsOf(QV_MAIL_STORE),
      UnorderedElementsAre("CMailDBSync", "InitCEDB", "CloseCEDB", "DisConnectDB", "Sync_GetUserInfo",
                           "Sync_GetConfigInfo", "Sync_GetFilterInfo", "Sync_GetLinkManInfo", "Sync_GetFolderInfo",
                           "Sync_GetUIDLInfo", "Sync_GetMailHeaderInfo", "Sync_GetMailAddressInfo", "Sync_SetUserInfo",
                           "Sync_SetUIDLInfo", "Sync_SetFilterInfo", "Sync_QueryHeaderByUserId", "Sync_SetFolderInfo",
                           "Sync_SetMailInfo", "GetSystemMailID"));
}

TEST(StoreExportsTest, TheSmsStoreExportsItsNineEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_SMS_STORE),
              UnorderedElementsAre("Sync_GetAllRecNum", "Sync_GetAllidTime", "Sync_Read", "Sync_Insert", "Sync_Update",
                                   "Sync_Del", "Sync_DelAll", "Sync_GetSMSConfig", "Sync_SetSMSConfig"));
}

TEST(StoreExportsTest, TheMmsStoreExportsItsNineEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_MMS_STORE),
              UnorderedElementsAre("mms_Sync_GetAllRecvNum", "mms_Sync_getAllidTime", "mms_Sync_Read",
                                   "mms_Sync_Insert", "mms_Sync_Update", "mms_SC_Sync_Del", "mms_Sync_DelAll",
                                   "mms_Sync_GetConfig", "mms_Sync_SetConfig"));
}

TEST(StoreExportsTest, TheCallLogStoreExportsItsSevenEntryPointsAndNothingElse) {
  EXPECT_THAT(
      ExportsOf(QV_CALL_LOG_STORE),
      UnorderedElementsAre("EXPCALLHISTORY_Sync_GetAllRecNum", "EXPCALLHISTORY_Sync_GetAllidTime",
                           "EXPCALLHISTORY_Sync_Read", "EXPCALLHISTORY_Sync_Insert", "EXPCALLHISTORY_Sync_Update",
                           "EXPCALLHISTORY_Sync_Del", "EXPCALLHISTORY_Sync_DelAll"));
}

TEST(StoreExportsTest, TheSpeedDialStoreExportsItsSevenEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_SPEED_DIAL_STORE),
              UnorderedElementsAre("Sync_GetAllRecNum", "Sync_GetAllidTime", "Sync_Read", "Sync_Insert", "Sync_Update",
                                   "Sync_Del", "Sync_DelAll"));
}

TEST(StoreExportsTest, TheCardScanStoreExportsItsNineEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_CARD_SCAN_STORE),
              UnorderedElementsAre("CR_Initialize", "CR_UnInitialize", "CR_Sync_GetAllRecNum", "CR_Sync_GetAllidTime",
                                   "CR_Sync_Read", "CR_Sync_Insert", "CR_Sync_Update", "CR_Sync_Del",
                                   "CR_Sync_DeleteAllCardRecord"));
}

TEST(StoreExportsTest, TheSketchStoreExportsItsSevenEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_SKETCH_STORE),
              UnorderedElementsAre("DrawInfo_GetAllRecNum", "DrawInfo_GetAllidTime", "DrawInfo_Read", "DrawInfo_Insert",
                                   "DrawInfo_Update", "DrawInfo_Sync_Del", "DrawInfo_DelAll"));
}

TEST(StoreExportsTest, TheCallFilterStoreExportsItsElevenEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_CALL_FILTER_STORE),
              UnorderedElementsAre("Sync_GetAllRecNum", "Sync_GetAllidTime", "Sync_Read", "Sync_insert", "Sync_Update",
                                   "Sync_Del", "SC_Sync_Del", "Sync_DelAll", "Sync_rbc_ReadConfig",
                                   "Sync_rbc_WriteConfig", "Sync_rbc_DelConfig"));
}

TEST(StoreExportsTest, TheSettingsStoresExportTheirEntryPointsAndNothingElse) {
  EXPECT_THAT(ExportsOf(QV_PROFILE_SETTINGS), UnorderedElementsAre("fnModelSetting_Backup", "fnModelSetting_Restore",
                                                                   "fnDispSetting_Backup", "fnDispSetting_Restore"));
  EXPECT_THAT(ExportsOf(QV_BROWSER_SETTINGS), UnorderedElementsAre("fnIESetting_Backup", "fnIESetting_Restore"));
  EXPECT_THAT(ExportsOf(QV_ALARM_STORE), UnorderedElementsAre("Sync_GetClockInfo", "Sync_UpdateClockInfo"));
}

}  // namespace
