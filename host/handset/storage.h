// How much room files have left, when a test has set a bound to it. Without a bound nothing is counted, so that writing
// a file costs the host's write and nothing else.
#ifndef QV_HOST_HANDSET_STORAGE_H
#define QV_HOST_HANDSET_STORAGE_H

#include <cstdint>

namespace handset {

/// How much of a write of `size` bytes at the descriptor's position there is room for; takes the room by which that
/// makes the file longer.
std::uint32_t TakeRoom(int descriptor, std::uint32_t size);

/// Room that a file no longer takes up.
void GiveBackRoom(std::uint64_t bytes);

}  // namespace handset

#endif  // QV_HOST_HANDSET_STORAGE_H
