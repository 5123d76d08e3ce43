// The forms of the handset's settings: the structures that their store libraries fill, and the records of the exchange
// files.
#ifndef QV_MODULES_SETTINGS_SETTINGS_LAYOUT_H
#define QV_MODULES_SETTINGS_SETTINGS_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::settings {

extern const layout::RecordLayout kProfileLayout;
extern const layout::RecordLayout kDisplayLayout;
extern const layout::RecordLayout kBrowserLayout;
extern const layout::RecordLayout kAlarmLayout;
extern const layout::RecordLayout kClockNameLayout;

// Bytes of the structures, and of the records that are held on a stack or several at a time.
inline constexpr std::size_t kProfileSize = 3152;
inline constexpr std::size_t kDisplaySize = 44;
inline constexpr std::size_t kDisplayRecordSize = 68;
inline constexpr std::size_t kBrowserSize = 2076;  ///< On either side.
inline constexpr std::size_t kAlarmSize = 344;
inline constexpr std::size_t kAlarmRecordSize = 404;
inline constexpr std::size_t kClockNameSize = 30;
inline constexpr std::size_t kClockNameRecordSize = 76;

inline constexpr layout::Slot kAlarmFlags = layout::U32(8);
inline constexpr layout::Slot kAlarmRepeatMode = layout::U8(9);
inline constexpr layout::Slot kAlarmDays = layout::Bytes(10, 7);
inline constexpr layout::Slot kClockNameIndex = layout::U32(4);

/// Of a file that is one structure.
inline constexpr char kOneStructureRule[] =
    "One record; what the end of the file cuts off is zero. A recover deletes the file.";

}  // namespace qv::settings

#endif  // QV_MODULES_SETTINGS_SETTINGS_LAYOUT_H
