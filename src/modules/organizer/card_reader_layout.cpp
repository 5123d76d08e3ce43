// The card reader's field table. What its texts mean only the store knows; they are named after their order.
#include "modules/organizer/card_reader_layout.h"

namespace qv::card_reader {
namespace {

using namespace layout;

constexpr Field kCardFields[] = {
    Both("card_id", U32(0), U32(0)),
    Both("text_1", Text(12, 62), Text(4, 62)),
    Both("text_2", Text(74, 10), Text(66, 10)),
    Both("text_3", Text(84, 130), Text(76, 130)),
    Both("text_4", Text(214, 66), Text(206, 66)),
    Both("text_5", Text(280, 66), Text(272, 66)),
    Both("text_6", Text(346, 66), Text(338, 66)),
    Both("text_7", Text(412, 66), Text(404, 66)),
    Both("text_8", Text(478, 66), Text(470, 66)),
    Both("text_9", Text(544, 42), Text(536, 42)),
    Both("text_10", Text(586, 66), Text(578, 66)),
    Both("text_11", Text(652, 18), Text(644, 18)),
    Both("text_12", Text(670, 258), Text(662, 258)),
    Both("time", kStoreTime, TimeNumbers(920)),
    ExchangeUnused(944, 12),
    StoreUnused(928, 40),
};

}  // namespace

constinit const RecordLayout kCardLayout = TiledLayout<kStoreSize, kExchangeSize>("business card", kCardFields);

}  // namespace qv::card_reader
