// Reading and writing the state file.
#include "tools/qvdesk/desktop_state.h"

#include <fmt/format.h>

#include <stdexcept>

#include "qv_rapi.h"
#include "tools/qvdesk/record_file.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

constexpr char kAnchors[] = "anchors";

/// "phone", "phone/" and "./phone" are one handset.
std::filesystem::path FileBeside(const std::filesystem::path& handset) {
  std::filesystem::path directory = std::filesystem::absolute(handset).lexically_normal();
  if (!directory.has_filename()) directory = directory.parent_path();
  return directory += ".desktop.json";
}

bool HoldsAnchors(const Json& document) {
  if (!document.is_object() || !document.contains(kAnchors) || !document[kAnchors].is_object()) return false;
  for (const Json& anchor : document[kAnchors]) {
    if (!anchor.is_string()) return false;
  }
  return true;
}

}  // namespace

DesktopState::DesktopState(const std::filesystem::path& handset) : file_(FileBeside(handset)) {
  if (!std::filesystem::exists(file_)) return;
  const Json document = Json::parse(ReadWholeFile(file_), nullptr, false);
  if (!HoldsAnchors(document)) {
    throw std::runtime_error(fmt::format(
        "{}: it does not hold a desktop's anchors. Delete it: the next incremental export is then a full one.",
        file_.string()));
  }
  anchors_ = document[kAnchors];
}

std::string DesktopState::Anchor(const std::string& module) const {
  return anchors_.value(module, ToUtf8(qv::kNeverSynchronised));
}

void DesktopState::Save() const {
  const std::string text = Json({{kAnchors, anchors_}}).dump(2) + "\n";
  // A program that is killed here leaves the anchors of before or those of now.
  const std::filesystem::path unfinished = std::filesystem::path(file_) += ".unfinished";
  WriteWholeFile(unfinished, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  std::filesystem::rename(unfinished, file_);
}

}  // namespace qvdesk
