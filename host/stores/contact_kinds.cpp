// The names and the times; the columns are the record forms' own.
#include "host/stores/contact_kinds.h"

#include "modules/contacts/contacts.h"

namespace stores {
namespace {

/// Records begin as the entries of the list do: with the id, and behind it the time to the second.
constexpr qv::layout::Slot kTime = qv::layout::Bytes(qv::contacts::kRecordId.size, sizeof(CalendarTime));

}  // namespace

constinit const KindDescription kContactKinds[2] = {
    {.table = "contacts",
     .layout = qv::contacts::kContactLayout,
     .time = kTime,
     .list = qv::contacts::kSyncInfo,
     .insert_refusal = kContactAddRefusal},
    {.table = "contact_groups",
     .layout = qv::contacts::kGroupLayout,
     .time = kTime,
     .list = qv::contacts::kSyncInfo,
     .insert_refusal = kGroupAddRefusal},
};

}  // namespace stores
