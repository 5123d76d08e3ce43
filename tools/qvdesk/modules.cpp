// "modules": what kinds of data there are, and what is known of each.
#include <fmt/format.h>

#include <memory>
#include <string>

#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/text.h"
#include "tools/qvdesk/text_table.h"

namespace qvdesk {
namespace {

std::vector<std::string> Row(const qv::ModuleRow& row) {
  const Module& module = ModuleOf(row.id);
  std::string files;
  for (const FileForm& form : FileForms()) {
    if (form.module == &module) files += (files.empty() ? "" : ", ") + form.name;
  }
  const char16_t* const anchor_key = module.names.anchor_key;
  return {std::to_string(row.id),
          row.name,
          row.data,
          ToUtf8(module.names.store_library),
          anchor_key == nullptr ? "" : ToUtf8(anchor_key),
          files};
}

int ListModules() {
  TextTable table{.header = {"number", "name", "data", "store library", "anchor key", "files"}, .rows = {}};
  for (const qv::ModuleRow& row : qv::kModuleTable) table.rows.push_back(Row(row));
  fmt::print("{}", table.Render(std::string::npos));  // A file name that is cut tells nobody anything.
  return kSuccess;
}

}  // namespace

void AddModules(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "modules",
      "Lists the sixteen kinds of data: number and name for \"export\" and \"recover\", what the data is, the store "
      "library it needs on the handset, its key in the anchor file and its files.");
  command->footer("Example:\n  qvdesk modules");
  command->callback([&status] { status = ListModules(); });
}

}  // namespace qvdesk
