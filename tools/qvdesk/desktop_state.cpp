// Reading and writing the state file.
#include "tools/qvdesk/desktop_state.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "qv_rapi.h"
#include "tools/qvdesk/host_file.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

constexpr char kAnchors[] = "anchors";

/// One that a request has room for.
bool IsAnchor(const Json& value) {
  return value.is_string() && ToUtf16(value.get<std::string>()).size() < qv::kAnchorCapacity;
}

bool HoldsAnchors(const Json& document) {
  return document.is_object() && document.contains(kAnchors) && document[kAnchors].is_object() &&
         std::ranges::all_of(document[kAnchors], IsAnchor);
}

}  // namespace

DesktopState::DesktopState(const std::filesystem::path& handset) : file_(Beside(handset, ".desktop.json")) {
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
  const std::string text = ToIndentedText({{kAnchors, anchors_}}) + "\n";
  // A program that is killed here leaves the anchors of before or those of now.
  const std::filesystem::path unfinished = Beside(file_, ".unfinished");
  WriteWholeFile(unfinished, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  std::filesystem::rename(unfinished, file_);
}

}  // namespace qvdesk
