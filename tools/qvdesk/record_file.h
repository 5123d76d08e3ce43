// Files that are records back to back: taken apart as far as they can be read, and put together again from JSON.
#ifndef QV_TOOLS_QVDESK_RECORD_FILE_H
#define QV_TOOLS_QVDESK_RECORD_FILE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "layout/record_layout.h"
#include "tools/qvdesk/field_value.h"

namespace qvdesk {

/// One record where it lies in the file.
struct RecordView {
  std::span<const std::uint8_t> fixed;  ///< Shorter than the form says when the file ends within.
  std::vector<std::vector<std::span<const std::uint8_t>>> items;  ///< By run; those that are whole. A block is one.

  bool Has(const qv::layout::Slot& slot) const { return std::size_t{slot.offset} + slot.size <= fixed.size(); }
};

struct RecordFile {
  std::vector<RecordView> records;    ///< Into the bytes that were parsed.
  std::optional<std::string> damage;  ///< Where the rest cannot be read, and why.
};

/// `stride`: bytes from one record to the next, what lies between being nobody's; 0: the records are back to back.
RecordFile ParseRecords(const qv::layout::RecordLayout& layout, std::span<const std::uint8_t> bytes,
                        std::uint32_t stride = 0);

/// Under this name a record has, for people only, what words and dates some of its numbers mean.
inline constexpr char kReads[] = "reads";

/// Every field by name, the items as arrays by their run's name, those of a form of their own as objects, blocks as
/// block_value.h says, and kReads.
Json ToJson(const qv::layout::RecordLayout& layout, const RecordView& record);
/// The reverse, appended to `bytes`. Fields that are not given are zero, counts follow from the items. Throws
/// std::runtime_error that names the field.
void AppendRecord(const Json& record, const qv::layout::RecordLayout& layout, std::vector<std::uint8_t>& bytes);

/// The field of this name in the exchange record; null when there is none.
const qv::layout::Field* FindField(const qv::layout::RecordLayout& layout, std::string_view name);
/// Its number; nothing also when the record ends before it.
std::optional<std::uint32_t> NumberOf(const qv::layout::RecordLayout& layout, const RecordView& record,
                                      std::string_view name);

/// What a record's numbers mean: (name, words).
std::vector<std::pair<std::string, std::string>> ReadableOf(const qv::layout::RecordLayout& layout,
                                                            const RecordView& record);

/// The lines of an anchor file, each {"section"}, {"key", "value"}, {"text"}, or {"hex"} when it is not UTF-8.
Json AnchorLines(std::string_view file);
/// The file that such lines are. Throws std::runtime_error that names the line.
std::string AnchorText(const Json& lines);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_RECORD_FILE_H
