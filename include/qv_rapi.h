// The exported functions of QV_RAPI.dll and the records they exchange: all that a caller needs.
// The desktop reaches the fnQV_ functions through RAPI in stream mode; programs on the handset call the qv_ ones.
#ifndef QV_RAPI_H
#define QV_RAPI_H

#include <cstddef>
#include <cstdint>

#if defined(__i386__)
#define QV_STDCALL __attribute__((stdcall))
#else
#define QV_STDCALL
#endif

// Marks an exported function. The builds of the handset libraries take the names that they export from these marks.
#define QV_EXPORT __attribute__((visibility("default")))

namespace qv {

/// Characters of an AnchorString's buffer, the terminating NUL included.
inline constexpr std::size_t kAnchorCapacity = 20;
/// Characters of an ExchangeDirectory's buffer, the terminating NUL included.
inline constexpr std::size_t kDirectoryCapacity = 260;

/// The anchor of a module that was never synchronised.
inline constexpr char16_t kNeverSynchronised[] = u"00000000000000";

/// What a result is marked with, so that the desktop can tell the directions apart. A result of 0 is never marked.
inline constexpr std::uint32_t kExportFlag = 0x10000000;
inline constexpr std::uint32_t kRecoverFlag = 0x20000000;

/// The block that the desktop hands to fnQV_ExportTabs and fnQV_RecovTabs. Little-endian, UTF-16LE text.
/// The directory may be sent cut short behind its NUL.
struct RequestRecord {
  std::int32_t module_id;  ///< 1..16; any other id does nothing and succeeds.
  std::uint32_t mode;  ///< SyncMode, compared as signed: 3 incremental, 2 replace, any other below 4 full, 4 and above
                       ///< plain copy.
  char16_t anchor[kAnchorCapacity];        ///< The last anchor received; read in incremental exports only.
  char16_t directory[kDirectoryCapacity];  ///< ExchangeDirectory on the handset, without a trailing backslash.
};
static_assert(offsetof(RequestRecord, mode) == 4 && offsetof(RequestRecord, anchor) == 8);
static_assert(offsetof(RequestRecord, directory) == 48);

/// The block that fnQV_ExportTabs and fnQV_RecovTabs write to the stream in one call.
struct ResultRecord {
  std::uint32_t code;  ///< 0, or the module's result with kExportFlag or kRecoverFlag.
  std::uint32_t mode;  ///< Export: the mode after the module ran (a downgraded 3 reads 1). Recover: as received.
  /// The anchor that the module moved to, in a mode below 4. The request's when it moved none: in other modes, for
  /// modules without an anchor (6, 14 to 16) and unknown ids, and where the run failed before.
  char16_t anchor[kAnchorCapacity];
};
static_assert(sizeof(ResultRecord) == 48 && offsetof(ResultRecord, anchor) == 8);

/// The answer of fnQV_CheckMutex.
struct RunningRecord {
  std::uint32_t running;  ///< 1 when the program runs, else 0.
  std::uint8_t reserved[44];
};
static_assert(sizeof(RunningRecord) == 48);

}  // namespace qv

/// The COM interface through which RAPI's stream mode carries an answer. The agent calls Write and Release only.
struct IRAPIStream {
  virtual std::int32_t QV_STDCALL QueryInterface(const void* iid, void** object) = 0;
  virtual std::uint32_t QV_STDCALL AddRef() = 0;
  virtual std::uint32_t QV_STDCALL Release() = 0;
  virtual std::int32_t QV_STDCALL Read(void* buffer, std::uint32_t size, std::uint32_t* read) = 0;
  virtual std::int32_t QV_STDCALL Write(const void* buffer, std::uint32_t size, std::uint32_t* written) = 0;
  virtual std::int32_t QV_STDCALL Seek(std::int64_t move, std::uint32_t origin, std::uint64_t* position) = 0;
  virtual std::int32_t QV_STDCALL SetSize(std::uint64_t size) = 0;
  virtual std::int32_t QV_STDCALL CopyTo(void* stream, std::uint64_t size, std::uint64_t* read,
                                         std::uint64_t* written) = 0;
  virtual std::int32_t QV_STDCALL Commit(std::uint32_t flags) = 0;
  virtual std::int32_t QV_STDCALL Revert() = 0;
  virtual std::int32_t QV_STDCALL LockRegion(std::uint64_t offset, std::uint64_t size, std::uint32_t type) = 0;
  virtual std::int32_t QV_STDCALL UnlockRegion(std::uint64_t offset, std::uint64_t size, std::uint32_t type) = 0;
  virtual std::int32_t QV_STDCALL Stat(void* statistics, std::uint32_t flags) = 0;
  virtual std::int32_t QV_STDCALL Clone(void** stream) = 0;
  virtual std::int32_t QV_STDCALL SetRapiStat(std::uint32_t stat, std::uint32_t value) = 0;
  virtual std::int32_t QV_STDCALL GetRapiStat(std::uint32_t stat, std::uint32_t* value) = 0;

 protected:
  ~IRAPIStream() = default;
};

extern "C" {

/// The prototype of RAPI's stream mode. cbInput, pcbOutput and ppOutput are neither read nor written. The stream is
/// released by the callee; the input stays the caller's.
using RapiFunction = std::uint32_t(std::uint32_t cbInput, std::uint8_t* pInput, std::uint32_t* pcbOutput,
                                   std::uint8_t** ppOutput, IRAPIStream* pIRAPIStream);

/// Writes a module's data as exchange tables into the request's directory. pInput: RequestRecord; a null one is
/// answered like an unknown module. Writes a ResultRecord when there is a stream. Returns the module's result without
/// kExportFlag; 0 for modules 3, 5, 6, 14 and 15 and for ids outside 1..16; 16 when there is no memory for the anchor.
QV_EXPORT RapiFunction fnQV_ExportTabs;

/// Applies the exchange tables in the request's directory to a module's store, then posts the nine data-changed
/// messages, also after a failure. Input and answer as fnQV_ExportTabs with kRecoverFlag. Returns the module's result
/// without kRecoverFlag; 0 for modules 3, 5, 6 and 15 and for ids outside 1..16; 16 when there is no memory.
QV_EXPORT RapiFunction fnQV_RecovTabs;

/// Former functions, kept because desktops still call them: each writes a u32 0 and returns 0.
QV_EXPORT RapiFunction fnQV_ExportTables;
QV_EXPORT RapiFunction fnQV_Recover;

/// Is this the expected handset model? Writes u32 1 or 0; returns 0.
QV_EXPORT RapiFunction fnQV_IsNimbraK9;

/// Is a synchronisation running? Writes u32 1 or 0; returns 0.
QV_EXPORT RapiFunction fnQV_IsRunSDSync;

/// Is a program running? pInput: u32 selector (1 "abc.exe", 6 the mail program's main window, 32 a synchronisation; any
/// other tests the empty name). Writes a RunningRecord when there is a stream; returns its first field.
QV_EXPORT RapiFunction fnQV_CheckMutex;

/// How much storage is free? pInput: path, UTF-16LE, at most 259 characters. Writes the low 32 bits of the number of
/// free bytes, 0 when the query fails, 0xFFFFFFFF when the path does not exist; returns 0.
QV_EXPORT RapiFunction fnQV_GetPDASpace;

/// Moves the division between storage and program memory. pInput: u32, a 256th of what SetSystemMemoryDivision takes.
/// Writes u32 1 when the division changed at once, else 0; returns 0.
QV_EXPORT RapiFunction fnQV_SetPDAStoreSpace;

/// Which is the system mail account? Writes u32 1 and the id, or a single u32 0; returns 0.
QV_EXPORT RapiFunction fnQV_GetMailID;

/// Tells the telephony server, when it runs, that the call-filter list changed. Returns 0.
QV_EXPORT std::uint32_t fnQV_NotifyBLTChanged();

/// Like fnQV_ExportTabs and fnQV_RecovTabs, for programs on the handset: a plain copy in mode 4 and a plain apply in
/// mode 5, so that neither anchor nor snapshots change. Return the module's result with kExportFlag or kRecoverFlag, or
/// 0: always for modules 3 and 5, for the export of 6, for the recover of 14 and 15, and for ids outside 1..16; the
/// recover of module 6 is returned without the flag. qv_RecovTabs posts the nine data-changed messages.
QV_EXPORT std::uint32_t qv_ExportTabs(int moduleId, const char16_t* directory);
QV_EXPORT std::uint32_t qv_RecovTabs(int moduleId, const char16_t* directory);

}  // extern "C"

#endif  // QV_RAPI_H
