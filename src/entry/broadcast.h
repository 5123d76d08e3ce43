// The notice to every window that the handset's data changed.
#ifndef QV_ENTRY_BROADCAST_H
#define QV_ENTRY_BROADCAST_H

namespace qv {

/// Posts the nine data-changed messages, in their order, and does not wait.
void PostDataChanged();

}  // namespace qv

#endif  // QV_ENTRY_BROADCAST_H
