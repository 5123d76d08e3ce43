// How an answer leaves: one stream, released when the answer is complete.
#ifndef QV_ENTRY_STREAM_H
#define QV_ENTRY_STREAM_H

#include <cstdint>

#include "qv_rapi.h"

namespace qv {

/// Owns the caller's reference to the stream. A null stream swallows what is written: a lost answer changes nothing of
/// what was done.
class AnswerStream {
 public:
  explicit AnswerStream(IRAPIStream* stream) : stream_(stream) {}
  ~AnswerStream() {
    if (stream_ != nullptr) stream_->Release();
  }
  AnswerStream(const AnswerStream&) = delete;
  AnswerStream& operator=(const AnswerStream&) = delete;

  template <typename Record>
  void Write(const Record& record) {
    std::uint32_t written = 0;
    if (stream_ != nullptr) stream_->Write(&record, sizeof(record), &written);
  }

 private:
  IRAPIStream* stream_;
};

}  // namespace qv

#endif  // QV_ENTRY_STREAM_H
