// The layout dump: one line a field, so that a change of a layout is a change of a line.
#include <fmt/format.h>

#include <set>

#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/describe.h"

namespace qvdesk {
namespace {

using qv::layout::Carried;
using qv::layout::Field;
using qv::layout::Form;
using qv::layout::ItemRun;
using qv::layout::RecordLayout;
using qv::layout::Slot;

std::string Describe(const Slot& slot) {
  if (slot.form == Form::kNone) return "-";
  std::string text = fmt::format("{} {}+{}", NameOf(slot.form), slot.offset, slot.size);
  if (slot.width != 0) text += fmt::format(" bits {}..{}", slot.shift + slot.width - 1, slot.shift);
  return text;
}

std::string Describe(const Field& field) {
  std::string text = fmt::format("  {:<20} store {:<24} exchange {}", *field.name == '\0' ? "(unused)" : field.name,
                                 Describe(field.store), Describe(field.exchange));
  switch (field.carried) {
    case Carried::kBothWays: break;
    case Carried::kRepeated: text += ", repeated"; break;
    case Carried::kExportOnly: text += ", export only"; break;
    case Carried::kRecoverOnly: text += ", recover only"; break;
    case Carried::kByModule: text += ", by the module"; break;
  }
  if (field.ends_when_zero) text += ", ends when zero";
  return text + "\n";
}

std::string Describe(const ItemRun& run) {
  const std::string count =
      run.is_counted_in_front ? "in front" : (run.is_signed ? "signed " : "") + Describe(run.count);
  std::string items = run.slots == qv::layout::kAnyNumber ? "any number of " : fmt::format("{} slots of ", run.slots);
  items += run.layout != nullptr ? fmt::format("\"{}\"", run.layout->name) : Describe(run.item);
  if (LiesInRecord(run)) {
    items += fmt::format(" from store {}", run.store_offset);
  } else if (run.store_offset == qv::layout::kElsewhere) {
    items += " elsewhere in the store";
  }
  return fmt::format("  items {:<14} count {}, {}\n", run.name, count, items);
}

/// With the forms of its items.
std::string Describe(const RecordLayout& layout) {
  std::string text =
      fmt::format("\n{}: store {} bytes, exchange {} bytes\n", layout.name, layout.store_size, layout.exchange_size);
  for (const Field& field : layout.fields) text += Describe(field);
  for (const ItemRun& run : layout.items) text += Describe(run);
  for (const ItemRun& run : layout.items) {
    if (run.layout != nullptr) text += Describe(*run.layout);
  }
  return text;
}

}  // namespace

std::string DescribeLayouts() {
  std::string text =
      "Every layout as the tables say it: slots as offset+size in bytes. Made by: qvdesk describe layouts\n";
  std::set<const RecordLayout*> described;  // Files may share one.
  for (const FileForm& form : FileForms()) {
    const bool own = form.kind == FileKind::kTable || form.module == nullptr;
    if (own && form.layout != nullptr && described.insert(form.layout).second) text += Describe(*form.layout);
    if (form.kind != FileKind::kSections) continue;
    for (const RecordLayout& section : form.module->config_sections) text += Describe(section);
  }
  return text;
}

}  // namespace qvdesk
