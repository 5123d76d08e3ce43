// Blocks of the handset's malloc, as Start and the census need them.
#ifndef QV_HOST_HANDSET_MEMORY_H
#define QV_HOST_HANDSET_MEMORY_H

namespace handset {

unsigned CountBlocks();
void FreeAllBlocks();

}  // namespace handset

#endif  // QV_HOST_HANDSET_MEMORY_H
