// The exports that move data: from the desktop with a request record and a stream, from the handset with a directory.
#include <algorithm>
#include <cstring>

#include "entry/broadcast.h"
#include "entry/dispatch.h"
#include "entry/stream.h"
#include "layout/bytes.h"
#include "platform/memory.h"
#include "qv_rapi.h"

namespace qv {
namespace {

/// A request as it is used. Taken from the block byte by byte: RAPI does not say how it is aligned.
struct Request {
  std::int32_t module_id = 0;
  SyncMode mode{0};
  const void* directory = nullptr;
  List<char16_t> anchor;  ///< kAnchorCapacity characters; the module overwrites them.

  /// False when there is no memory for the anchor. A null block counts as a request for no module.
  bool Take(const std::uint8_t* block) {
    const bool has_anchor = anchor.Resize(kAnchorCapacity);
    if (has_anchor) std::fill(anchor.begin(), anchor.end(), u'\0');
    if (block == nullptr) return has_anchor;
    std::memcpy(&module_id, block + offsetof(RequestRecord, module_id), sizeof(module_id));
    std::memcpy(&mode, block + offsetof(RequestRecord, mode), sizeof(mode));
    directory = block + offsetof(RequestRecord, directory);
    if (has_anchor) layout::CopyWideText(block + offsetof(RequestRecord, anchor), anchor.data(), kAnchorCapacity);
    return has_anchor;
  }
};

/// A desktop's request carried out: what came of it, and whether the caller is told.
struct Outcome {
  Result result;
  Report report;
};

/// Runs `operation` on the module that the request names; `cell` is the entry point's column of the module table.
template <typename Operation>
Outcome CarryOut(Request& request, const std::uint8_t* block, Report ModuleRow::*cell, Operation operation) {
  if (!request.Take(block)) return {Result::kNoMemory, Report::kKept};
  const ModuleRow* const module = FindModule(request.module_id);
  if (module == nullptr) return {Result::kOk, Report::kKept};
  return {operation(*module), module->*cell};
}

/// The stream's answer carries the direction's flag, the return value does not.
std::uint32_t Answer(IRAPIStream* stream, const Outcome& outcome, std::uint32_t flag, const Request& request) {
  ResultRecord record{};
  record.code = Reported(outcome.result, outcome.report, flag);
  record.mode = static_cast<std::uint32_t>(request.mode);
  std::copy(request.anchor.begin(), request.anchor.end(), record.anchor);
  AnswerStream(stream).Write(record);
  return outcome.report == Report::kDropped ? 0 : static_cast<std::uint32_t>(outcome.result);
}

/// For callers that ask nothing any more.
std::uint32_t AnswerZero(IRAPIStream* stream) {
  AnswerStream(stream).Write(std::uint32_t{0});
  return 0;
}

}  // namespace
}  // namespace qv

using namespace qv;

std::uint32_t fnQV_ExportTabs(std::uint32_t, std::uint8_t* pInput, std::uint32_t*, std::uint8_t**,
                              IRAPIStream* pIRAPIStream) {
  Request request;
  const Outcome outcome = CarryOut(request, pInput, &ModuleRow::desktop_export, [&](const ModuleRow& module) {
    return ExportModule(module, request.mode, request.anchor.data(), request.directory);
  });
  return Answer(pIRAPIStream, outcome, kExportFlag, request);
}

std::uint32_t fnQV_RecovTabs(std::uint32_t, std::uint8_t* pInput, std::uint32_t*, std::uint8_t**,
                             IRAPIStream* pIRAPIStream) {
  Request request;
  const Outcome outcome = CarryOut(request, pInput, &ModuleRow::desktop_recover, [&](const ModuleRow& module) {
    return RecoverModule(module, request.mode, request.anchor.data(), request.directory);
  });
  PostDataChanged();
  return Answer(pIRAPIStream, outcome, kRecoverFlag, request);
}

std::uint32_t fnQV_ExportTables(std::uint32_t, std::uint8_t*, std::uint32_t*, std::uint8_t**,
                                IRAPIStream* pIRAPIStream) {
  return AnswerZero(pIRAPIStream);
}

std::uint32_t fnQV_Recover(std::uint32_t, std::uint8_t*, std::uint32_t*, std::uint8_t**, IRAPIStream* pIRAPIStream) {
  return AnswerZero(pIRAPIStream);
}

std::uint32_t qv_ExportTabs(int moduleId, const char16_t* directory) {
  const ModuleRow* const module = FindModule(moduleId);
  if (module == nullptr) return 0;
  SyncMode mode = SyncMode::kPlainCopy;
  return Reported(ExportModule(*module, mode, nullptr, directory), module->local_export, kExportFlag);
}

std::uint32_t qv_RecovTabs(int moduleId, const char16_t* directory) {
  std::uint32_t reported = 0;
  if (const ModuleRow* const module = FindModule(moduleId)) {
    const Result result = RecoverModule(*module, SyncMode::kLocalRecover, nullptr, directory);
    reported = Reported(result, module->local_recover, kRecoverFlag);
  }
  PostDataChanged();
  return reported;
}
