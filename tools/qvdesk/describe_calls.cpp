// docs/CALLS.md.
#include <fmt/format.h>

#include "sync/procedure.h"
#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/describe.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::Argument;
using qv::EntryPoint;
using qv::RecordTableFacts;
using qv::SyncInfoForm;

constexpr char kIntroduction[] =
    "# Calls\n\n"
    "What the agent asks of each store library for its records, and how. Made by `qvdesk describe calls` from the\n"
    "agent's own tables; do not edit. [STORES.md](STORES.md) says what each call promises, and what else some stores\n"
    "offer; [FORMATS.md](FORMATS.md) has the fields of the records.\n\n";

const char* WordsFor(Argument argument) {
  switch (argument) {
    case Argument::kTable: return "u32 table";
    case Argument::kCount: return "u32 n";
    case Argument::kCountPlace: return "u32* count";
    case Argument::kEntries: return "entries";
    case Argument::kId: return "u32 id";
    case Argument::kIds: return "const u32* ids";
    case Argument::kRecords: return "records";
    case Argument::kNewId: return "u32* newId";
    case Argument::kGroup: return "u32 group";
    case Argument::kZero: return "u32 0";
    case Argument::kNone: break;
  }
  return "";
}

std::string SuccessOf(const EntryPoint& entry_point) {
  const auto [least, most] = entry_point.success;
  return least == most ? std::to_string(least) : fmt::format("{} to {}", least, most);
}

std::string Row(const char* call, const EntryPoint& entry_point, const std::string& answer) {
  if (entry_point.name == nullptr) return "";
  std::string arguments;
  for (const Argument argument : entry_point.arguments) {
    if (argument == Argument::kNone) continue;
    arguments += (arguments.empty() ? "" : ", ") + std::string(WordsFor(argument));
  }
  return fmt::format("| {} | `{}` | ({}) | {} |\n", call, ToUtf8(entry_point.name), arguments, answer);
}

std::string CallsOf(const qv::TableCalls& calls) {
  const std::string count = calls.count.Takes(Argument::kCountPlace) ? SuccessOf(calls.count) : "the count";
  return Row("count", calls.count, count) + Row("list", calls.list, SuccessOf(calls.list)) +
         Row("read", calls.read, SuccessOf(calls.read)) + Row("insert", calls.insert, SuccessOf(calls.insert)) +
         Row("update", calls.update, SuccessOf(calls.update));
}

const char* TimeOf(SyncInfoForm::Time time) {
  switch (time) {
    case SyncInfoForm::Time::kFileTime: return "a FILETIME, the low word first";
    case SyncInfoForm::Time::kSystemTime: return "a SYSTEMTIME";
    case SyncInfoForm::Time::kSixWords: return "year, month, day, hour, minute and second as u16";
    case SyncInfoForm::Time::kText: return "14 digits and a NUL in UTF-16LE";
  }
  return "";
}

/// How much is asked for in one call.
std::string Batch(const RecordTableFacts& facts) {
  if (facts.read_batch == 0) return "all records in one read";
  std::string text = fmt::format("at most {} a read", CountOf(facts.read_batch, "record"));
  if (facts.read_room > facts.read_batch) text += fmt::format(", into room for {}", facts.read_room);
  return text;
}

std::string Tables(const qv::ModuleFacts& facts) {
  std::string text;
  for (std::size_t i = 0; i < facts.tables.size(); ++i) {
    const qv::layout::RecordLayout& layout = *facts.names.tables[i].layout;
    const std::string record =
        layout.store_size != 0 ? fmt::format(" record of {} bytes", layout.store_size) : ", of any length";
    text += fmt::format("- Table {}: {}{}; {}.\n", i, layout.name, record, Batch(facts.tables[i]));
  }
  return text;
}

std::string Heading(const Module& module) {
  return fmt::format("## {}: {}\n\n", ToUtf8(module.names.store_library), RowOf(module.id).name);
}

std::string ByFacts(const qv::ModuleFacts& facts) {
  const SyncInfoForm& form = facts.tables.front().sync_info;
  std::string text = fmt::format(
      "An entry of the list has {} bytes: u32 id, and at {} {}.\n\n{}\n"
      "| Call | Function | Arguments | Success |\n|---|---|---|---|\n",
      form.entry_size, form.time_offset, TimeOf(form.time), Tables(facts));
  const char16_t* last_list = nullptr;
  for (const RecordTableFacts& table : facts.tables) {
    if (table.calls.list.name != last_list) text += CallsOf(table.calls);
    last_list = table.calls.list.name;
  }
  text += Row("delete", facts.erase, SuccessOf(facts.erase));
  return text + Row("delete all", facts.erase_all, SuccessOf(facts.erase_all));
}

/// Of a module without facts.
std::string InWords(const Module& module) {
  std::string text = fmt::format("{}\n\n", module.own_calls.introduction);
  for (const qv::TableNames& table : module.names.tables) {
    text += fmt::format("- {}: record of {} bytes.\n", table.layout->name, table.layout->store_size);
  }
  text += "\n| When | Function | Arguments | Success |\n|---|---|---|---|\n";
  for (const CallWords& call : module.own_calls.calls) {
    const std::string function = call.function != nullptr ? call.function : ToUtf8(call.entry_point);
    text += fmt::format("| {} | `{}` | ({}) | {} |\n", call.when, function, call.arguments, call.success);
  }
  return text;
}

}  // namespace

std::string DescribeCalls() {
  std::string text = kIntroduction;
  for (const Module& module : Modules()) {
    text += Heading(module) + (module.facts != nullptr ? ByFacts(*module.facts) : InWords(module)) + "\n";
  }
  text.pop_back();
  return text;
}

}  // namespace qvdesk
