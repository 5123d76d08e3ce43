// The table of a multimedia message's fixed part.
#include "modules/messaging/mms_layout.h"

namespace qv::mms {
namespace {

using namespace layout;

constexpr Field kMessageFields[] = {
    ExchangeUnused(0, 4),
    FileOnly("text_length", kTextLength),
    FileOnly("message_id", kMessageId),
    FileOnly("value_12", kValue),
    ExchangeUnused(16, 4),
    FileOnly("data_length", kDataLength),
};

constexpr ItemRun kMessageItems[] = {
    {.name = "text", .count = kTextLength, .item = Bytes(0, 1), .store_offset = 0, .slots = kAnyNumber},
    {.name = "data",
     .count = kDataLength,
     .item = Bytes(0, 1),
     .store_offset = 0,
     .slots = kAnyNumber,
     .is_signed = true},
};

}  // namespace

constinit const RecordLayout kMessageLayout =
    TiledLayout<0, kExchangeSize>("multimedia message", kMessageFields, kMessageItems);

}  // namespace qv::mms
