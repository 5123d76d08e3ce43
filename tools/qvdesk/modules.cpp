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

std::vector<std::string> Row(const qv::ModuleRow& module) {
  const BuiltModule& built = BuiltModuleOf(module.id);
  std::string files;
  for (const FileForm& form : FileForms()) {
    if (form.module == &built) files += (files.empty() ? "" : ", ") + form.name;
  }
  const char16_t* const anchor_key = built.names.anchor_key;
  return {std::to_string(module.id),
          module.name,
          module.data,
          ToUtf8(built.names.store_library),
          anchor_key == nullptr ? "" : ToUtf8(anchor_key),
          files};
}

int ListModules() {
  TextTable table{.header = {"number", "name", "data", "store library", "anchor key", "files"}, .rows = {}};
  for (const qv::ModuleRow& module : qv::kModuleTable) table.rows.push_back(Row(module));
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
