// What a desktop remembers of a handset between two runs: the anchor of each module, in a small JSON file beside it.
#ifndef QV_TOOLS_QVDESK_DESKTOP_STATE_H
#define QV_TOOLS_QVDESK_DESKTOP_STATE_H

#include <filesystem>
#include <string>

#include "tools/qvdesk/field_value.h"

namespace qvdesk {

class DesktopState {
 public:
  /// Reads "DIR.desktop.json" when there is one. Throws std::runtime_error when it is not what Save wrote.
  explicit DesktopState(const std::filesystem::path& handset);

  /// qv::kNeverSynchronised for a module without one.
  std::string Anchor(const std::string& module) const;
  void SetAnchor(const std::string& module, const std::string& anchor) { anchors_[module] = anchor; }

  void Save() const;
  const std::filesystem::path& File() const { return file_; }

 private:
  std::filesystem::path file_;
  Json anchors_ = Json::object();
};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_DESKTOP_STATE_H
