// What every module has during one call, and begins it with: its store, the directory, the anchor.
#ifndef QV_SYNC_MODULE_CALL_H
#define QV_SYNC_MODULE_CALL_H

#include "platform/coredll.h"
#include "platform/library.h"
#include "sync/exchange_directory.h"
#include "sync/module_names.h"
#include "sync/result.h"
#include "sync/sync_mode.h"

namespace qv {

/// A module's store library, loaded and in session as long as this lives. A store without the entry points of its
/// session needs none, and what they answer is of no interest: the calls that matter fail by themselves.
class Store : public Library {
 public:
  explicit Store(const ModuleNames& names);
  ~Store();

 private:
  const char16_t* uninitialize_;
};

class ModuleCall {
 public:
  /// `names` must outlive the call.
  explicit ModuleCall(const ModuleNames& names) : names_(names), store_(names) {}

  /// Takes the exchange directory, UTF-16LE of any alignment. kStoreNotLoaded, and kFileFailed when it is too long.
  Result Begin(const void* directory);

  /// The anchor of an export: `mode` becomes kFull when an incremental one cannot be honoured, and `anchor`
  /// (kAnchorCapacity characters; may be null in a run that is not remembered) receives the new one.
  void CheckAndMoveAnchor(SyncMode& mode, char16_t* anchor) const;
  /// The anchor of a recover, which is not checked.
  void MoveAnchor(SyncMode mode, char16_t* anchor) const;

  const ModuleNames& names() const { return names_; }
  const Library& store() const { return store_; }
  ExchangeDirectory::Path PathOf(const char16_t* exchange_file) const { return directory_ / exchange_file; }
  /// Deletes an exchange file. Whether it was there is of no interest.
  void Delete(const char16_t* exchange_file) const { coredll::DeleteFileW(PathOf(exchange_file)); }

 private:
  const ModuleNames& names_;
  Store store_;
  ExchangeDirectory directory_;
};

}  // namespace qv

#endif  // QV_SYNC_MODULE_CALL_H
