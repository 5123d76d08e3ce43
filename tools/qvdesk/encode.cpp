// "encode": JSON to the files that a desktop places for a recover.
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/host_file.h"
#include "tools/qvdesk/record_file.h"
#include "tools/qvdesk/section_file.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

struct Options {
  std::string form;
  std::filesystem::path input;
  std::filesystem::path output;
  bool for_incremental = false;
};

/// Far deeper than any form, and far from where a walk over the document would use up the stack.
constexpr int kDeepest = 16;

/// Throws Json::exception, or std::runtime_error when lists and objects lie too deep within each other.
Json Parse(const std::vector<std::uint8_t>& text, const std::filesystem::path& file) {
  return Json::parse(text, [&](int depth, Json::parse_event_t, const Json&) {
    if (depth <= kDeepest) return true;
    throw std::runtime_error(
        fmt::format("{}: lists and objects lie more than {} deep within each other", file.string(), kDeepest));
  });
}

/// The list under `name`, or the whole document when it is a list.
const Json& ListOf(const Json& document, const char* name, const std::filesystem::path& file) {
  if (document.is_array()) return document;
  if (document.is_object() && document.contains(name) && document[name].is_array()) return document[name];
  throw std::runtime_error(
      fmt::format("{}: expected a list under \"{}\", as \"show --format json\" prints it", file.string(), name));
}

/// Each record is filled up to `stride`; 0: the records are back to back.
std::vector<std::uint8_t> EncodeRecords(const Json& records, const qv::layout::RecordLayout& layout,
                                        std::uint32_t stride, const std::filesystem::path& file) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < records.size(); ++i) {
    try {
      AppendRecord(records[i], layout, bytes);
      bytes.resize(std::max<std::size_t>(bytes.size(), (i + 1) * stride));
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(fmt::format("{}: record {}: {}", file.string(), i + 1, error.what()));
    }
  }
  return bytes;
}

void WriteRecords(const Json& records, const FileForm& form, const Options& options) {
  const std::uint32_t stride = options.for_incremental ? form.incremental_stride : 0;
  WriteWholeFile(options.output, EncodeRecords(records, *form.layout, stride, options.input));
  fmt::print("{}: {} of the form \"{}\"\n", options.output.string(), CountOf(records.size(), "record"), form.name);
  if (form.incremental_stride == 0 || options.for_incremental || records.size() < 2) return;
  std::fflush(stdout);
  fmt::print(stderr,
             "qvdesk: note: an incremental recover looks for a record every {} bytes only and would pass over some of "
             "these; for one, encode with --for-incremental\n",
             form.incremental_stride);
}

void WriteLines(const Json& lines, const Options& options) {
  std::string text;
  try {
    text = AnchorText(lines);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(fmt::format("{}: {}", options.input.string(), error.what()));
  }
  WriteWholeFile(options.output, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  fmt::print("{}: {} bytes\n", options.output.string(), text.size());
}

void WriteSections(const Json& sections, const FileForm& form, const Options& options) {
  try {
    WriteWholeFile(options.output, SectionsFromJson(sections, form.module->config_sections));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(fmt::format("{}: {}", options.input.string(), error.what()));
  }
  fmt::print("{}: {} of the form \"{}\"\n", options.output.string(), CountOf(sections.size(), "section"), form.name);
}

void WriteBlock(const Json& document, const Options& options) {
  if (!document.is_object() || !document.contains("hex") || !document["hex"].is_string()) {
    throw std::runtime_error(
        fmt::format("{}: expected {{\"hex\": \"…\"}}, as \"show --format json\" prints it", options.input.string()));
  }
  const std::vector<std::uint8_t> bytes = FromHex(document["hex"].get<std::string>());
  WriteWholeFile(options.output, bytes);
  fmt::print("{}: {}\n", options.output.string(), CountOf(bytes.size(), "byte"));
}

int Encode(const Options& options) {
  const FileForm& form = ParseForm(options.form);
  if (form.kind == FileKind::kMessage) {
    throw UsageError(form.name + ": a message is a file of text; write it, and place it as it is.");
  }
  const std::vector<std::uint8_t> input = ReadWholeFile(options.input);
  try {
    const Json document = Parse(input, options.input);
    switch (form.kind) {
      case FileKind::kSections: WriteSections(ListOf(document, "sections", options.input), form, options); break;
      case FileKind::kBlock: WriteBlock(document, options); break;
      case FileKind::kAnchors: WriteLines(ListOf(document, "lines", options.input), options); break;
      default: WriteRecords(ListOf(document, "records", options.input), form, options);
    }
  } catch (const Json::exception& error) {
    throw std::runtime_error(fmt::format("{}: {}", options.input.string(), error.what()));
  }
  return kSuccess;
}

}  // namespace

void AddEncode(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "encode",
      "Makes a file that the handset reads from JSON, the inverse of \"show --format json\": exchange tables, "
      "configurations and change lists for a recover. Fields that are left out are zero, the counts of items follow "
      "from the items, "
      "an operation may be a word (new, modified, deleted), and what stands under \"reads\" is ignored.");
  auto options = std::make_shared<Options>();
  command->add_option("FORM", options->form, "A file name like schedule.tbl, or change-list, id-map, snapshot, anchors")
      ->required();
  command->add_option("IN", options->input, "The JSON file")->required();
  command->add_option("OUT", options->output, "The file to write")->required();
  command->add_flag("--for-incremental", options->for_incremental,
                    "Lay the records out for an incremental recover, which reads some tables (schedulegroup.tbl) in "
                    "large requests and applies only the first record of each: zeros fill up to the next one. Other "
                    "forms are the same in every mode.");
  command->footer(
      "Example:\n"
      "  echo '[{\"table\": 0, \"id\": 7, \"operation\": \"deleted\"}]' > changes.json\n"
      "  qvdesk encode change-list changes.json /tmp/phone/sync/schedcmd.tbl");
  command->callback([options, &status] { status = Encode(*options); });
}

}  // namespace qvdesk
