// "show": any file of the handset or the exchange directory, for people and for programs.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/qvdesk/block_value.h"
#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/host_file.h"
#include "tools/qvdesk/message_file.h"
#include "tools/qvdesk/record_file.h"
#include "tools/qvdesk/section_file.h"
#include "tools/qvdesk/telling_columns.h"
#include "tools/qvdesk/text.h"
#include "tools/qvdesk/text_table.h"

namespace qvdesk {
namespace {

using qv::layout::Field;
using qv::layout::RecordLayout;

struct Options {
  std::filesystem::path file;
  std::string form;
  std::string format = "table";
  bool all_fields = false;
  bool for_incremental = false;
};

/// Columns in which no record has anything are left out.
std::string RenderTable(const std::vector<Column>& columns, const RecordFile& file) {
  TextTable table;
  table.rows.resize(file.records.size());
  for (const Column& column : columns) {
    std::vector<std::string> cells;
    for (const RecordView& record : file.records) cells.push_back(column.text(record));
    if (std::ranges::all_of(cells, &std::string::empty)) continue;
    table.header.push_back(column.title);
    table.whole.push_back(column.whole);
    for (std::size_t i = 0; i < cells.size(); ++i) table.rows[i].push_back(cells[i]);
  }
  return table.header.empty() ? "" : table.Render(TerminalWidth());
}

std::string FieldLine(const std::string& name, const std::string& value) {
  return fmt::format("  {:<20} {}\n", name, Visible(value));
}

/// `prefix` stands before the names.
std::string FieldLines(const RecordLayout& layout, const RecordView& record, const std::string& prefix = "") {
  std::string text;
  for (const Field& field : layout.fields) {
    if (!IsShown(field.exchange) || !record.Has(field.exchange)) continue;
    text += FieldLine(prefix + field.name, ToText(field.exchange, record.fixed));
  }
  return text;
}

std::string ItemLines(const qv::layout::ItemRun& run, const std::vector<std::span<const std::uint8_t>>& items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const std::string name = fmt::format("{}[{}]", run.name, i);
    if (IsBlock(run)) {
      text += FieldLine(run.name, BlockText(run, items[i]));
    } else if (run.layout != nullptr) {
      text += FieldLines(*run.layout, {items[i], {}}, name + ".");
    } else {
      text += FieldLine(name, ToText(run.item, items[i]));
    }
  }
  return text;
}

std::string RenderAllFields(const RecordLayout& layout, const RecordFile& file) {
  std::string text;
  for (std::size_t i = 0; i < file.records.size(); ++i) {
    const RecordView& record = file.records[i];
    text += fmt::format("record {}\n", i + 1) + FieldLines(layout, record);
    for (std::size_t run = 0; run < record.items.size(); ++run) text += ItemLines(layout.items[run], record.items[run]);
    for (const auto& [name, words] : ReadableOf(layout, record)) text += FieldLine("reads: " + name, words);
  }
  return text;
}

std::string Dump(const Json& json) {
  return Visible(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

/// One record a line: long tables stay searchable, and differences of two dumps show as lines.
std::string RenderJson(const FileForm& form, const char* list, const std::vector<Json>& entries) {
  std::string text = fmt::format("{{\"form\": {}, \"{}\": [", Dump(form.name), list);
  for (std::size_t i = 0; i < entries.size(); ++i) text += fmt::format("{}\n  {}", i == 0 ? "" : ",", Dump(entries[i]));
  return text + (entries.empty() ? "]}\n" : "\n]}\n");
}

void ShowAnchors(const Options& options, const FileForm& form, const std::vector<std::uint8_t>& bytes) {
  const Json lines = AnchorLines({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  if (options.format == "json") {
    fmt::print("{}", RenderJson(form, "lines", {lines.begin(), lines.end()}));
    return;
  }
  TextTable table{.header = {"key", "anchor"}, .rows = {}};
  for (const Json& line : lines) {
    if (line.contains("key")) {
      table.rows.push_back({line["key"], line["value"]});
    } else {
      table.rows.push_back({AnchorText(Json::array({line})), ""});
    }
  }
  fmt::print("{}", table.Render(TerminalWidth()));
}

/// The program's status. Throws std::runtime_error when there is damage.
int EndWith(const std::optional<std::string>& damage, const Options& options, const FileForm& form) {
  if (!damage) return kSuccess;
  std::fflush(stdout);
  throw std::runtime_error(options.file.string() + ": " + *damage +
                           ". The file was cut off or damaged, or it is not of the form " + form.name + ".");
}

/// For people.
std::string Render(const Options& options, const FileForm& form, const RecordLayout& layout, const RecordFile& file) {
  if (options.all_fields) return RenderAllFields(layout, file);
  if (form.columns == nullptr) return RenderTable(TellingColumns(layout), file);
  return RenderTable(form.columns(layout, options.file.parent_path()), file);
}

int ShowRecords(const Options& options, const FileForm& form, const std::vector<std::uint8_t>& bytes) {
  const RecordLayout& layout = *form.layout;
  const RecordFile file = ParseRecords(layout, bytes, options.for_incremental ? form.incremental_stride : 0);
  if (options.format == "json") {
    std::vector<Json> records;
    for (const RecordView& record : file.records) records.push_back(ToJson(layout, record));
    fmt::print("{}", RenderJson(form, "records", records));
  } else {
    fmt::print("{}", Render(options, form, layout, file));
    fmt::print("{} of the form \"{}\"\n", CountOf(file.records.size(), "record"), form.name);
  }
  return EndWith(file.damage, options, form);
}

int ShowSections(const Options& options, const FileForm& form, const std::vector<std::uint8_t>& bytes) {
  const SectionLayouts layouts = form.module->config_sections;
  const SectionFile file = ParseSections(layouts, bytes);
  if (options.format == "json") {
    const Json sections = ToJson(layouts, file);
    fmt::print("{}", RenderJson(form, "sections", {sections.begin(), sections.end()}));
    return EndWith(file.damage, options, form);
  }
  for (std::size_t i = 0; i < layouts.size(); ++i) {
    const RecordFile& section = file.sections[i];
    fmt::print("{}: {}\n{}", layouts[i].name, CountOf(section.records.size(), "record"),
               Render(options, form, layouts[i], section));
  }
  return EndWith(file.damage, options, form);
}

void ShowBlock(const Options& options, const FileForm& form, const std::vector<std::uint8_t>& bytes) {
  if (options.format == "json") {
    fmt::print("{}\n", Dump({{"form", form.name}, {"hex", Hex(bytes)}}));
  } else {
    fmt::print("{}: {} that only the handset understands\n", form.name, CountOf(bytes.size(), "byte"));
  }
}

/// A text that is not UTF-8 as {"hex": "…"}.
void ShowMessage(const Options& options, const FileForm& form, const std::vector<std::uint8_t>& bytes) {
  const Message message = ParseMessage(bytes);
  if (options.format == "json") {
    Json header = Json::array();
    for (const auto& [name, value] : message.header) header.push_back({{"name", name}, {"value", value}});
    const auto* const text = reinterpret_cast<const std::uint8_t*>(message.text.data());
    const bool is_utf8 = ToUtf8(ToUtf16(message.text)) == message.text;
    const Json shown = is_utf8 ? Json(message.text) : Json({{"hex", Hex({text, message.text.size()})}});
    fmt::print("{}\n", Dump({{"form", form.name}, {"header", header}, {"text", shown}}));
    return;
  }
  fmt::print("{}{}, {}\n", RenderMessage(message), CountOf(message.header.size(), "header field"),
             CountOf(bytes.size(), "byte"));
}

int Show(const Options& options) {
  const FileForm* const recognised = options.form.empty() ? FindForm(options.file.filename().string()) : nullptr;
  if (options.form.empty() && recognised == nullptr) {
    throw UsageError(options.file.string() +
                     ": no file that handset and desktop exchange has this name. Say what it is with --as FORM; "
                     "\"qvdesk modules\" lists the files.");
  }
  const FileForm& form = recognised != nullptr ? *recognised : ParseForm(options.form);
  const std::vector<std::uint8_t> bytes = ReadWholeFile(options.file);
  switch (form.kind) {
    case FileKind::kSections: return ShowSections(options, form, bytes);
    case FileKind::kBlock: ShowBlock(options, form, bytes); return kSuccess;
    case FileKind::kMessage: ShowMessage(options, form, bytes); return kSuccess;
    case FileKind::kAnchors: ShowAnchors(options, form, bytes); return kSuccess;
    default: return ShowRecords(options, form, bytes);
  }
}

}  // namespace

void AddShow(CLI::App& program, int& status) {
  CLI::App* const command =
      program.add_subcommand("show",
                             "Shows a file of the exchange directory or one that the handset "
                             "keeps: an exchange table, a configuration, an e-mail, a change list, "
                             "an id map, a snapshot log or the anchor file. Of a damaged file it "
                             "shows what can be read, and then says where the "
                             "damage begins.");
  auto options = std::make_shared<Options>();
  command->add_option("FILE", options->file, "The file; its name tells the form")->required();
  command->add_option("--as", options->form,
                      "The form when the name does not tell it: a file name like schedule.tbl, "
                      "or change-list, id-map, snapshot, anchors");
  CLI::Option* const format = command->add_option("--format", options->format,
                                                  "table: the telling columns, cut to the terminal's width, and "
                                                  "beside contacts the sizes of their pictures when image.tbl lies in "
                                                  "the same directory; json: every field, as \"encode\" takes it");
  format->check(CLI::IsMember({"table", "json"}))->capture_default_str();
  command->add_flag("--all-fields", options->all_fields, "Instead of a table: every field of every record, one a line")
      ->excludes(format);
  command->add_flag("--for-incremental", options->for_incremental,
                    "Read the file as an incremental recover does, which looks for the records of some tables "
                    "(schedulegroup.tbl) further apart: what \"encode --for-incremental\" writes");
  command->footer(
      "Examples:\n  qvdesk show /tmp/phone/sync/schedule.tbl\n"
      "  qvdesk show saved.bin --as schedcmd.tbl --format json");
  command->callback([options, &status] { status = Show(*options); });
}

}  // namespace qvdesk
