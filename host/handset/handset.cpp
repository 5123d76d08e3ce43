// The handset as a whole: starting it, and counting what is open on it.
// Each part of its state lives with the functions that use it.
#include "host/handset/handset.h"

#include "host/handset/errors.h"
#include "host/handset/faults.h"
#include "host/handset/files.h"
#include "host/handset/libraries.h"
#include "host/handset/memory.h"
#include "host/handset/objects.h"
#include "host/handset/paths.h"
#include "host/handset/system.h"
#include "host/handset/text.h"

namespace handset {

void Start(const std::filesystem::path& root) {
  SetRoot(root);
  ResetFaults();
  CloseAllObjects();
  ResetLibraries();
  ResetSystem();
  ResetPrintedText();
  SetFreeSpace(std::nullopt);
  FreeAllBlocks();
  ResetErrors();
}

Census TakeCensus() {
  return {CountOpenFiles(), CountOpenSemaphores(), CountLoadedLibraries(), CountBlocks(), CountOpenFinds()};
}

}  // namespace handset
