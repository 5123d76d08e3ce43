// Open files of the handset, for the census.
// How they are read and written is only the platform functions' business.
#ifndef QV_HOST_HANDSET_FILES_H
#define QV_HOST_HANDSET_FILES_H

namespace handset {

unsigned CountOpenFiles();
unsigned CountOpenFinds();

}  // namespace handset

#endif  // QV_HOST_HANDSET_FILES_H
