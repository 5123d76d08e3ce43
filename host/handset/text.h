// What was printed, as Start needs it.
#ifndef QV_HOST_HANDSET_TEXT_H
#define QV_HOST_HANDSET_TEXT_H

namespace handset {

void ResetPrintedText();

}  // namespace handset

#endif  // QV_HOST_HANDSET_TEXT_H
