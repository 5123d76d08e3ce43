// The names and the lists; the columns are the record forms' own.
#include "host/stores/organizer_kinds.h"

#include "modules/organizer/card_reader.h"
#include "modules/organizer/graphic_memo.h"

namespace stores {

constinit const KindDescription kCardKinds[1] = {{.table = "cards",
                                                  .layout = qv::card_reader::kCardLayout,
                                                  .time = qv::card_reader::kStoreTime,
                                                  .list = qv::card_reader::kTableFacts[0].sync_info}};

constinit const KindDescription kMemoKinds[1] = {
    {.table = "memos", .layout = qv::graphic_memo::kMemoLayout, .list = qv::graphic_memo::kTableFacts[0].sync_info}};

}  // namespace stores
