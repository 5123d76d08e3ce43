// Ids, dates, texts and items as any form has them, and choices for contacts and cards, which have too many texts.
#include "tools/qvdesk/telling_columns.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "modules/contacts/contacts.h"
#include "modules/mail/mail.h"
#include "tools/qvdesk/block_value.h"
#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/picture_table.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::layout::Field;
using qv::layout::Form;
using qv::layout::RecordLayout;

/// Forms of few fields are shown whole.
constexpr std::size_t kFewFields = 4;
/// A beginning and an end; more dates would leave the texts no room.
constexpr std::size_t kDatesShown = 2;

/// "2026-03-04" from the fields prefix_year, prefix_month and prefix_day.
std::string DayOf(const RecordLayout& layout, const RecordView& record, const std::string& prefix) {
  const auto part = [&](const char* name) { return NumberOf(layout, record, prefix + name); };
  const auto year = part("_year");
  if (!year || *year == 0) return "";
  return fmt::format("{:04}-{:02}-{:02}", *year, part("_month").value_or(0), part("_day").value_or(0));
}

/// "2026-03-04 10:00"; the time only where the form has one.
std::string DateOf(const RecordLayout& layout, const RecordView& record, const std::string& prefix) {
  const std::string day = DayOf(layout, record, prefix);
  const auto hour = NumberOf(layout, record, prefix + "_hour");
  if (day.empty() || !hour) return day;
  return fmt::format("{} {:02}:{:02}", day, *hour, NumberOf(layout, record, prefix + "_minute").value_or(0));
}

std::string TextOf(const Field& field, const RecordView& record) {
  return record.Has(field.exchange) ? ToText(field.exchange, record.fixed) : "";
}

Column FieldColumn(const Field& field) {
  const bool is_text = field.exchange.form == Form::kText || field.exchange.form == Form::kRawText;
  return {field.name, [&field](const RecordView& record) { return TextOf(field, record); }, !is_text};
}

/// Numbers as they are; of bytes how many items there are; a block as its text or its length.
Column ItemsColumn(const RecordLayout& layout, std::size_t position) {
  const qv::layout::ItemRun& run = layout.items[position];
  if (IsBlock(run)) {
    return {run.name,
            [&run, position](const RecordView& record) {
              const bool is_there = position < record.items.size() && !record.items[position].empty();
              return is_there ? BlockText(run, record.items[position].front()) : std::string();
            },
            false};
  }
  return {fmt::format("{}s", run.name),
          [&run, position](const RecordView& record) {
            if (position >= record.items.size() || record.items[position].empty()) return std::string();
            const auto& items = record.items[position];
            if (!IsNumeric(run.item.form)) return std::to_string(items.size());
            std::string numbers;
            for (const auto& item : items) numbers += (numbers.empty() ? "" : ", ") + ToText(run.item, item);
            return numbers;
          },
          false};
}

Column ReadableColumn(const RecordLayout& layout, const char* name) {
  return {fmt::format("reads: {}", name), [&layout, name](const RecordView& record) {
            for (const auto& [key, words] : ReadableOf(layout, record)) {
              if (key == name) return words;
            }
            return std::string();
          }};
}

}  // namespace

std::vector<Column> TellingColumns(const RecordLayout& layout) {
  std::vector<Column> ids, dates, texts, others;
  const auto shown = std::ranges::count_if(layout.fields, [](const Field& field) { return IsShown(field.exchange); });
  for (const Field& field : layout.fields) {
    if (!IsShown(field.exchange)) continue;
    const std::string name = field.name;
    if (static_cast<std::size_t>(shown) <= kFewFields || name.ends_with("_id")) {
      ids.push_back(FieldColumn(field));
      ids.back().whole = true;
    } else if (name.ends_with("_year")) {
      const std::string prefix = name.substr(0, name.rfind('_'));
      dates.push_back({prefix, [&layout, prefix](const RecordView& record) { return DateOf(layout, record, prefix); }});
    } else if (field.exchange.form == Form::kTimeNumbers) {
      dates.push_back(FieldColumn(field));
    } else if (field.exchange.form == Form::kText || field.exchange.form == Form::kRawText) {
      texts.push_back(FieldColumn(field));
    }
  }
  for (std::size_t run = 0; run < layout.items.size(); ++run) others.push_back(ItemsColumn(layout, run));
  for (const char* const name : {"modified", "operation"}) others.push_back(ReadableColumn(layout, name));
  if (dates.size() > kDatesShown) dates.resize(kDatesShown);
  for (std::vector<Column>* more : {&dates, &texts, &others}) ids.insert(ids.end(), more->begin(), more->end());
  return ids;
}

// Contacts.

namespace {

/// The number that the contact calls its default, or else the first one that it has: what a recover makes the default.
std::string DefaultNumber(const RecordLayout& layout, const RecordView& record) {
  const auto number = [&](std::uint32_t i) {
    const Field* const field = FindField(layout, fmt::format("number_{}", i));
    return field == nullptr ? "" : TextOf(*field, record);
  };
  const std::uint32_t chosen = NumberOf(layout, record, "default_number").value_or(0);
  if (chosen != 0) return number(chosen);
  for (std::uint32_t i = 1; i <= qv::contacts::kNumbers; ++i) {
    if (const std::string text = number(i); !text.empty()) return text;
  }
  return "";
}

std::string PictureIdOf(const RecordLayout& layout, const RecordView& record) {
  const std::uint32_t id = NumberOf(layout, record, "picture_id").value_or(0);
  return id == 0 ? "" : std::to_string(id);
}

/// How many bytes each contact's picture has, of those in the image table beside the contacts; nothing without one.
Column PictureColumn(const RecordLayout& layout, const std::filesystem::path& directory) {
  const std::filesystem::path file = directory / ToUtf8(qv::contacts::kPictureFile);
  const bool there = std::filesystem::exists(file);
  std::map<std::uint32_t, std::string> sizes;
  if (there) {
    for (const Picture& picture : ReadPictureTable(file).pictures) {
      sizes.emplace(picture.id, CountOf(picture.bytes.size(), "byte"));
    }
  }
  return {"picture", [&layout, there, sizes](const RecordView& record) -> std::string {
            const std::uint32_t id = NumberOf(layout, record, "picture_id").value_or(0);
            if (!there || id == 0) return "";
            const auto size = sizes.find(id);
            return size == sizes.end() ? "not there" : size->second;
          }};
}

}  // namespace

std::vector<Column> ContactColumns(const RecordLayout& layout, const std::filesystem::path& directory) {
  const auto field = [&](const char* name) { return FieldColumn(*FindField(layout, name)); };
  return {field("contact_id"),
          field("name"),
          {"default number", [&layout](const RecordView& record) { return DefaultNumber(layout, record); }},
          field("text_860"),
          field("first_address_street"),
          {"first_date", [&layout](const RecordView& record) { return DayOf(layout, record, "first_date"); }},
          {"picture_id", [&layout](const RecordView& record) { return PictureIdOf(layout, record); }},
          PictureColumn(layout, directory)};
}

/// Name, company, position, number and address.
std::vector<Column> CardColumns(const RecordLayout& layout, const std::filesystem::path&) {
  std::vector<Column> columns;
  for (const char* const name : {"card_id", "time", "text_1", "text_3", "text_4", "text_7", "text_8"}) {
    columns.push_back(FieldColumn(*FindField(layout, name)));
  }
  return columns;
}

std::vector<Column> UnifiedMailColumns(const RecordLayout& layout, const std::filesystem::path&) {
  std::vector<Column> columns = TellingColumns(layout);
  columns.insert(columns.begin() + 1, {"table", [&layout](const RecordView& record) -> std::string {
                                         const auto table = NumberOf(layout, record, "table");
                                         if (!table) return "";
                                         if (*table > 1) return std::to_string(*table);
                                         return *table == 0 ? "received" : "sent";
                                       }});
  return columns;
}

/// Ids, the times and the texts by which a handset tells messages apart, and how many bytes the message itself has.
std::vector<Column> MessageColumns(const RecordLayout& layout, const std::filesystem::path& directory) {
  std::vector<Column> columns;
  for (const char* const name : {"message_id", "account_id", "folder_id", "date_1", "text_4", "text_5"}) {
    columns.push_back(FieldColumn(*FindField(layout, name)));
  }
  columns.push_back({"file", [&layout, directory](const RecordView& record) -> std::string {
                       const auto id = NumberOf(layout, record, "message_id");
                       if (!id) return "";
                       const auto file = directory / NumberedName(qv::mail::kMessageFile, std::to_string(*id));
                       if (!std::filesystem::exists(file)) return "not there";
                       return CountOf(static_cast<std::size_t>(std::filesystem::file_size(file)), "byte");
                     }});
  return columns;
}

}  // namespace qvdesk
