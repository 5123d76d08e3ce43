// Loaded and installed libraries, as Start and the census need them.
#ifndef QV_HOST_HANDSET_LIBRARIES_H
#define QV_HOST_HANDSET_LIBRARIES_H

namespace handset {

unsigned CountLoadedLibraries();

/// Unloads every library and forgets the installed ones.
void ResetLibraries();

}  // namespace handset

#endif  // QV_HOST_HANDSET_LIBRARIES_H
