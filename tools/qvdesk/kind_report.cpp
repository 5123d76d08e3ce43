// Lines appear as the kinds come, so that a long run shows where it is.
#include "tools/qvdesk/kind_report.h"

#include <fmt/format.h>

#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

/// Line by line, for a line's end is not to be made visible.
void PrintJson(const Json& json) {
  std::istringstream text(ToIndentedText(json));
  for (std::string line; std::getline(text, line);) fmt::print("{}\n", Visible(line));
}

}  // namespace

void AddKindOptions(CLI::App& command, KindOptions& options) {
  command.add_option("MODULE", options.names, "Kinds of data by name or number; all of them when none is named");
  command.add_flag("--json", options.json, "The report as JSON");
}

std::vector<std::string> LinesOf(const std::string& advice) {
  if (advice.empty()) return {};
  return {advice};
}

void KindReport::Succeeded(const std::string& kind, const std::string& what, const Json& more) {
  Add(true, kind, what, more, {});
}

void KindReport::Failed(const std::string& kind, const std::string& what, const Json& more,
                        const std::vector<std::string>& details) {
  failed_ += (failed_.empty() ? "" : ", ") + kind;
  Add(false, kind, what, more, details);
}

void KindReport::Attempt(const std::string& kind, const std::function<void()>& work) {
  try {
    work();
  } catch (const std::exception& error) {
    Failed(kind, error.what());
  }
}

void KindReport::Add(bool succeeded, const std::string& kind, const std::string& what, const Json& more,
                     const std::vector<std::string>& details) {
  Json& json = kinds_.emplace_back(Json{{"module", kind}, {"succeeded", succeeded}, {"result", what}});
  json.update(more);
  if (as_json_) return;
  fmt::print("  {:<17} {:<6} {}\n", kind, succeeded ? "ok" : "FAILED", Visible(what));
  for (const std::string& line : details) fmt::print("    {}\n", Visible(line));
  std::fflush(stdout);
}

void KindReport::Conclude(const std::string& line) const {
  if (!as_json_) fmt::print("{}\n", Visible(line));
}

int KindReport::End(const std::string& goal) const {
  if (as_json_) PrintJson({{"succeeded", failed_.empty()}, {"kinds", kinds_}});
  if (failed_.empty()) return kSuccess;
  std::fflush(stdout);
  throw std::runtime_error("not " + goal + ": " + failed_);
}

}  // namespace qvdesk
