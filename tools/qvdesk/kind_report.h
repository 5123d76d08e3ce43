// What the commands for the whole phone say of each kind of data, and at the end: a line a kind, or JSON for programs.
#ifndef QV_TOOLS_QVDESK_KIND_REPORT_H
#define QV_TOOLS_QVDESK_KIND_REPORT_H

#include <functional>
#include <string>
#include <vector>

#include "tools/qvdesk/field_value.h"

namespace qvdesk {

/// An advice as details: none for an empty one.
std::vector<std::string> LinesOf(const std::string& advice);

class KindReport {
 public:
  explicit KindReport(bool as_json) : as_json_(as_json) {}

  /// `details`: lines below the kind's. `json`: all that is known of it, for programs.
  void Succeeded(const std::string& kind, const std::string& what, Json json,
                 const std::vector<std::string>& details = {});
  void Failed(const std::string& kind, const std::string& what, Json json,
              const std::vector<std::string>& details = {});

  /// Runs what is done with a kind: an exception is this kind's failure, and does not stop the others.
  void Attempt(const std::string& kind, const std::function<void()>& work);

  /// A line after the last kind; not for programs.
  void Conclude(const std::string& line) const;

  /// The program's status; prints the JSON. Throws std::runtime_error that names the kinds which failed, `verb` being
  /// what could not be done with them: "backed up".
  int End(const std::string& verb) const;

 private:
  void Add(const char* mark, const std::string& kind, const std::string& what, Json json,
           const std::vector<std::string>& details);

  bool as_json_;
  Json kinds_ = Json::array();
  std::string failed_;
};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_KIND_REPORT_H
