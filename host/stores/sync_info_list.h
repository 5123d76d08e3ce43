// The list by which a store tells what records it has, in the forms that stores have for it.
#ifndef QV_HOST_STORES_SYNC_INFO_LIST_H
#define QV_HOST_STORES_SYNC_INFO_LIST_H

#include <cstdint>
#include <span>

#include "sync/file_forms.h"
#include "sync/sync_info.h"

#pragma GCC visibility push(default)

namespace stores {

/// Puts an entry of this form for each record back to back at any address: its id, its time, and zeros. Times are UTC.
void PutSyncInfoList(std::span<const qv::SyncInfoEntry> records, const qv::SyncInfoForm& form, std::uint8_t* entries);

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_SYNC_INFO_LIST_H
