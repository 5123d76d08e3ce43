// Loaded and installed libraries, as Start, the census and the agent's imports need them.
#ifndef QV_HOST_HANDSET_LIBRARIES_H
#define QV_HOST_HANDSET_LIBRARIES_H

#include <string_view>

#include "platform/coredll.h"

namespace handset {

/// A function that the agent itself imports from a library, installed or in a file, that no call of its loads. Ends the
/// process when there is none: a handset would not have loaded the agent.
coredll::FARPROC ImportOf(std::u16string_view library, std::u16string_view name);

unsigned CountLoadedLibraries();

/// Unloads every library and forgets the installed ones.
void ResetLibraries();

}  // namespace handset

#endif  // QV_HOST_HANDSET_LIBRARIES_H
