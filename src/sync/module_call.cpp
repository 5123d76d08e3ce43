// The beginning of a call, the same for every module.
#include "sync/module_call.h"

#include <cstdint>

#include "sync/anchor_file.h"

namespace qv {
namespace {

using InitializeFunction = std::uint32_t(std::uint32_t reserved);
using UnInitializeFunction = std::uint32_t();

}  // namespace

Store::Store(const ModuleNames& names) : Library(names.store_library), uninitialize_(names.uninitialize) {
  if (names.initialize == nullptr) return;
  if (auto* const initialize = Resolve<InitializeFunction>(names.initialize)) (void)initialize(0);
}

Store::~Store() {
  if (uninitialize_ == nullptr) return;
  if (auto* const uninitialize = Resolve<UnInitializeFunction>(uninitialize_)) (void)uninitialize();
}

Result ModuleCall::Begin(const void* directory) {
  return store_.IsLoaded() ? directory_.Assign(directory) : Result::kStoreNotLoaded;
}

void ModuleCall::CheckAndMoveAnchor(SyncMode& mode, char16_t* anchor) const {
  CheckAnchor(mode, names_.anchor_key, anchor);
  MoveAnchor(mode, anchor);
}

void ModuleCall::MoveAnchor(SyncMode mode, char16_t* anchor) const {
  qv::MoveAnchor(mode, names_.anchor_key, anchor);
}

}  // namespace qv
