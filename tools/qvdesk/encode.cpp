// "encode": JSON to the files that a desktop places for a recover.
#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/record_file.h"

namespace qvdesk {
namespace {

struct Options {
  std::string form;
  std::filesystem::path input;
  std::filesystem::path output;
};

/// The list under `name`, or the whole document when it is a list.
Json ListOf(const Json& document, const char* name, const std::filesystem::path& file) {
  if (document.is_array()) return document;
  if (document.is_object() && document.contains(name) && document[name].is_array()) return document[name];
  throw std::runtime_error(
      fmt::format("{}: expected a list under \"{}\", as \"show --format json\" prints it", file.string(), name));
}

std::vector<std::uint8_t> EncodeRecords(const Json& records, const qv::layout::RecordLayout& layout,
                                        const std::filesystem::path& file) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < records.size(); ++i) {
    try {
      AppendRecord(records[i], layout, bytes);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(fmt::format("{}: record {}: {}", file.string(), i + 1, error.what()));
    }
  }
  return bytes;
}

int Encode(const Options& options) {
  const FileForm& form = ParseForm(options.form);
  const std::vector<std::uint8_t> input = ReadWholeFile(options.input);
  Json document;
  try {
    document = Json::parse(input);
    if (form.layout != nullptr) {
      const Json records = ListOf(document, "records", options.input);
      WriteWholeFile(options.output, EncodeRecords(records, *form.layout, options.input));
      fmt::print("{}: {} records of the form \"{}\"\n", options.output.string(), records.size(), form.layout->name);
    } else {
      const std::string text = AnchorText(ListOf(document, "lines", options.input));
      WriteWholeFile(options.output, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
      fmt::print("{}: {} bytes\n", options.output.string(), text.size());
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
      "Makes a file that the handset reads from JSON, the inverse of \"show --format json\": exchange tables and "
      "change lists for a recover. Fields that are left out are zero, the counts of items follow from the items, "
      "an operation may be a word (new, modified, deleted), and what stands under \"reads\" is ignored.");
  auto options = std::make_shared<Options>();
  command->add_option("FORM", options->form, "A file name like schedule.tbl, or change-list, id-map, snapshot, anchors")
      ->required();
  command->add_option("IN", options->input, "The JSON file")->required();
  command->add_option("OUT", options->output, "The file to write")->required();
  command->footer(
      "Example:\n"
      "  echo '[{\"table\": 0, \"id\": 7, \"operation\": \"deleted\"}]' > changes.json\n"
      "  qvdesk encode change-list changes.json /tmp/phone/sync/schedcmd.tbl");
  command->callback([options, &status] { status = Encode(*options); });
}

}  // namespace qvdesk
