// The anchor file: the anchor that each module last handed to the desktop. Only a desktop that presents the same anchor
// gets an incremental export.
#ifndef QV_SYNC_ANCHOR_FILE_H
#define QV_SYNC_ANCHOR_FILE_H

#include <cstddef>

#include "sync/sync_mode.h"

namespace qv {

/// An 8-bit text file in ini form: "[ANCHORDATE]", then a line "KEY = anchor" for each module.
inline constexpr char16_t kAnchorFile[] = u"\\dbdata\\sysconfig\\qvSyncAnchor.ini";
inline constexpr char16_t kAnchorSection[] = u"ANCHORDATE";

/// Looks a value up and copies at most `max_chars` characters of it, and a NUL, into `buffer`; without a value (no
/// file, section, key or text behind the "=") the whole default. Returns the number of characters. Only the file's
/// first 2000 bytes are read.
std::size_t ReadAnchorValue(const char16_t* section, const char16_t* key, const char16_t* default_value,
                            char16_t* buffer, std::size_t max_chars, const char16_t* path);

/// Sets a value, creating file, section and key as needed; what stood beyond the first 2000 bytes is lost. Returns 1
/// always: an anchor that could not be kept costs the next synchronisation a full export, never data.
int WriteAnchorValue(const char16_t* section, const char16_t* key, const char16_t* value, const char16_t* path);

/// An incremental export is honoured only against the anchor that the module handed out last; otherwise `mode` becomes
/// SyncMode::kFull.
void CheckAnchor(SyncMode& mode, const char16_t* key, const char16_t* anchor);

/// In a run that is remembered, makes a new anchor from the local time, hands it out in `anchor` (kAnchorCapacity
/// characters) and stores it.
void MoveAnchor(SyncMode mode, const char16_t* key, char16_t* anchor);

}  // namespace qv

#endif  // QV_SYNC_ANCHOR_FILE_H
