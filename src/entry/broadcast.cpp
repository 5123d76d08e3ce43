// Programs on the handset reload their data when one of these messages arrives.
#include "entry/broadcast.h"

#include "platform/coredll.h"

namespace qv {

void PostDataChanged() {
  // Callers and windows count on these nine in this order; 0x7EF is not among them.
  static constexpr coredll::DWORD kMessages[] = {0x7ED, 0x7F1, 0x7F0, 0x7E9, 0x7EA, 0x7F2, 0x7EC, 0x7EB, 0x7EE};
  for (const coredll::DWORD message : kMessages) coredll::PostMessageW(coredll::HWND_BROADCAST, message, 0, 0);
}

}  // namespace qv
