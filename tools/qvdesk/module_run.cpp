// The request block, the exported function, and the answer taken apart.
#include "tools/qvdesk/module_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

/// Throws UsageError when the text does not fit.
template <std::size_t capacity>
void CopyText(const std::u16string& text, const char* option, char16_t (&target)[capacity]) {
  if (text.size() >= capacity) {
    throw UsageError(
        fmt::format("{} has {} characters; a request holds at most {}.", option, text.size(), capacity - 1));
  }
  std::ranges::copy(text, target);
}

}  // namespace

void ModuleRun::Make(const Phone& phone) {
  local ? MakeOnHandset(phone) : MakeFromDesktop(phone);
}

void ModuleRun::MakeFromDesktop(const Phone& phone) {
  qv::RequestRecord request{};
  request.module_id = module.id;
  request.mode = static_cast<std::uint32_t>(mode);
  CopyText(ToUtf16(anchor), "--anchor", request.anchor);
  CopyText(directory, "--directory", request.directory);
  const char* const function = direction == qv::Direction::kExport ? "fnQV_ExportTabs" : "fnQV_RecovTabs";
  const Answer answer = phone.Call(function, {reinterpret_cast<const std::uint8_t*>(&request), sizeof(request)});
  qv::ResultRecord result;
  if (answer.written.size() != sizeof(result)) {
    throw std::runtime_error(fmt::format("{} wrote {} bytes to the stream, not a result of {}", function,
                                         answer.written.size(), sizeof(result)));
  }
  std::memcpy(&result, answer.written.data(), sizeof(result));
  code = result.code;
  mode_after = static_cast<qv::SyncMode>(result.mode);
  const std::u16string_view handed_out(result.anchor, qv::kAnchorCapacity);
  anchor_after = ToUtf8(handed_out.substr(0, handed_out.find(u'\0')));
}

void ModuleRun::MakeOnHandset(const Phone& phone) {
  const bool exporting = direction == qv::Direction::kExport;
  auto* const function = phone.Agent().Export<decltype(qv_ExportTabs)>(exporting ? "qv_ExportTabs" : "qv_RecovTabs");
  code = function(module.id, directory.c_str());
}

Reading ModuleRun::Outcome() const {
  const std::vector<Reading> readings =
      ReadingsOf(code, {.module = &module, .direction = direction, .mode = mode_after});
  if (!readings.empty()) return readings.front();
  return {.runs = "", .what = "unknown: no module answers so"};
}

std::string ModuleRun::Result(const std::string& indent) const {
  return Describe(Outcome(), indent);
}

bool ModuleRun::IsSuccess() const {
  return Outcome().is_success;
}

bool ModuleRun::IsDropped() const {
  const bool exporting = direction == qv::Direction::kExport;
  const qv::Report report = local ? (exporting ? module.local_export : module.local_recover)
                                  : (exporting ? module.desktop_export : module.desktop_recover);
  return report == qv::Report::kDropped;
}

bool ModuleRun::HandedOutAnchor() const {
  return !anchor_after.empty() && anchor_after != anchor && anchor_after != ToUtf8(qv::kNeverSynchronised);
}

}  // namespace qvdesk
