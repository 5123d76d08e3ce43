// What the commands for the whole phone say of each kind of data, and at the end: a line a kind, or JSON for programs.
#ifndef QV_TOOLS_QVDESK_KIND_REPORT_H
#define QV_TOOLS_QVDESK_KIND_REPORT_H

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "tools/qvdesk/field_value.h"

namespace qvdesk {

struct KindOptions {
  std::vector<std::string> names;  ///< Of the kinds of data, or their numbers; none: all of them.
  bool json = false;
};

/// Adds the names, as the last of the command's words, and --json.
void AddKindOptions(CLI::App& command, KindOptions& options);

/// An advice as details: none for an empty one.
std::vector<std::string> LinesOf(const std::string& advice);

class KindReport {
 public:
  explicit KindReport(bool as_json) : as_json_(as_json) {}

  /// `details`: lines below the kind's. `more`: what programs learn of it beside "module", "succeeded" and "result",
  /// which is `what` unless `more` has its own.
  void Succeeded(const std::string& kind, const std::string& what, const Json& more = Json::object());
  void Failed(const std::string& kind, const std::string& what, const Json& more = Json::object(),
              const std::vector<std::string>& details = {});

  /// Runs what is done with a kind: an exception is this kind's failure, and does not stop the others.
  void Attempt(const std::string& kind, const std::function<void()>& work);

  /// A line after the last kind; not for programs.
  void Conclude(const std::string& line) const;

  /// The program's status; prints the JSON. Throws std::runtime_error that names the kinds which failed, `goal` being
  /// what they should be: "backed up", "whole".
  int End(const std::string& goal) const;

 private:
  void Add(bool succeeded, const std::string& kind, const std::string& what, const Json& more,
           const std::vector<std::string>& details);

  bool as_json_;
  Json kinds_ = Json::array();
  std::string failed_;
};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_KIND_REPORT_H
