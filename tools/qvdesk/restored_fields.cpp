// A row's direction says most of it; what follows from other fields is in the rules.
#include "tools/qvdesk/restored_fields.h"

#include <algorithm>
#include <utility>

#include "tools/qvdesk/field_value.h"
#include "tools/qvdesk/record_file.h"

namespace qvdesk {
namespace {

using qv::layout::Carried;
using qv::layout::Field;
using qv::layout::Form;
using qv::layout::ItemRun;
using qv::layout::RecordLayout;

/// A pattern that ends with "_" stands for all names that begin with it.
bool Means(std::string_view pattern, std::string_view name) {
  return pattern.ends_with('_') ? name.starts_with(pattern) : name == pattern;
}

bool IsExcepted(const Module& module, const RecordLayout& layout, std::string_view name) {
  return std::ranges::any_of(module.rules, [&](const qv::RuleWords& rule) {
    return rule.layout == &layout &&
           std::ranges::any_of(rule.not_restored, [&](const char* pattern) { return Means(pattern, name); });
  });
}

/// Those of the module's tables, then those of its configuration.
std::vector<const RecordLayout*> LayoutsOf(const Module& module) {
  std::vector<const RecordLayout*> layouts;
  for (const qv::TableNames& table : module.names.tables) {
    if (table.layout != nullptr && std::ranges::find(layouts, table.layout) == layouts.end()) {
      layouts.push_back(table.layout);
    }
  }
  for (const RecordLayout& section : module.config_sections) layouts.push_back(&section);
  return layouts;
}

/// What `choose` names of each form; forms of which it names nothing are left out.
template <typename Choose>
std::vector<RecordFields> Collect(const Module& module, const Choose& choose) {
  std::vector<RecordFields> all;
  for (const RecordLayout* const layout : LayoutsOf(module)) {
    RecordFields fields = {.record = layout->name, .names = {}};
    choose(*layout, fields.names);
    if (!fields.names.empty()) all.push_back(std::move(fields));
  }
  return all;
}

/// What an export writes only to have no hole is nothing that a phone would have.
bool IsTold(const Field& field) {
  return IsShown(field.exchange) && field.carried != Carried::kRecoverOnly;
}

}  // namespace

bool IsId(std::string_view name) {
  return name == "id" || name.ends_with("_id");
}

bool IsRestored(const Module& module, const RecordLayout& layout, std::string_view name) {
  if (IsId(name) || IsExcepted(module, layout, name)) return false;
  const Field* const row = FindField(layout, name);
  return row == nullptr || (row->carried != Carried::kExportOnly && row->carried != Carried::kRepeated);
}

std::vector<RecordFields> NotRestored(const Module& module) {
  return Collect(module, [&](const RecordLayout& layout, std::vector<std::string>& names) {
    const auto add = [&](const char* name) {
      if (!IsId(name) && !IsRestored(module, layout, name)) names.push_back(name);
    };
    for (const Field& field : layout.fields) {
      if (IsTold(field)) add(field.name);
    }
    for (const ItemRun& run : layout.items) add(run.name);
  });
}

std::vector<RecordFields> NotExported(const Module& module) {
  return Collect(module, [](const RecordLayout& layout, std::vector<std::string>& names) {
    for (const Field& field : layout.fields) {
      const bool is_data = field.store.form != Form::kNone && field.store.form != Form::kUnused;
      // What a module works out itself other fields tell.
      if (is_data && !IsTold(field) && field.carried != Carried::kByModule) names.push_back(field.name);
    }
  });
}

}  // namespace qvdesk
