// Small pictures such as a person without a photograph is given: a pattern of squares, the same left and right.
#ifndef QV_TOOLS_QVDESK_SAMPLE_PICTURE_H
#define QV_TOOLS_QVDESK_SAMPLE_PICTURE_H

#include <cstdint>
#include <vector>

#include "tools/qvdesk/sample_data.h"

namespace qvdesk {

/// A bitmap file of a few hundred bytes.
std::vector<std::uint8_t> MakeSamplePicture(Dice& dice);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_PICTURE_H
