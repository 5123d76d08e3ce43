// The modes of a synchronisation as people write them.
#ifndef QV_TOOLS_QVDESK_MODES_H
#define QV_TOOLS_QVDESK_MODES_H

#include <string>

#include "sync/result_words.h"
#include "sync/sync_mode.h"

namespace qvdesk {

/// The words, for help texts: "full, replace, incremental, plain".
std::string ModeWords();
/// A word or any 32-bit number. Throws UsageError.
qv::SyncMode ParseMode(const std::string& text);
/// "incremental (3)".
std::string Describe(qv::SyncMode mode);
/// Whether a step's words hold for runs in this mode.
bool Applies(qv::Modes modes, qv::SyncMode mode);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_MODES_H
