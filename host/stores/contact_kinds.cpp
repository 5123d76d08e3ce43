// The names and the times; the columns are the record forms' own.
#include "host/stores/contact_kinds.h"

#include "modules/contacts/contacts_layout.h"

namespace stores {
namespace {

/// Records begin as the entries of the sync-info list do: with the id, and behind it the time to the second.
constexpr qv::layout::Slot kTime = qv::layout::Bytes(qv::contacts::kRecordId.size, sizeof(CalendarTime));

}  // namespace

constinit const KindDescription kContactKinds[2] = {
    {.table = "contacts", .layout = qv::contacts::kContactLayout, .time = kTime, .resolution = kSecond},
    {.table = "contact_groups", .layout = qv::contacts::kGroupLayout, .time = kTime, .resolution = kSecond},
};

}  // namespace stores
