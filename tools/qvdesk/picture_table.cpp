// Records of the contacts' picture form, cut to their lengths.
#include "tools/qvdesk/picture_table.h"

#include <algorithm>

#include "modules/contacts/contacts_layout.h"
#include "tools/qvdesk/host_file.h"
#include "tools/qvdesk/record_file.h"

namespace qvdesk {

PictureTable ReadPictureTable(const std::filesystem::path& file) {
  const qv::layout::RecordLayout& layout = qv::contacts::kPictureLayout;
  const qv::layout::Slot& data = FindField(layout, "data")->exchange;
  const std::vector<std::uint8_t> bytes = ReadWholeFile(file);
  const RecordFile records = ParseRecords(layout, bytes);
  PictureTable table{.pictures = {}, .damage = records.damage};
  for (const RecordView& record : records.records) {
    if (record.fixed.size() < layout.exchange_size) break;
    const std::uint32_t length = qv::layout::LoadSlot(qv::contacts::kExchangePictureLength, record.fixed.data());
    const auto picture = record.fixed.subspan(data.offset, std::min<std::uint32_t>(length, data.size));
    table.pictures.push_back({.id = qv::layout::LoadSlot(qv::contacts::kRecordId, record.fixed.data()),
                              .claimed = length,
                              .bytes = {picture.begin(), picture.end()}});
  }
  return table;
}

}  // namespace qvdesk
