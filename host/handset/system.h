// Clock, windows, semaphores and memory division, as Start and the census need them.
#ifndef QV_HOST_HANDSET_SYSTEM_H
#define QV_HOST_HANDSET_SYSTEM_H

namespace handset {

unsigned CountOpenSemaphores();
/// The clock runs, no window is open, nothing is logged, no other program holds a semaphore.
void ResetSystem();

}  // namespace handset

#endif  // QV_HOST_HANDSET_SYSTEM_H
