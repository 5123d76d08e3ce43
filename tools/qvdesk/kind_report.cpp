// Lines appear as the kinds come, so that a long run shows where it is.
#include "tools/qvdesk/kind_report.h"

#include <fmt/format.h>

#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

/// Line by line, for a line's end is not to be made visible.
void PrintJson(const Json& json) {
  std::istringstream text(json.dump(2, ' ', false, Json::error_handler_t::replace));
  for (std::string line; std::getline(text, line);) fmt::print("{}\n", Visible(line));
}

}  // namespace

std::vector<std::string> LinesOf(const std::string& advice) {
  if (advice.empty()) return {};
  return {advice};
}

void KindReport::Succeeded(const std::string& kind, const std::string& what, Json json,
                           const std::vector<std::string>& details) {
  Add("ok", kind, what, std::move(json), details);
}

void KindReport::Failed(const std::string& kind, const std::string& what, Json json,
                        const std::vector<std::string>& details) {
  failed_ += (failed_.empty() ? "" : ", ") + kind;
  Add("FAILED", kind, what, std::move(json), details);
}

void KindReport::Attempt(const std::string& kind, const std::function<void()>& work) {
  try {
    work();
  } catch (const std::exception& error) {
    Failed(kind, error.what(), {{"module", kind}, {"succeeded", false}, {"result", error.what()}});
  }
}

void KindReport::Add(const char* mark, const std::string& kind, const std::string& what, Json json,
                     const std::vector<std::string>& details) {
  kinds_.push_back(std::move(json));
  if (as_json_) return;
  fmt::print("  {:<17} {:<6} {}\n", kind, mark, Visible(what));
  for (const std::string& line : details) fmt::print("    {}\n", Visible(line));
  std::fflush(stdout);
}

void KindReport::Conclude(const std::string& line) const {
  if (!as_json_) fmt::print("{}\n", Visible(line));
}

int KindReport::End(const std::string& verb) const {
  if (as_json_) PrintJson({{"succeeded", failed_.empty()}, {"kinds", kinds_}});
  if (failed_.empty()) return kSuccess;
  std::fflush(stdout);
  throw std::runtime_error("not " + verb + ": " + failed_);
}

}  // namespace qvdesk
