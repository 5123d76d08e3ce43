// docs/FORMATS.md.
#include <fmt/format.h>

#include <cstddef>

#include "qv_rapi.h"
#include "sync/anchor_file.h"
#include "sync/file_forms.h"
#include "tools/qvdesk/block_value.h"
#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/describe.h"
#include "tools/qvdesk/section_file.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::layout::Carried;
using qv::layout::Field;
using qv::layout::Form;
using qv::layout::ItemRun;
using qv::layout::RecordLayout;
using qv::layout::Slot;

constexpr char kIntroduction[] =
    "# Formats\n\n"
    "Every file and block that passes between desktop and handset, and the files that the handset keeps to itself.\n"
    "Made by `qvdesk describe formats` from the agent's own tables; do not edit. `qvdesk show` reads the files.\n\n"
    "Offsets and widths are in bytes. No form has padding of its own: what is not used is listed as such.\n\n"
    "| Type | Meaning |\n|---|---|\n"
    "| number | unsigned and little-endian; where the other side has less room it keeps the low bits |\n"
    "| bits a..b | bits a down to b of such a number, bit 0 being the lowest; other fields may share the number |\n"
    "| truth | a number of which only passes on whether it is zero: the other side has 1 for any other value |\n"
    "| text | UTF-16LE, ends with a NUL and is filled up with zeros; what is too long for its room is cut off. The "
    "store "
    "may have it in the system's 8-bit code page, up to the first character without a counterpart |\n"
    "| raw text | UTF-16LE up to its NUL, but passed on as bytes: what lies behind the NUL goes along |\n"
    "| bytes | passed on as they stand |\n"
    "| time | six numbers of 32 bits: year, month, day, hour, minute, second; or seven, the last the milliseconds. The "
    "store has them as a FILETIME, which is 0 for a time that does not exist; six as a SYSTEMTIME, without the day of "
    "the "
    "week, whether or not there is such a time; or six as 14 digits of text "
    "(`YYYYMMDDhhmmss` and a NUL, UTF-16LE); a text that is shorter or has a character that is no digit gives six "
    "zeros, and numbers too wide for their place are cut to the 14 characters |\n"
    "| unused | written as zero and never read |\n\n"
    "Behind a type may stand\n\n"
    "- \"not read by a recover\": an export writes it; what it says a recover takes from other fields, or does "
    "without;\n"
    "- \"zero after an export\": only a recover reads it;\n"
    "- \"by a rule\": it follows from other fields, or they from it; the rules stand below the table;\n"
    "- \"when zero all after it is zero\": while this field is zero, the fields after it in the table are not passed\n"
    "  on in either direction, and the other side has zeros there.\n\n"
    "\"In the store record\" is the offset of the same value in the store library's record, and its bits where the\n"
    "value shares a number with others; \"signed\" is a number that keeps its sign in the file, \"8-bit\" a text in "
    "the\n"
    "system's code page, which passes on up to the first character without a counterpart. A row without an offset is\n"
    "in the store record only, where its width is.\n\n";

/// A member of a structure of include/qv_rapi.h, whose place the compiler says.
#define QV_MEMBER(structure, member, type, meaning)                                                                  \
  fmt::format("| {} | {} | {} | {} | {} |\n", offsetof(structure, member), sizeof(structure::member), type, #member, \
              meaning)

constexpr char kMemberHeader[] = "| Offset | Width | Type | Name | Meaning |\n|---:|---:|---|---|---|\n";

std::string Blocks() {
  using qv::RequestRecord;
  using qv::ResultRecord;
  using qv::RunningRecord;
  std::string text =
      "## Blocks of a call\n\n### Request\n\nWhat the desktop hands to `fnQV_ExportTabs` and `fnQV_RecovTabs`.\n\n";
  text += kMemberHeader;
  text += QV_MEMBER(RequestRecord, module_id, "number", "1 to 16; any other id does nothing and succeeds");
  text += QV_MEMBER(RequestRecord, mode, "number",
                    "compared as signed: 3 incremental, 2 replace, any other below 4 full, 4 and above plain copy");
  text += QV_MEMBER(RequestRecord, anchor, "text", "the last anchor received; read in incremental exports only");
  text +=
      QV_MEMBER(RequestRecord, directory, "text",
                "the exchange directory on the handset, without a backslash at its end; may be cut off behind its NUL");
  text += fmt::format("\n### Result\n\nWhat they write to the stream, {} bytes in one call.\n\n", sizeof(ResultRecord));
  text += kMemberHeader;
  text += QV_MEMBER(ResultRecord, code, "number", "0, or the result with the direction's flag; see RESULTS.md");
  text += QV_MEMBER(ResultRecord, mode, "number",
                    "the mode the module ran in: an incremental export that could not be honoured reads 1");
  text +=
      QV_MEMBER(ResultRecord, anchor, "text",
                "the anchor that the module moved to, in a mode below 4; the request's when it moved none: in other "
                "modes, for modules without an anchor (6, 14 to 16) and unknown ids, and where the run failed before");
  text += fmt::format("\n### Running\n\nWhat `fnQV_CheckMutex` writes, {} bytes.\n\n", sizeof(RunningRecord));
  text += kMemberHeader;
  text += QV_MEMBER(RunningRecord, running, "number", "1 when the program runs, else 0");
  text += QV_MEMBER(RunningRecord, reserved, "unused", "");
  return text + "\n";
}

#undef QV_MEMBER

bool IsNamed(const Slot& slot) {
  return slot.form != Form::kNone && slot.form != Form::kUnused;
}

std::string StorePlace(const Slot& slot) {
  if (!IsNamed(slot)) return "";
  std::string text = std::to_string(slot.offset);
  if (slot.width != 0)
    text += fmt::format(", bits {}..{} of {} bytes", slot.shift + slot.width - 1, slot.shift, slot.size);
  if (slot.form == Form::kSigned) text += ", signed";
  if (slot.form == Form::kNarrowText) text += ", 8-bit";
  return text;
}

/// `slot`: the one that the row is about.
std::string TypeOf(const Field& field, const Slot& slot) {
  std::string type = NameOf(slot.form);
  if (slot.width != 0) type += fmt::format(" {}..{}", slot.shift + slot.width - 1, slot.shift);
  switch (field.carried) {
    case Carried::kBothWays: break;
    case Carried::kRepeated:
    case Carried::kExportOnly: type += ", not read by a recover"; break;
    case Carried::kRecoverOnly: type += ", zero after an export"; break;
    case Carried::kByModule: type += ", by a rule"; break;
  }
  if (field.ends_when_zero) type += ", when zero all after it is zero";
  return type;
}

std::string Row(const Field& field) {
  const bool in_file = field.exchange.form != Form::kNone;
  const Slot& slot = in_file ? field.exchange : field.store;
  return fmt::format("| {} | {} | {} | {} |", in_file ? std::to_string(slot.offset) : "", slot.size,
                     TypeOf(field, slot), field.name);
}

/// The fields of the exchange side, and of the store record those that only it has; with the offsets in the store
/// record where the form has one.
std::string FieldTable(const RecordLayout& layout) {
  const bool in_store = layout.store_size != 0;
  std::string text = in_store ? "| Offset | Width | Type | Name | In the store record |\n|---:|---:|---|---|---|\n"
                              : "| Offset | Width | Type | Name |\n|---:|---:|---|---|\n";
  for (const Field& field : layout.fields) {
    if (field.exchange.form == Form::kNone && !IsNamed(field.store)) continue;
    text += Row(field) + (in_store ? fmt::format(" {} |\n", StorePlace(field.store)) : "\n");
  }
  return text;
}

const char* TypeOf(const ItemRun& run) {
  if (run.layout != nullptr) return "fields, below";
  if (!IsBlock(run)) return NameOf(run.item.form);
  return run.item.size == 1 ? "one block of bytes" : "one block of characters, UTF-16LE";
}

std::string CountColumns(const ItemRun& run) {
  if (run.is_counted_in_front) return "in front of them | 4";
  return fmt::format("{} | {}{}", run.count.offset, run.count.size,
                     run.is_signed ? ", signed: below 0 is as good as 0" : "");
}

std::string Items(const RecordLayout& layout) {
  if (layout.items.empty()) return "";
  std::string text =
      "\nItems follow the fixed part, in this order:\n\n"
      "| Items | Type | Bytes each | Count at | Count's width | At most | First in the store record |\n"
      "|---|---|---:|---:|---:|---:|---:|\n";
  for (const ItemRun& run : layout.items) {
    text += fmt::format("| {} | {} | {} | {} | {} | {} |\n", run.name, TypeOf(run), run.item.size, CountColumns(run),
                        run.slots == qv::layout::kAnyNumber ? "any number" : std::to_string(run.slots),
                        LiesInRecord(run) ? std::to_string(run.store_offset) : "");
  }
  for (const ItemRun& run : layout.items) {
    if (run.layout == nullptr) continue;
    text +=
        fmt::format("\nAn item {}, of {} bytes, in the store {}:\n\n", run.name, run.item.size, run.layout->store_size);
    text += FieldTable(*run.layout);
  }
  return text;
}

std::string NameAt(const RecordLayout& layout, const Slot& exchange) {
  for (const Field& field : layout.fields) {
    if (field.exchange.form == exchange.form && field.exchange.offset == exchange.offset) return field.name;
  }
  return "";
}

/// What the procedure does with a record besides converting it.
std::string ProcedureRules(const Module& module, const RecordLayout* layout) {
  if (module.facts == nullptr) return "";
  std::string text;
  for (std::size_t i = 0; i < module.facts->tables.size(); ++i) {
    const qv::RecordTableFacts& facts = module.facts->tables[i];
    if (module.names.tables[i].layout != layout) continue;
    if (facts.listed_id.form != Form::kNone) {
      text += fmt::format("- {}: an export writes the id that the store listed the record under.\n",
                          NameAt(*layout, facts.listed_id));
    }
    if (facts.group_reference.form != Form::kNone) {
      text += "- A recover points the record at the id that its group received.\n";
    }
  }
  return text;
}

/// What the fields' table refers to by "by a rule", and what else no table says.
std::string Rules(const Module& module, const RecordLayout* layout) {
  std::string text = ProcedureRules(module, layout);
  for (const qv::RuleWords& rule : module.rules) {
    if (rule.layout == layout) text += fmt::format("- {}\n", rule.rule);
  }
  return text.empty() ? "" : "\nRules:\n\n" + text;
}

std::string Table(const FileForm& form) {
  const RecordLayout& layout = *form.layout;
  std::string text = fmt::format(
      "### {}\n\nExchange table of \"{}\" records: back to back, without header or count. The fixed part has {} "
      "bytes{}."
      "\n\n",
      form.name, layout.name, layout.exchange_size,
      layout.store_size != 0 ? fmt::format(", the store's record {}", layout.store_size) : "");
  if (form.incremental_stride != 0) {
    text += fmt::format(
        "In an incremental recover each record begins {} bytes after the one before; what lies between is not "
        "read.\n\n",
        form.incremental_stride);
  }
  return text + FieldTable(layout) + Items(layout) + Rules(*form.module, form.layout) + "\n";
}

/// Each kind of record once. In the store's structure they lie as in the file.
std::string WholeFile(const FileForm& form) {
  std::string text = fmt::format(
      "### {}\n\nOne record, always whole: {} bytes, without header or count, in the parts below, whose fields "
      "`qvdesk show` numbers.\n",
      form.name, form.layout->exchange_size);
  std::uint32_t in_file = 0;
  std::uint32_t in_store = 0;
  for (const RecordsOfAFile& part : form.module->whole_file) {
    const RecordLayout& layout = *part.layout;
    text += fmt::format(
        "\n#### {}\n\n{} of {} bytes each, the first at {}; in the store's structure {} bytes each, the first at "
        "{}.\n\n",
        layout.name, part.count, layout.exchange_size, in_file, layout.store_size, in_store);
    text += FieldTable(layout) + Rules(*form.module, &layout);
    in_file += part.count * layout.exchange_size;
    in_store += part.count * layout.store_size;
  }
  return text + "\n";
}

std::string Sections(const FileForm& form) {
  const SectionLayouts layouts = form.module->config_sections;
  std::string text = fmt::format(
      "### {}\n\nThe configuration: a header of {} bytes, then the records of each section back to back, section by "
      "section. The header has for each section 8 bytes: how many records it has, a signed number of 4 bytes, and 4 "
      "unused. A record that is not whole ends its section; a file that is shorter than its header changes nothing.\n",
      form.name, SectionHeaderSize(layouts));
  for (const RecordLayout& layout : layouts) {
    text += fmt::format("\n#### {}\n\nA record has {} bytes, the store's {}.\n\n", layout.name, layout.exchange_size,
                        layout.store_size);
    text += FieldTable(layout);
  }
  return text + "\n";
}

std::string Block(const FileForm& form) {
  return fmt::format("### {}\n\nThe configuration, as one block: what it says only the store knows.\n\n", form.name);
}

std::string Message(const FileForm& form) {
  return fmt::format(
      "### {}\n\nMessage number N, as it stands on the handset: RFC 5322, a header in lines, an empty line, the "
      "text.\n\n",
      form.name);
}

std::string FormOf(const FileForm& form) {
  switch (form.kind) {
    case FileKind::kMessage: return Message(form);
    case FileKind::kTable: return form.module->whole_file.empty() ? Table(form) : WholeFile(form);
    case FileKind::kSections: return Sections(form);
    case FileKind::kBlock: return Block(form);
    // Their form is every module's; here stands what this one makes of it.
    case FileKind::kChangeList:
    case FileKind::kIdMap: {
      const std::string rules = Rules(*form.module, form.layout);
      return rules.empty() ? "" : fmt::format("### {}\n{}\n", form.name, rules);
    }
    default: return "";
  }
}

std::string SectionOf(const Module& module) {
  const qv::ModuleRow& row = RowOf(module.id);
  const std::string anchor = module.names.anchor_key == nullptr
                                 ? "no anchor"
                                 : fmt::format("anchor key `{}`", ToUtf8(module.names.anchor_key));
  std::string text =
      fmt::format("## Module {}: {}\n\nStore library `{}`, {}.\n\n| File | Where | Form |\n|---|---|---|\n", row.id,
                  row.name, ToUtf8(module.names.store_library), anchor);
  for (const FileForm& form : FileForms()) {
    if (form.module != &module) continue;
    const bool exchanged = form.path.find('\\') == std::string::npos;
    text += fmt::format("| {} | {} | {} |\n", form.name, exchanged ? "the exchange directory" : "`" + form.path + "`",
                        NameOf(form.kind));
  }
  text += "\n";
  for (const FileForm& form : FileForms()) {
    if (form.module == &module) text += FormOf(form);
  }
  return text;
}

const char* Purpose(FileKind kind) {
  switch (kind) {
    case FileKind::kChangeList:
      return "What changed, in an incremental export, or what is to be done, in an incremental recover. Table 0 holds "
             "a module's records, table 1 their groups. The operation is 1 new, 2 modified, 3 deleted. "
             "An entry that is not whole is ignored.";
    case FileKind::kIdMap:
      return "Under which id a recover put each record that it inserted, in the order of insertion; tables are "
             "numbered as in change lists. The desktop must from then on use the handset's ids.";
    case FileKind::kSnapshot:
      return "What a table of the store held at the end of the last synchronisation, in the store's order. Only the "
             "handset reads it. The time is a FILETIME: 100 ns since 1601, UTC.";
    default: return "";
  }
}

std::string Bookkeeping() {
  std::string text = "## Bookkeeping files\n\nEntries of one size back to back, the same in every module.\n\n";
  for (const FileForm& form : FileForms()) {
    if (form.module != nullptr || form.layout == nullptr) continue;
    text += fmt::format("### {}\n\n{}\nAn entry has {} bytes.\n\n", form.name, Purpose(form.kind),
                        form.layout->exchange_size);
    text += FieldTable(*form.layout) + "\n";
  }
  return text;
}

std::string Anchors() {
  return fmt::format(
      "## The anchor file\n\n"
      "`{}` holds the anchor that each module last handed out. 8-bit text in lines that end with CR LF, none after\n"
      "the last: the section `[{}]`, then `KEY = anchor` for each module. An anchor is the local time as year,\n"
      "month, day, hour, minute and second without leading zeros; anchors are compared as whole strings only. A\n"
      "module that was never synchronised has the anchor `{}`. Only the first 2000 bytes are used.\n",
      ToUtf8(qv::kAnchorFile), ToUtf8(qv::kAnchorSection), ToUtf8(qv::kNeverSynchronised));
}

}  // namespace

std::string DescribeFormats() {
  std::string text = kIntroduction + Blocks();
  for (const Module& module : Modules()) text += SectionOf(module);
  return text + Bookkeeping() + Anchors();
}

}  // namespace qvdesk
