// Multimedia messages as they travel, written out by hand. Nothing here comes from the agent's field tables: these
// bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_MMS_RECORDS_H
#define QV_TESTS_SUPPORT_MMS_RECORDS_H

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the multimedia messages' files lie on the handset of a behaviour test.
constexpr char16_t kMmsTable[] = u"\\sync\\mmsinfo.tbl";
constexpr char16_t kMmsConfig[] = u"\\sync\\mmsconf.tbl";
constexpr char16_t kMmsChanges[] = u"\\sync\\mmscmd.tbl";
constexpr char16_t kMmsIdMap[] = u"\\sync\\mmsmap.tbl";
constexpr char16_t kMmsLog[] = u"\\dbdata\\sysconfig\\mmsinfo.log";
/// What an incremental recover deletes instead of its own change list.
constexpr char16_t kOtherChanges[] = u"\\sync\\smscmd.tbl";

/// The 24 bytes before the text and the data.
Bytes MmsHead(std::uint32_t text_length, std::uint32_t id, std::uint32_t value, std::uint32_t data_length);
/// A whole message.
Bytes MmsRecord(std::uint32_t id, std::string_view text = {}, const Bytes& data = {}, std::uint32_t value = 0);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_MMS_RECORDS_H
